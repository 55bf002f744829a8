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

/// Rows of a table with blanks between them and '|' between columns.
std::vector<Names> table(const std::string& rows) {
    std::vector<Names> result;
    for (const ZString& row : tokenize(rows, " \n", false)) {
        result.push_back(tokenize_to_std(row, "|", true));
    }
    return result;
}

/// What `action` makes of each row is its last column.
template <class Action>
void expectLast(const std::string& rows, Action&& action) {
    for (const Names& row : table(rows)) {
        EXPECT_EQ(ZString(action(row)), row.back()) << row[0];
    }
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
};

/// "-" in front of the target where there is no way.
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
    for (const Names& row : table(R"(|||||| a||||a|a| \||\|\||| \\||\|\||| \\\a||\|\|a|a| Z:|Z:||Z:|Z:|Z:|
                                  a:a.b.c|a:||a:|a.b.c|a.b|.c z:\|z:|\|z:\||| [:||||[:|[:| C:/\a//b|C:|/|C:/a|b|b|
                                  \\s|\\s||\\s|\\s|\\s| //s\t\u|//s|\|//s\t|u|u| 1:\a|||1:|a|a| \C:\b||\|\C:|b|b|
                                  a\b\|||a\b||| a\.|||a||| a\..|||a||| a.||||a.|a|. x\.profile|||x|.profile||.profile
                                  a.b\c|||a.b|c|c|)")) {
        const ZPath p = raw(row[0]);
        const ZPath parts[] = {p,        p.root_name(), p.root_directory(), p.parent_path(), p.filename(),
                               p.stem(), p.extension()};
        const bool has[] = {!p.empty(),       p.has_root_name(), p.has_root_directory(), p.has_parent_path(),
                            p.has_filename(), p.has_stem(),      p.has_extension()};
        for (std::size_t i = 0; i < row.size(); ++i) {
            EXPECT_EQ(text(parts[i]), row[i]) << row[0];
            EXPECT_EQ(has[i], !row[i].empty()) << row[0] << i;
        }
        EXPECT_TRUE(p.is_absolute() == has[2] && p.is_relative() != has[2]);
        EXPECT_EQ(p.has_root_path(), has[1] || has[2]);
    }
}

TEST(Path, ChangesByTheRules) {
    expectLast(R"(a|\b|a\b a||a |a|a a|b|a\b a\|b|a\b C:|a|C:a C:|\a|C:\a ab:|c|ab:\c \\s|a|\\s\a
                    a|C:b|a\C:b)",
               [](const Names& row) { return ZPath(row[0]) /= row[1]; });
    expectLast(R"(a\.\b\..\c|a\c ..\..\a|..\..\a a\..\..\b|..\b C:\a\..\..|C:\.. a\b\|a\b C:a\.\b|C:a\b
                    C:\..\a|C:\..\a a\..| \\s\\a\..|\\s\ .\C:\b|C:b)",
               [](const Names& row) { return ZPath(row[0]).normalize(); });
    const char* const resolved =
        R"(C:\a|b|C:\a\b C:\a|\b|C:\b C:\a|D:\b|D:\b C:\a|C:b|C:\a\b C:\a|D:b|D:b c:\a|C:b|C:\a\b
                    a|C:b|C:a\b \\s\a|\b|\\s\b \a|C:b|C:\a\b a\b|..\..\..|..)";
    expectLast(resolved, [](const Names& row) { return ZPath::resolve_relative_path(row[1], row[0]); });
    expectLast(resolved, [](const Names& row) { return ZPath(row[0]).append_path(row[1]); });
    expectLast(R"(C:\a\b\c|C:\a\d|5|..\b\c C:\a\b\c|C:\a\d|0|-C:\a\b\c C:\x\y|C:\a\b|5|-C:\x\y
                    D:\x\.\y|C:\x|5|-D:\x\y a\b|a|5|-a\b C:a\b|C:a|5|-C:a\b C:\a\b|c:\A\B|-2147483648|
                    C:\a|C:\|5|-C:\a C:\a\b|C:\a\|1|..\b \a\b|\a\.\c\..|2|-\a\b \a\b|\a\.\c\..|3|..\..\..\b \a\C:\b|\A|0|C:b)",
               [](const Names& row) { return relative(row[0], row[1], std::stoi(row[2])); });
    EXPECT_EQ(text(ZPath::make_relative_path("\\a\\b", "\\a", nullptr, 0)), "b");
    expectLast(R"(a.b|txt|a.txt a.b|.txt|a.txt a\b\|t|a\b\.t C:\x.y\z|t|C:\x.y\z.t .profile|| ..||.
                    a\.profile||a\ || a.b\c||a.b\c a.b.c||a.b abc||abc)",
               [](const Names& row) { return ZPath(row[0]).replace_extension(row[1]); });
    expectLast(R"(a\b|a\ a\b\|a\b \a|\ C:\\|C: C:a|C: C:| \\| |)",
               [](const Names& row) { return ZPath(row[0]).remove_filename(); });
    expectLast(R"(a|a\ a/|a/ |\)", [](const Names& row) { return ZPath::add_separator(row[0]); });
    FilesystemPath twice(u"a path of some length");
    EXPECT_EQ((twice /= twice).u8string(), "a path of some length\\a path of some length");
    EXPECT_EQ(text(ZPath("a.b").remove_extension() += "+"), "a+");
    EXPECT_TRUE(raw("a/").ends_with_separator() && !ZPath::ends_with_separator(""));
}

