// Paths by their text: against tables, and against a model of their grammar.

#include <zelm/files/ZPath.h>
#include <zelm/text/TextConversions.h>

#include <support/Allocations.h>
#include <support/ExpectThrow.h>

#include <utf8.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <stdexcept>
#include <vector>

using namespace Zelm;
using namespace Zelm::Testing;
using namespace std::string_literals;

namespace {

using Names = std::vector<std::string>;

std::string text(const ZPath& path) {
    return path.native().to_string();
}

/// A path with the separators that the text has.
ZPath raw(const std::string& path) {
    return ZPath::from_fs_path(FilesystemPath::fromNarrow(path));
}

/// What `action` makes of the columns of each row is its last column. '|' is between them.
template <class Action>
void expectLast(const std::vector<std::string>& rows, Action&& action) {
    for (const std::string& row : rows) {
        const Names columns = tokenize_to_std(row, "|", true);
        EXPECT_EQ(ZString(action(columns)), columns.back()) << row;
    }
}

bool areEqual(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return std::toupper(x) == std::toupper(y); });
}

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool beginsWithDrive(const std::string& path) {
    return path.size() > 1 && std::isalpha(path[0]) && path[1] == ':';
}

struct Model {
    std::string name, directory;
    Names names;

    explicit Model(std::string path) {
        const auto take = [&path](std::size_t count) {
            const std::string taken = path.substr(0, count);
            path.erase(0, count);
            return taken;
        };
        const std::size_t leading = std::min(path.find_first_not_of("/\\"), path.size());
        const bool server = leading == 2 && path.size() > 2;
        name = take(beginsWithDrive(path) ? 2 : server ? path.find_first_of("/\\", 2) : 0);
        directory = take(!path.empty() && isSeparator(path[0]) ? 1 : 0);
        while (take(path.find_first_not_of("/\\")), !path.empty()) {
            names.push_back(take(path.find_first_of("/\\")));
            if (!path.empty() && path.find_first_not_of("/\\") == path.npos) {
                names.push_back(".");
            }
        }
    }

    static std::string joined(const std::string& a, const std::string& b) {
        const bool complete = a.empty() || isSeparator(a.back()) || (a.size() == 2 && beginsWithDrive(a)) ||
                              b.empty() || isSeparator(b[0]);
        return a + (complete ? "" : "\\") + b;
    }

    static std::string joined(std::string root, const Names& names) {
        for (const std::string& each : names) {
            root = joined(root, each);
        }
        return root;
    }

    std::string normal() const {
        Names up, stack;
        for (const std::string& each : names) {
            if (each == ".." && !stack.empty()) {
                stack.pop_back();
            } else if (each != ".") {
                (each == ".." ? up : stack).push_back(each);
            }
        }
        return joined(joined(name + directory, up), stack);
    }

    std::string resolved(const std::string& base, const std::string& other) const {
        const Model own(base);
        if (name.empty()) {
            return Model(joined(directory.empty() ? base : own.name, other)).normal();
        }
        if (!directory.empty() || (!own.name.empty() && !areEqual(own.name, name))) {
            return normal();
        }
        return Model(joined(joined(joined(name, own.directory), own.names), names)).normal();
    }

    /// "-" in front of this path where there is no way.
    std::string from(const Model& base, int maxUp) const {
        std::size_t same = 0;
        while (same < std::min(names.size(), base.names.size()) && areEqual(names[same], base.names[same])) {
            ++same;
        }
        Names way(base.names.size() - same, "..");
        if (directory.empty() || !areEqual(name + directory, base.name + base.directory) || same == 0 ||
            (!way.empty() && static_cast<long>(way.size()) > maxUp)) {
            return "-" + normal();
        }
        way.insert(way.end(), names.begin() + static_cast<long>(same), names.end());
        return Model(joined("", way)).normal();
    }
};

std::string relative(const ZPath& target, const ZPath& base, int maxUp) {
    bool ok = maxUp % 2 == 0;
    const std::string result = text(ZPath::make_relative_path(target, base, &ok, maxUp));
    return (ok ? "" : "-") + result;
}

constexpr std::u16string_view kSmall = u"abisz\xE4\xFF\xB5\x3C3\x3C2\x44F\x1C6\xFF41";
constexpr std::u16string_view kCapital = u"ABISZ\xC4\x178\x39C\x3A3\x3A3\x42F\x1C4\xFF21";

std::u16string folded(const std::u16string& whole) {
    std::u16string result(whole.c_str());
    for (char16_t& unit : result) {
        const std::size_t small = kSmall.find(unit);
        unit = small < kSmall.size() ? kCapital[small] : unit;
    }
    return result;
}

} // namespace

