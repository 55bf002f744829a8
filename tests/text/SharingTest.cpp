// Who owns which characters, how they are counted, what is allocated, and which threads may do what.

#include <zelm/text/TextConversions.h>

#include <support/Allocations.h>

#include <gtest/gtest.h>

#include <thread>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr ZStringLiteral kLiteral("literal");

const std::string kLong = std::string(100, ' ') + std::string(900, 'x');

ZString::Storage* storageOf(const ZString& text) {
    ZString::Storage* storage = nullptr;
    text.testing_get_pimpl_without_reference(&storage);
    return storage;
}

} // namespace

TEST(Sharing, NothingAndLiteralsOwnNothing) {
    EXPECT_EQ(allocationsOf([] {
                  ZString text("other"), constant("abc");
                  const ZString cut = constant.mid(1, 1), copy = constant;
                  EXPECT_TRUE(cut.data() == copy.data() + 1 && copy.data() == constant.data());
                  text = kLiteral;
                  text = {};
                  for (const ZString& each : {text, constant, cut, copy}) {
                      EXPECT_TRUE(!each.testing_has_pimpl() && each.testing_get_ref_count() == 0);
                  }
              }),
              0);
}

TEST(Sharing, CopiesAndCutsShareAndAllocateNothing) {
    const ZString text(kLong);
    EXPECT_EQ(allocationsOf([&] {
                  for (const ZString& same : {text, text.left(2000), text.mid(0), text.right(ZString::npos),
                                              strip_quotes(text), text.replace("y", "z"), padString(text, 0),
                                              text.replace("", "z"), text.replace_ignore_case("Y", "z")}) {
                      EXPECT_TRUE(same == text && text.testing_get_ref_count() == 10);
                  }
                  EXPECT_TRUE(text.substr(1000, 5).empty() && text.trim("x ").empty());
                  EXPECT_TRUE(text.mid(998, 5).size() == 2 && text.trim_space().size() == 900);
              }),
              0);
}

TEST(Sharing, AssignmentsTakeSwapAndBearThemselves) {
    ZString a(std::string("aaa")), b(std::string("bb"));
    ZString::Storage* const ofA = storageOf(a);
    a = std::move(b);
    EXPECT_TRUE(a == "bb" && a.testing_get_ref_count() == 1 && b.testing_uses_this_pimpl(ofA));
    const ZString taken = std::move(a);
    EXPECT_TRUE(taken == "bb" && a.data() == nullptr && a.empty() && !a.testing_has_pimpl());
    EXPECT_TRUE((b = a = taken) == "bb" && taken.testing_get_ref_count() == 3);
    ZString text(std::string("0123456789"));
    ZString& self = text;
    text = self;
    text = std::move(self);
    text = ZStringView(text).substr(1);
    text = text.c_str() + 1;
    text = text.left(5).right(3);
    text += text;
    text += ZStringView(text).substr(4);
    EXPECT_EQ(text, "45645656");
}

TEST(Sharing, CutTextPaysOnceForItsStdString) {
    const ZString whole(kLong), cut = whole.substr(100, 500);
    EXPECT_LE(allocationsOf([&] { cut.to_string(); }), 2);
    EXPECT_EQ(allocationsOf([&] { cut.c_str(); }), 0);
    EXPECT_TRUE(cut.to_string() == std::string(500, 'x') && cut.data() == whole.data() + 100);
}

TEST(Sharing, SoleOwnersAppendInPlaceOthersLeave) {
    ZString text(std::string("0123456789y"));
    ZString::Storage* const own = storageOf(text);
    text.remove_suffix(1);
    text.remove_prefix(1);
    text += 'z';
    const ZString other = text;
    EXPECT_TRUE(text.testing_uses_this_pimpl(own) && own->value == text);
    text += "!";
    EXPECT_TRUE(text == "123456789z!" && other == "123456789z" && other.testing_get_ref_count() == 1);
    ZString cut = ZString(std::string("abase")).substr(1);
    cut += cut;
    EXPECT_TRUE(cut == "basebase" && !storageOf(cut)->parent);
    const long before = allocationCount();
    for (int i = 0; i < 100000; ++i) {
        cut += kLiteral;
    }
    EXPECT_LT(allocationCount() - before, 30);
}

TEST(Sharing, ChainsOfParentsEndWithoutRecursion) {
    ZString::Storage* storage = nullptr;
    EXPECT_EQ(ZString(std::string("text")).testing_get_and_add_reference(&storage), 1);
    for (int i = 0; i < 500000; ++i) {
        auto* const next = new ZString::Storage("next", 4);
        next->parent = std::exchange(storage, next);
    }
    EXPECT_TRUE(ZString::testing_release_pimpl(storage) && !ZString::testing_release_pimpl(nullptr));
}

TEST(Sharing, ExhaustedMemoryChangesNothing) {
    int failures = 0;
    for (unsigned setting = 0; setting < 16; ++setting) {
        ZString text(kLong);
        const ZString other = setting & 1 ? ZString(kLong) : text;
        text.remove_suffix(setting >> 1 & 1);
        const std::string before(text.data(), text.size());
        failAllocationAfter(setting >> 2 & 1);
        try {
            setting& 8 ? text += text : text = text.c_str() + 1;
        } catch (const std::bad_alloc&) {
            ++failures;
            EXPECT_EQ(ZStringView(text), before);
        }
        failAllocationAfter(-1);
        EXPECT_EQ(other, kLong);
    }
    EXPECT_GE(failures, 8);
    EXPECT_THROW(repeatChar('c', ZString::npos), std::length_error);
}

// Faults here are for the thread sanitizer to find, yet show as a wrong text or count too, in time.
TEST(Sharing, ThreadsReadOneTextAndAppendToTheirOwn) {
    for (int round = 0; round < 300; ++round) {
        ZString text(kLong);
        const std::vector<ZString> tokens = tokenize(ZString(std::string("one two three")), " ", false);
        std::thread reader([&, other = text]() mutable {
            thread_local const ZString last(kLong); // destroyed after all that the thread keeps
            EXPECT_EQ(tokens[2].to_string(), "three");
            EXPECT_EQ(other, last);
            other.clear();
        });
        text += "!";
        EXPECT_EQ(ZString(tokens[2]).mid(1) + tokens[2].to_string(), "hreethree");
        reader.join();
        EXPECT_TRUE(text == kLong + "!" && tokens[2].testing_get_ref_count() == 1);
    }
}
