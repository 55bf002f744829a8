// Who owns which characters, how they are counted, and what is allocated.

#include <zelm/text/TextConversions.h>

#include <support/ExpectThrow.h>
#include <text/Allocations.h>

#include <functional>
#include <new>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr ZStringLiteral kLiteral("literal");
const ZString kConstant("constant");

std::string longText() {
    return std::string(100, ' ') + std::string(900, 'x');
}

ZString::Storage* storageOf(const ZString& text) {
    ZString::Storage* storage = nullptr;
    text.testing_get_pimpl_without_reference(&storage);
    return storage;
}

} // namespace

TEST(Sharing, NothingAndLiteralsOwnNothing) {
    EXPECT_EQ(allocationsOf([] {
                  ZString text(kLiteral), constant("abc");
                  const ZString cut = text.mid(2, 3), copy = constant;
                  EXPECT_TRUE(cut.data() == kLiteral.data() + 2 && copy.data() == constant.data());
                  text = "other";
                  text = kLiteral;
                  text = {};
                  EXPECT_EQ(text.data(), nullptr);
                  EXPECT_EQ(text.c_str(), ZString("x").left(0).c_str());
                  for (const ZString& each : {text, constant, cut, copy, kConstant}) {
                      EXPECT_TRUE(!each.testing_has_pimpl() && each.testing_get_ref_count() == 0);
                  }
              }),
              0);
    EXPECT_EQ(std::string(ZStringLiteral("ab\0c", 4)), "ab");
}

TEST(Sharing, EveryNewTextOwnsAStorageEvenIfEmpty) {
    char padded[8] = "abc";
    char full[3] = {'a', 'b', 'c'};
    const char* const pointer = padded;
    const ZString shared(std::string("shared"));
    for (const ZString& text :
         {ZString(std::string()), ZString("x", 0), ZString(ZStringView()), ZString(padded), ZString(full),
          ZString(pointer), ZString::from_char_ptr(nullptr), ZString::from_char('c'), repeatChar('c', 0),
          ZString().to_lower(), ZString().to_upper(), operator_add_impl("", ""),
          ZString("a").replace("a", ""), shared.realloc(), padString(shared, 1), fromInt(1),
          convertUtf16ToZString(u"")}) {
        EXPECT_TRUE(text.testing_get_ref_count() == 1 && text.data() != nullptr) << text;
    }
    EXPECT_EQ(ZString(padded) + ZString(full) + ZString("a\0b", 3).right(1), "abcabcb");
    EXPECT_EQ(allocationsOf([] { ZString(std::string("short")); }), 1);
    EXPECT_EQ(allocationsOf([] { fromDouble(-1.25, 'g', 17); }), 1);
}

TEST(Sharing, CopiesAndCutsShareAndAllocateNothing) {
    const ZString text(longText());
    const std::pair<std::function<ZString()>, std::size_t> cuts[] = {
        {[&] { return text; }, 1000},
        {[&] { return text.substr(1000, 5); }, 0},
        {[&] { return text.left(2000); }, 1000},
        {[&] { return text.mid(1001, 5); }, 0},
        {[&] { return text.mid(998, 5); }, 2},
        {[&] { return text.right(ZString::npos); }, 1000},
        {[&] { return text.trim("x "); }, 0},
        {[&] { return text.trim_space(); }, 900},
        {[&] { return text.replace("y", "z"); }, 1000},
        {[&] { return text.replace("", "z"); }, 1000},
        {[&] { return text.replace_ignore_case("Y", "z"); }, 1000},
        {[&] { return padString(text, 0); }, 1000},
        {[&] { return strip_quotes(text); }, 1000},
    };
    for (const auto& [cut, size] : cuts) {
        EXPECT_EQ(allocationsOf([&, &makeCut = cut, expected = size] {
                      const ZString result = makeCut();
                      EXPECT_EQ(result.size(), expected);
                      EXPECT_TRUE(result.testing_uses_this_pimpl(storageOf(text)));
                      EXPECT_EQ(text.testing_get_ref_count(), 2);
                  }),
                  0);
        EXPECT_EQ(text.testing_get_ref_count(), 1);
    }
    EXPECT_EQ(allocationsOf([&] {
                  EXPECT_EQ(text.find_ignore_case("XXXXXXXXXXXXXXXXXXXX", 500), 500u);
                  EXPECT_EQ(toDouble(ZString("x-1.5e3y").substr(1, 6)), -1500);
              }),
              0);
}

TEST(Sharing, AssignmentsTakeSwapAndBearThemselves) {
    ZString a(std::string("aaa")), b(std::string("bb"));
    ZString::Storage *const ofA = storageOf(a), *const ofB = storageOf(b);
    a = std::move(b);
    EXPECT_TRUE(a == "bb" && a.testing_uses_this_pimpl(ofB) && b.testing_uses_this_pimpl(ofA));
    const ZString taken = std::move(a);
    EXPECT_TRUE(taken == "bb" && a.data() == nullptr && a.empty() && !a.testing_has_pimpl());
    b.clear();
    swap(a, b);
    b = a = taken;
    EXPECT_EQ(taken.testing_get_ref_count(), 3);
    b = kLiteral;
    EXPECT_EQ(taken.testing_get_ref_count(), 2);
    EXPECT_EQ(ZString(taken).to_string() + taken.to_string(), "bbbb");
    EXPECT_EQ(std::move(b).to_string() + (ZString("x") + "y").to_string(), "literalxy");
    ZString text(std::string("0123456789"));
    ZString& self = text;
    text = self;
    text = std::move(self);
    EXPECT_TRUE(text == "0123456789" && text.testing_get_ref_count() == 1);
    text = text.to_string();
    text = ZStringView(text).substr(1);
    text = text.c_str() + 1;
    text = text.left(5).right(3);
    text += text;
    text += ZStringView(text).substr(4);
    EXPECT_EQ(text, "45645656");
}