TEST(Path, TellsItsParts) {
    // Path, root name, root directory, parent, filename, stem, extension.
    for (const char* const row : {R"(||||||)",
                                  R"(a||||a|a|)",
                                  R"(\||\|\|||)",
                                  R"(\\||\|\|||)",
                                  R"(\\\a||\|\|a|a|)",
                                  R"(Z:|Z:||Z:|Z:|Z:|)",
                                  R"(a:a.b.c|a:||a:|a.b.c|a.b|.c)",
                                  R"(z:\|z:|\|z:\|||)",
                                  R"([:||||[:|[:|)",
                                  R"(C:/\a//b|C:|/|C:/a|b|b|)",
                                  R"(\\s|\\s||\\s|\\s|\\s|)",
                                  R"(//s\t\u|//s|\|//s\t|u|u|)",
                                  R"(1:\a|||1:|a|a|)",
                                  R"(\C:\b||\|\C:|b|b|)",
                                  R"(a\b\|||a\b|||)",
                                  R"(a\.|||a|||)",
                                  R"(a\..|||a|||)",
                                  R"(a.||||a.|a|.)",
                                  R"(x\.profile|||x|.profile||.profile)",
                                  R"(a.b\c|||a.b|c|c|)"}) {
        const Names columns = tokenize_to_std(row, "|", true);
        const ZPath p = raw(columns[0]);
        const Names parts{
            columns[0],         text(p.root_name()), text(p.root_directory()), text(p.parent_path()),
            text(p.filename()), text(p.stem()),      text(p.extension())};
        EXPECT_EQ(parts, columns);
        const bool has[] = {!p.empty(),       p.has_root_name(), p.has_root_directory(), p.has_parent_path(),
                            p.has_filename(), p.has_stem(),      p.has_extension()};
        EXPECT_TRUE(std::equal(parts.begin(), parts.end(), has, [](const std::string& part, bool there) {
            return part.empty() != there;
        })) << row;
        EXPECT_TRUE(p.is_absolute() == has[2] && p.is_relative() != has[2] &&
                    p.has_root_path() == (has[1] || has[2]))
            << row;
    }
}

TEST(Path, ChangesByTheRules) {
    expectLast({R"(a|\b|a\b)", R"(a||a)", R"(|a|a)", R"(a|b|a\b)", R"(a\|b|a\b)", R"(C:|a|C:a)",
                R"(C:|\a|C:\a)", R"(ab:|c|ab:\c)", R"(\\s|a|\\s\a)", R"(a|C:b|a\C:b)"},
               [](const Names& row) { return ZPath(row[0]) /= row[1]; });
    expectLast({R"(a\.\b\..\c|a\c)", R"(..\..\a|..\..\a)", R"(a\..\..\b|..\b)", R"(C:\a\..\..|C:\..)",
                R"(a\b\|a\b)", R"(C:a\.\b|C:a\b)", R"(C:\..\a|C:\..\a)", R"(a\..|)", R"(\\s\\a\..|\\s\)",
                R"(.\C:\b|C:b)"},
               [](const Names& row) { return ZPath(row[0]).normalize(); });
    const std::vector<std::string> resolved = {R"(C:\a|b|C:\a\b)",   R"(C:\a|\b|C:\b)",  R"(C:\a|D:\b|D:\b)",
                                               R"(C:\a|C:b|C:\a\b)", R"(C:\a|D:b|D:b)",  R"(c:\a|C:b|C:\a\b)",
                                               R"(a|C:b|C:a\b)",     R"(\\s\a|\b|\\s\b)"};
    expectLast(resolved, [](const Names& row) { return ZPath::resolve_relative_path(row[1], row[0]); });
    expectLast(resolved, [](const Names& row) { return ZPath(row[0]).append_path(row[1]); });
    expectLast({R"(C:\a\b\c|C:\a\d|5|..\b\c)", R"(C:\a\b\c|C:\a\d|0|-C:\a\b\c)", R"(C:\x\y|C:\a\b|5|-C:\x\y)",
                R"(D:\x\.\y|C:\x|5|-D:\x\y)", R"(a\b|a|5|-a\b)", R"(C:a\b|C:a|5|-C:a\b)",
                R"(C:\a\b|c:\A\B|-2147483648|)", R"(C:\a|C:\|5|-C:\a)", R"(C:\a\b|C:\a\|1|..\b)",
                R"(\a\b|\a\.\c\..|2|-\a\b)", R"(\a\b|\a\.\c\..|3|..\..\..\b)"},
               [](const Names& row) { return relative(row[0], row[1], std::stoi(row[2])); });
    EXPECT_EQ(text(ZPath::make_relative_path("\\a\\b", "\\a", nullptr, 0)), "b");
    expectLast({R"(a.b|txt|a.txt)", R"(a.b|.txt|a.txt)", R"(a\b\|t|a\b\.t)", R"(C:\x.y\z|t|C:\x.y\z.t)",
                R"(.profile||)", R"(..||.)", R"(a\.profile||a\)", R"(||)", R"(a.b\c||a.b\c)", R"(a.b.c||a.b)",
                R"(abc||abc)"},
               [](const Names& row) { return ZPath(row[0]).replace_extension(row[1]); });
    expectLast({R"(a\b|a\)", R"(a\b\|a\b)", R"(\a|\)", R"(C:\\|C:)", R"(C:a|C:)", R"(C:|)", R"(\\|)", R"(|)"},
               [](const Names& row) { return ZPath(row[0]).remove_filename(); });
    expectLast({R"(a|a\)", "a/|a/", R"(|\)"}, [](const Names& row) { return ZPath::add_separator(row[0]); });
    FilesystemPath twice(u"a path of some length");
    EXPECT_EQ((twice /= twice).u8string(), "a path of some length\\a path of some length");
    EXPECT_EQ(text(ZPath("a.b").remove_extension() += "+"), "a+");
    EXPECT_TRUE(raw("a/").ends_with_separator() && !ZPath::ends_with_separator(""));
}