TEST(Path, AgreesWithAModelOnRandomText) {
    std::mt19937 random(10);
    const char* const pieces[] = {"a",  "B",  "b",     ".",  "..", "/",    "\\",
                                  "\\", "\\", "\\a\\", "C:", "c:", "D:\\", "\\\\s"};
    const auto randomPath = [&] {
        std::string path;
        for (auto count = random() % 9; count > 0; --count) {
            path += pieces[random() % std::size(pieces)];
        }
        return path;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string a = randomPath(), b = randomPath();
        SCOPED_TRACE(a + ' ' + b);
        const Model model(a);
        Names elements = model.names, found;
        elements.insert(elements.begin(), model.directory.empty() ? 0 : 1, model.directory);
        elements.insert(elements.begin(), model.name.empty() ? 0 : 1, model.name);
        const FilesystemPath path = raw(a);
        for (const std::u16string_view element : path) {
            found.push_back(FilesystemPath(element).u8string());
        }
        EXPECT_EQ(found, elements);
        EXPECT_EQ(text(raw(a).normalize()), model.normal());
        EXPECT_EQ(text(raw(a) /= raw(b)), Model::joined(a, b));
    }
}

TEST(Path, ComparesWithoutRegardToCase) {
    EXPECT_EQ(ZPath::compare_filenames("\xF0\x90\x80\x80", "\xEF\xBF\xBD"), -1);
    EXPECT_EQ(ZPath::compare_filenames("C:\\X", "c:/x"), 0);
    EXPECT_EQ(ZPath::compare_filenames("ab", "a_"), -1);
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
        const int difference = folded(a).compare(folded(b));
        const bool starts = folded(a).compare(0, folded(b).size(), folded(b)) == 0;
        const auto agree = [&] {
            EXPECT_EQ(ZPath::compare_filenames(left, right), (difference > 0) - (difference < 0));
            EXPECT_EQ(left.starts_with(right), starts);
        };
        EXPECT_EQ(allocationsOf(agree), 0);
    }
}

TEST(Path, ConvertsBetweenEncodings) {
    const ZPath path("a/\xC3\xA4/\xE2\x82\xAC\\\xF0\x9F\x98\x80/");
    const ZString native = "a\\\xC3\xA4\\\xE2\x82\xAC\\\xF0\x9F\x98\x80\\",
                  generic = native.replace("\\", "/");
    EXPECT_EQ(path.u16string(), u"a\\\xE4\\\x20AC\\\xD83D\xDE00\\");
    EXPECT_EQ(path.generic_u16string(), u"a/\xE4/\x20AC/\xD83D\xDE00/");
    EXPECT_EQ(path.wstring(), L"a\\\xE4\\\x20AC\\\x1F600\\");
    EXPECT_EQ(path.generic_wstring(), L"a/\xE4/\x20AC/\x1F600/");
    for (const ZString& each :
         {ZString(path), path.string(), path.u8string(), ZString(path.fs_path().u8string())}) {
        EXPECT_EQ(each, native);
    }
    for (const ZString& each : {path.generic(), path.generic_string(), path.generic_u8string()}) {
        EXPECT_EQ(each, generic);
    }
    EXPECT_EQ(std::filesystem::path(path.fs_path()), generic.to_string());
    EXPECT_EQ(text(ZPath("a\0/"s)) + text(ZPath(ZStringLiteral("a/b"))) + text(raw("a/b")), "a\0\\a\\ba/b"s);
    EXPECT_EQ(FilesystemPath::fromSystem("a/\xC3\xA4"), FilesystemPath(u"a\\\xE4"));
    EXPECT_THROW_MSG(ZPath("/\xFF"), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_THROW_MSG(ZPath("\xED\xA0\x80"), utf8::invalid_code_point, "Invalid code point");
    EXPECT_THROW_MSG(ZPath("a\xE2\x82"), utf8::not_enough_room, "Not enough space");
    for (const auto make :
         {+[] { FilesystemPath::fromNarrow("\xFF"); }, +[] { FilesystemPath::fromSystem("\xC3"); }}) {
        EXPECT_THROW_MSG(make(), std::invalid_argument, "invalid char filename argument");
    }
    const ZPath broken = ZPath::from_fs_path(u"a\xDE00\xD83D");
    EXPECT_EQ(broken.wstring(), std::wstring({L'a', wchar_t{0xDE00}, wchar_t{0xD83D}}));
    EXPECT_THROW_MSG(broken.native(), utf8::invalid_utf16, "Invalid UTF-16");
    EXPECT_THROW_MSG(broken.generic(), utf8::invalid_utf16, "Invalid UTF-16");
    EXPECT_EQ(allocationsOf([] { ZPath("some/path/that/is/longer/than/short/strings").normalize(); }), 1);
}

TEST(Path, IsCompletedByTheWorkingDirectory) {
    const ZPath here = ZPath::current_path();
    EXPECT_EQ(text(here), text(ZPath(std::filesystem::current_path().string())));
    EXPECT_EQ(text(ZPath().complete_path()), text(here));
    EXPECT_EQ(text(ZPath("a\\..\\b").complete_path()), text(here) + "\\b");
    expectLast(R"(\a\.|\a D:foo|D:\foo D:\foo\|D:\foo \\s|\\s\)",
               [](const Names& row) { return ZPath(row[0]).physical_path(); });
    EXPECT_EQ(text(ZPath("\\a\\.").system_complete()), "\\a\\.");
    EXPECT_TRUE(ZPath("C:\\abc").is_contained_within_path("C:\\ab"));
    EXPECT_TRUE(ZPath("a\\b").is_contained_within_path_physical(here));
    EXPECT_FALSE(ZPath("a\\..\\..").is_contained_within_path("."));
    ZPath dot("."), missing("no such thing");
    EXPECT_TRUE(dot.equivalent("/proc/self/cwd") && missing.equivalent("x\\..\\NO such thing"));
    EXPECT_FALSE(missing.equivalent("nor this") || dot.equivalent("..") || dot.equivalent("C:\\"));
}