TEST(Sharing, CutTextPaysOnceForItsStdString) {
    const ZString whole(longText());
    const ZString cut = whole.substr(100, 500), literal = kLiteral;
    const char* const data = cut.data();
    EXPECT_EQ(allocationsOf([&] { cut.to_string(); }), 2);
    EXPECT_EQ(allocationsOf([&] { EXPECT_EQ(cut.c_str(), static_cast<const std::string&>(cut).data()); }), 0);
    EXPECT_TRUE(cut.to_string() == std::string(500, 'x') && cut.data() == data &&
                cut.testing_get_ref_count() == 1);
    EXPECT_EQ(ZString::testing_get_pimpl_parent(storageOf(cut)), storageOf(whole));
    EXPECT_EQ(whole.testing_get_ref_count(), 2);
    EXPECT_EQ(literal.to_string(), "literal");
    EXPECT_TRUE(literal.data() == kLiteral.data() && literal.testing_get_ref_count() == 1);
    const std::vector<ZString> tokens = tokenize(ZString(std::string("a b")), " ", false);
    convertZStringVectorToStd(tokens);
    EXPECT_EQ(storageOf(tokens[0])->parent, storageOf(tokens[1])->parent);
}

TEST(Sharing, SoleOwnersAppendInPlaceOthersLeave) {
    ZString text(std::string("0123456789y"));
    ZString::Storage* const own = storageOf(text);
    text.remove_suffix(1);
    text.remove_prefix(1);
    text += 'z';
    EXPECT_TRUE(text == "123456789z" && text.testing_uses_this_pimpl(own) && own->value == text);
    const ZString other = text;
    text += "";
    EXPECT_TRUE(text.testing_uses_this_pimpl(own));
    text += "!";
    EXPECT_TRUE(text == "123456789z!" && other == "123456789z" && !text.testing_uses_this_pimpl(own));
    EXPECT_EQ(other.testing_get_ref_count(), 1);

    ZString cut = ZString(std::string("abase")).substr(1);
    cut.c_str();
    EXPECT_NE(storageOf(cut)->parent, nullptr);
    cut += cut;
    EXPECT_TRUE(cut == "basebase" && !storageOf(cut)->parent && cut.data() == storageOf(cut)->value.data());
    ZString grown("ab");
    EXPECT_LT(allocationsOf([&] {
                  for (int i = 0; i < 100000; ++i) {
                      grown += kLiteral;
                  }
              }),
              30);
    EXPECT_EQ(grown.size(), 700'002u);
}

TEST(Sharing, CountsAreVisibleAndChainsOfParentsEndWithoutRecursion) {
    ZString text(std::string("text"));
    ZString::Storage* storage = nullptr;
    EXPECT_EQ(text.testing_get_and_add_reference(&storage), 1);
    EXPECT_EQ(ZString::testing_get_pimpl_ref_count(storage), 2);
    EXPECT_FALSE(ZString::testing_release_pimpl(storage));
    EXPECT_EQ(text.testing_get_and_add_reference(&storage), 1);
    text.clear();
    const ZString::Storage copy(*storage);
    EXPECT_TRUE(copy.value == "text" && copy.ref_count == 1 && copy.parent == nullptr);
    for (int i = 0; i < 500000; ++i) {
        auto* const next = new ZString::Storage("next", 4);
        next->parent = storage;
        storage = next;
    }
    EXPECT_TRUE(ZString::testing_release_pimpl(storage));
    EXPECT_FALSE(ZString::testing_release_pimpl(nullptr) || ZString::testing_get_pimpl_parent(nullptr));
    EXPECT_EQ(text.testing_get_and_add_reference(&storage), 0);
    EXPECT_EQ(storage, nullptr);
}

TEST(Sharing, ExhaustedMemoryChangesNothing) {
    const std::function<void(ZString&)> actions[] = {
        [](ZString& text) { text += "and as much again, more than any buffer has left over"; },
        [](ZString& text) { text = "abc" + text; },
        [](ZString& text) { text = ZStringView(text).substr(1); },
        [](ZString& text) { text = text.c_str() + 1; },
        [](ZString& text) { text.replace("x", "yy"); },
        [](ZString& text) { text.to_upper(); },
        [](ZString& text) { tokenize(text, "x", true); },
    };
    int failures = 0;
    for (const auto& action : actions) {
        for (unsigned setting = 0; setting < 16; ++setting) {
            ZString text(longText());
            const ZString other = setting & 1 ? text : ZString();
            text.remove_suffix(setting >> 1 & 1);
            const std::string before(text.data(), text.size()), otherBefore(other.data(), other.size());
            failAllocationAfter(setting >> 2);
            try {
                action(text);
                failAllocationAfter(-1);
            } catch (const std::bad_alloc&) {
                ++failures;
                EXPECT_EQ(ZStringView(text), before);
            }
            EXPECT_EQ(ZStringView(other), otherBefore);
        }
    }
    EXPECT_GT(failures, 40);
    EXPECT_THROW(repeatChar('c', ZString::npos), std::length_error);
}