TEST(Path, AgreesWithAModelOnRandomText) {
    std::mt19937 random(10);
    const char* const pieces[] = {"a",  "B",  "b",     ".",  "..", "/",    "\\",
                                  "\\", "\\", "\\a\\", "C:", "c:", "D:\\", "\\\\s"};
    const auto randomPath = [&](std::string path) {
        for (auto count = random() % 9; count > 0; --count) {
            path += pieces[random() % std::size(pieces)];
        }
        return path;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string a = randomPath(""), b = randomPath(a.substr(0, random() % 9));
        SCOPED_TRACE(a + ' ' + b);
        const Model model(a), other(b);
        Names elements = model.names, found;
        elements.insert(elements.begin(), model.directory.empty() ? 0 : 1, model.directory);
        elements.insert(elements.begin(), model.name.empty() ? 0 : 1, model.name);
        const FilesystemPath path = raw(a);
        for (const std::u16string_view element : path) {
            found.push_back(FilesystemPath(element).u8string());
        }
        EXPECT_EQ(found, elements);
        EXPECT_EQ(text(raw(a).normalize()), model.normal());
        EXPECT_EQ(text(raw(a).resolve_path(raw(b))), other.resolved(a, b));
        const int maxUp = static_cast<int>(random() % 5) - 1;
        EXPECT_EQ(relative(raw(a), raw(b), maxUp), model.from(other, maxUp));
    }
}

TEST(Path, ComparesWithoutRegardToCase) {
    EXPECT_EQ(ZPath::compare_filenames("C:\\X", "c:/x"), 0);
    EXPECT_EQ(ZPath::compare_filenames("ab", "a_"), -1);
    EXPECT_EQ(ZPath::compare_filenames("\xF0\x90\x80\x80", "\xEF\xBF\xBD"), -1);
    EXPECT_TRUE(ZPath::equal_filenames(ZString("a\0b"), "A") && ZPath("A").equal_filenames(ZString("a\0b")) &&
                !raw("a/b").equal_filenames("a\\b"));
    EXPECT_TRUE(ZPath("C:\\ABC").starts_with("c:\\ab") && ZPath("abc").starts_with(ZString("A\0x")) &&
                !ZPath("ab").starts_with("abc"));
    std::mt19937 random(3);
    const std::u16string units =
        u"_\0\0`{\xF7\xDF\x1E9E\x131\x17F\xD800\xD801\xDC28\xDC00\xFFFF"s.append(kSmall).append(kCapital);
    for (int i = 0; i < 20000; ++i) {
        std::u16string a, b;
        for (auto bits = random() % 64; bits > 0; bits /= 2) {
            (bits % 2 ? a : b) += units[random() % units.size()];
        }
        const ZPath left = ZPath::from_fs_path(a), right = ZPath::from_fs_path(b);
        int order = 0;
        bool starts = false;
        EXPECT_EQ(allocationsOf([&] {
                      order = ZPath::compare_filenames(left, right), starts = left.starts_with(right);
                  }),
                  0);
        const int difference = folded(a).compare(folded(b));
        EXPECT_EQ(order, (difference > 0) - (difference < 0));
        EXPECT_EQ(starts, folded(a).compare(0, folded(b).size(), folded(b)) == 0);
    }
}

TEST(Path, ConvertsBetweenEncodings) {
    const ZPath path("a/\xC3\xA4/\xE2\x82\xAC\\\xF0\x9F\x98\x80/");
    const ZString native = "a\\\xC3\xA4\\\xE2\x82\xAC\\\xF0\x9F\x98\x80\\",
                  generic = "a/\xC3\xA4/\xE2\x82\xAC/\xF0\x9F\x98\x80/";
    EXPECT_TRUE(path.u16string() == u"a\\\xE4\\\x20AC\\\xD83D\xDE00\\" &&
                path.generic_u16string() == u"a/\xE4/\x20AC/\xD83D\xDE00/");
    EXPECT_TRUE(path.wstring() == L"a\\\xE4\\\x20AC\\\x1F600\\" &&
                path.generic_wstring() == L"a/\xE4/\x20AC/\x1F600/");
    EXPECT_EQ(ZString(path), native);
    EXPECT_TRUE(path.string() == native && path.u8string() == native && path.native() == native &&
                path.fs_path().u8string() == native);
    EXPECT_TRUE(path.generic() == generic && path.generic_string() == generic &&
                path.generic_u8string() == generic && path.fs_path().generic_u8string() == generic);
    EXPECT_EQ(std::filesystem::path(path.fs_path()), generic.to_string());
    EXPECT_EQ(text(ZPath("a/b")) + text(ZPath("a\0/"s)) + text(ZPath(ZStringLiteral("a/b"))) +
                  text(raw("a/b")),
              "a\\ba\0\\a\\ba/b"s);
    EXPECT_EQ(FilesystemPath::fromSystem("a/\xC3\xA4"), FilesystemPath(u"a\\\xE4"));
    EXPECT_THROW_MSG(ZPath("/\xFF"), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_THROW_MSG(ZPath("\xED\xA0\x80"), utf8::invalid_code_point, "Invalid code point");
    EXPECT_THROW_MSG(ZPath("a\xE2\x82"), utf8::not_enough_room, "Not enough space");
    EXPECT_THROW_MSG(FilesystemPath::fromNarrow("\xFF"), std::invalid_argument,
                     "invalid char filename argument");
    EXPECT_THROW_MSG(FilesystemPath::fromSystem("a\xC3"), std::invalid_argument,
                     "invalid char filename argument");
    const FilesystemPath broken(u"a\xDE00\xD83D");
    EXPECT_EQ(broken.wstring(), std::wstring({L'a', wchar_t{0xDE00}, wchar_t{0xD83D}}));
    EXPECT_THROW_MSG(ZPath::from_fs_path(broken).native(), utf8::invalid_utf16, "Invalid UTF-16");
    EXPECT_THROW_MSG(ZPath::from_fs_path(broken).generic(), utf8::invalid_utf16, "Invalid UTF-16");
    EXPECT_EQ(allocationsOf([] { ZPath("some/path/that/is/longer/than/short/strings").normalize(); }), 1);
}

TEST(Path, IsCompletedByTheWorkingDirectory) {
    const std::string here = text(ZPath::current_path());
    EXPECT_EQ(here, text(ZPath(std::filesystem::current_path().string())));
    const std::vector<std::string> rows = {"|" + here,        R"(a\..\b|)" + here + "\\b", R"(\a\.|\a)",
                                           R"(D:foo|D:\foo)", R"(D:\foo\|D:\foo)",         R"(\\s|\\s\)"};
    expectLast(rows, [](const Names& row) { return ZPath(row[0]).complete_path(); });
    expectLast(rows, [](const Names& row) { return ZPath(row[0]).physical_path(); });
    EXPECT_EQ(text(ZPath("\\a\\.").system_complete()), "\\a\\.");
    EXPECT_TRUE(ZPath("C:\\abc").is_contained_within_path("C:\\ab") &&
                ZPath("a\\b").is_contained_within_path_physical(ZPath::current_path()) &&
                !ZPath("a\\..\\..").is_contained_within_path("."));
    ZPath dot("."), missing("no such thing");
    EXPECT_TRUE(dot.equivalent("/proc/self/cwd") && missing.equivalent("x\\..\\NO such thing"));
    EXPECT_FALSE(missing.equivalent("nor this") || dot.equivalent("..") || dot.equivalent("C:\\"));
}
