// Paths by their text: against tables, and against a model that splits them by a regular expression.

#include <zelm/files/ZPath.h>

#include <support/Allocations.h>
#include <support/ExpectThrow.h>

#include <utf8.h>

#include <algorithm>
#include <limits>
#include <random>
#include <regex>
#include <stdexcept>
#include <type_traits>
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

std::string lined(const Names& names) {
    std::string result;
    for (const std::string& each : names) {
        result += (result.empty() ? "" : "\\") + each;
    }
    return result;
}

std::string upper(std::string ascii) {
    std::transform(ascii.begin(), ascii.end(), ascii.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return ascii;
}

struct Model {
    std::string name, directory;
    Names names;

    explicit Model(const std::string& path) {
        static const std::regex root(R"(([A-Za-z]:|[/\\]{2}[^/\\]+)?([/\\]?)[/\\]*(.*))"),
            element(R"([^/\\]+|[/\\]+$)"), separators(R"([/\\]+)");
        std::smatch parts;
        std::regex_match(path, parts, root);
        name = parts[1], directory = parts[2];
        const std::string rest = parts[3];
        for (std::sregex_iterator at(rest.begin(), rest.end(), element), end; at != end; ++at) {
            names.push_back(std::regex_replace(at->str(), separators, "."));
        }
    }

    static std::string joined(const std::string& a, const std::string& b) {
        static const std::regex complete(R"(([A-Za-z]:)?|.*[/\\])"), rooted(R"(([/\\].*)?)");
        return a + (std::regex_match(a, complete) || std::regex_match(b, rooted) ? "" : "\\") + b;
    }

    static std::string normal(const Names& names) {
        Names up, stack;
        for (const std::string& each : names) {
            if (each == ".." && !stack.empty()) {
                stack.pop_back();
            } else if (each != ".") {
                (each == ".." ? up : stack).push_back(each);
            }
        }
        up.insert(up.end(), stack.begin(), stack.end());
        return lined(up);
    }
    std::string normal() const { return name + directory + normal(names); }

    std::string resolved(const Model& a, const std::string& base, const std::string& other) const {
        if (name.empty()) {
            return Model(joined(directory.empty() ? base : a.name, other)).normal();
        }
        if (!directory.empty() || (!a.name.empty() && upper(a.name) != upper(name))) {
            return normal();
        }
        return Model(joined(joined(joined(name, a.directory), lined(a.names)), lined(names))).normal();
    }

    /// "-" in front of this path where there is no way.
    std::string from(const Model& base, int maxUp) const {
        std::size_t same = 0;
        while (same < std::min(names.size(), base.names.size()) &&
               upper(names[same]) == upper(base.names[same])) {
            ++same;
        }
        Names way(base.names.size() - same, "..");
        const bool tooFar = !way.empty() && static_cast<long>(way.size()) > maxUp;
        if (directory.empty() || upper(name + directory) != upper(base.name + base.directory) || same == 0 ||
            tooFar) {
            return "-" + normal();
        }
        way.insert(way.end(), names.begin() + static_cast<long>(same), names.end());
        return normal(way);
    }
};

std::string relative(const ZPath& target, const ZPath& base, int maxUp) {
    bool ok = maxUp % 2 == 0;
    const std::string result = text(ZPath::make_relative_path(target, base, &ok, maxUp));
    EXPECT_EQ(text(ZPath::make_relative_path(target, base, nullptr, maxUp)), result);
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

/// What `action` makes of each row is the last of the row.
template <class Action>
void expectLast(const std::vector<Names>& rows, Action&& action) {
    for (const Names& row : rows) {
        EXPECT_EQ(ZString(action(row)), row.back()) << row[0] << ' ' << row[1];
    }
}

template <class T, class = void>
constexpr bool kIsComparable = false;
template <class T>
constexpr bool kIsComparable<T, std::void_t<decltype(std::declval<T>() == std::declval<T>())>> = true;
// Whoever compares paths has to say how.
static_assert(kIsComparable<FilesystemPath> && !kIsComparable<ZPath> &&
              !std::is_constructible_v<ZPath, FilesystemPath>);

} // namespace

// clang-format off
TEST(Path, TellsItsParts) {
    // Path, root name, root directory, parent, filename, stem, extension.
    const Names rows[] = {
        {"", "", "", "", "", "", ""}, {"a", "", "", "", "a", "a", ""}, {"\\", "", "\\", "\\", "", "", ""}, {"\\\\", "", "\\", "\\", "", "", ""},
        {"\\\\\\a", "", "\\", "\\", "a", "a", ""}, {"Z:", "Z:", "", "Z:", "Z:", "Z:", ""}, {"a:a.b.c", "a:", "", "a:", "a.b.c", "a.b", ".c"},
        {"z:\\", "z:", "\\", "z:\\", "", "", ""}, {"[:", "", "", "", "[:", "[:", ""}, {"C:/\\a//b", "C:", "/", "C:/a", "b", "b", ""}, {"\\\\s", "\\\\s", "", "\\\\s", "\\\\s", "\\\\s", ""},
        {"//s\\t\\u", "//s", "\\", "//s\\t", "u", "u", ""}, {"1:\\a", "", "", "1:", "a", "a", ""}, {"\\C:\\b", "", "\\", "\\C:", "b", "b", ""},
        {"a\\b\\", "", "", "a\\b", "", "", ""}, {"a\\.", "", "", "a", "", "", ""}, {"a\\..", "", "", "a", "", "", ""}, {"a.", "", "", "", "a.", "a", "."},
        {"x\\.profile", "", "", "x", ".profile", "", ".profile"}, {"a.txt", "", "", "", "a.txt", "a", ".txt"}, {"a.b\\c", "", "", "a.b", "c", "c", ""}};
    for (const Names& row : rows) {
        const ZPath p = raw(row[0]);
        EXPECT_EQ((Names{row[0], text(p.root_name()), text(p.root_directory()), text(p.parent_path()), text(p.filename()), text(p.stem()), text(p.extension())}), row);
        EXPECT_EQ((std::vector<bool>{p.has_root_name(), p.has_root_directory(), p.has_parent_path(), p.has_filename(), p.has_stem(), p.has_extension(), p.has_root_path(), p.has_relative_path(), p.is_absolute(), p.is_relative()}),
                  (std::vector<bool>{!row[1].empty(), !row[2].empty(), !row[3].empty(), !row[4].empty(), !row[5].empty(), !row[6].empty(), !p.root_path().empty(), !p.relative_path().empty(), !row[2].empty(), row[2].empty()})) << row[0];
    }
}

TEST(Path, ChangesByTheRules) {
    expectLast({{"a", "\\b", "a\\b"}, {"a", "", "a"}, {"", "a", "a"}, {"a", "b", "a\\b"}, {"a\\", "b", "a\\b"}, {"C:", "a", "C:a"},
                {"C:", "\\a", "C:\\a"}, {"ab:", "c", "ab:\\c"}, {"\\\\s", "a", "\\\\s\\a"}, {"a", "C:b", "a\\C:b"}},
               [](const Names& row) { return ZPath(row[0]) /= row[1]; });
    expectLast({{"a\\.\\b\\..\\c", "a\\c"}, {"..\\..\\a", "..\\..\\a"}, {"a\\..\\..\\b", "..\\b"}, {"C:\\a\\..\\..", "C:\\.."}, {"a\\b\\", "a\\b"},
                {"C:a\\.\\b", "C:a\\b"}, {"C:\\..\\a", "C:\\..\\a"}, {"a\\..", ""}, {".", ""}, {"\\\\s\\\\a\\..", "\\\\s\\"}, {"C:a\\..\\b", "C:b"}},
               [](const Names& row) { return ZPath(row[0]).normalize(); });
    const std::vector<Names> resolved = {{"C:\\a", "b", "C:\\a\\b"}, {"C:\\a", "\\b", "C:\\b"}, {"C:\\a", "D:\\b", "D:\\b"}, {"C:\\a", "C:b", "C:\\a\\b"}, {"C:\\a", "D:b", "D:b"},
        {"c:\\a", "C:b", "C:\\a\\b"}, {"a", "C:b", "C:a\\b"}, {"\\a", "C:b", "C:\\a\\b"}, {"\\\\s\\a", "\\b", "\\\\s\\b"}, {"a\\b", "..\\..\\..", ".."}};
    expectLast(resolved, [](const Names& row) { return ZPath::resolve_relative_path(row[1], row[0]); });
    expectLast(resolved, [](const Names& row) { return ZPath(row[0]).append_path(row[1]); });
    expectLast({{"C:\\a\\b\\c", "C:\\a\\d", "5", "..\\b\\c"}, {"C:\\a\\b\\c", "C:\\a\\d", "0", "-C:\\a\\b\\c"}, {"C:\\x\\y", "C:\\a\\b", "5", "-C:\\x\\y"}, {"D:\\x\\.\\y", "C:\\x", "5", "-D:\\x\\y"},
                {"a\\b", "a", "5", "-a\\b"}, {"C:a\\b", "C:a", "5", "-C:a\\b"}, {"C:\\a\\b", "c:\\A\\B", "-2147483648", ""}, {"C:\\a", "C:\\", "5", "-C:\\a"},
                {"C:\\a\\b", "C:\\a\\", "1", "..\\b"}, {"\\a\\b", "\\a\\.\\c\\..", "2", "-\\a\\b"}, {"\\a\\b", "\\a\\.\\c\\..", "3", "..\\..\\..\\b"}},
               [](const Names& row) { return relative(row[0], row[1], std::stoi(row[2])); });
    expectLast({{"a.b", "txt", "a.txt"}, {"a.b", ".txt", "a.txt"}, {"a\\b\\", "t", "a\\b\\.t"}, {"C:\\x.y\\z", "t", "C:\\x.y\\z.t"}, {".profile", "", ""},
                {"..", "", "."}, {"a\\.profile", "", "a\\"}, {"", "", ""}, {"a.b\\c", "", "a.b\\c"}, {"a.b.c", "", "a.b"}, {"abc", "", "abc"}},
               [](const Names& row) { return ZPath(row[0]).replace_extension(row[1]); });
    expectLast({{"a\\b", "a\\"}, {"a\\b\\", "a\\b"}, {"\\a", "\\"}, {"C:\\\\", "C:"}, {"C:a", "C:"}, {"C:", ""}, {"\\\\", ""}, {"", ""}},
               [](const Names& row) { return ZPath(row[0]).remove_filename(); });
    FilesystemPath twice(u"a path of some length");
    EXPECT_EQ((twice /= twice).u8string(), "a path of some length\\a path of some length");
    EXPECT_EQ(text(ZPath("a.b").remove_extension() += "+") + ZPath::add_separator("a") + ZPath::add_separator("a/") + ZPath::add_separator(""), ZString("a+a\\a/\\"));
    EXPECT_TRUE(ZPath::ends_with_separator("/") && raw("a/").ends_with_separator() && !ZPath::ends_with_separator("") && !ZPath().ends_with_separator());
}

TEST(Path, AgreesWithAModelOnRandomText) {
    std::mt19937 random(10);
    const char* const pieces[] = {"a", "B", "b", ".", "..", "/", "\\", "\\", "\\", "\\a\\", "C:", "c:", "D:\\", "\\\\s"};
    const auto randomPath = [&](std::string path) {
        for (auto count = random() % 9; count > 0; --count) {
            path += pieces[random() % std::size(pieces)];
        }
        return path;
    };
    for (int i = 0; i < 4000; ++i) {
        const std::string a = randomPath(""), b = randomPath(a.substr(0, random() % 9));
        const Model model(a), other(b);
        Names elements = model.names, found;
        elements.insert(elements.begin(), model.directory.empty() ? 0 : 1, model.directory);
        elements.insert(elements.begin(), model.name.empty() ? 0 : 1, model.name);
        const FilesystemPath path = raw(a);
        std::transform(path.begin(), path.end(), std::back_inserter(found), [](std::u16string_view e) { return FilesystemPath(e).u8string(); });
        EXPECT_EQ(found, elements) << a;
        EXPECT_EQ(text(raw(a).normalize()), model.normal()) << a;
        EXPECT_EQ(text(raw(a).resolve_path(raw(b))), other.resolved(model, a, b)) << a << ' ' << b;
        const int maxUp = static_cast<int>(random() % 5) - 1;
        EXPECT_EQ(relative(raw(a), raw(b), maxUp), model.from(other, maxUp)) << a << ' ' << b;
        const Names parents(model.names.begin(), model.names.end() - (model.names.empty() ? 0 : 1));
        EXPECT_EQ(text(raw(a).parent_path()), Model::joined(model.name + model.directory, lined(parents))) << a;
    }
}

TEST(Path, ComparesWithoutRegardToCase) {
    EXPECT_EQ(ZPath::compare_filenames("C:\\X", "c:/x"), 0);
    EXPECT_EQ(ZPath::compare_filenames("ab", "a_"), -1);
    EXPECT_EQ(ZPath::compare_filenames("\xF0\x90\x80\x80", "\xEF\xBF\xBD"), -1);
    EXPECT_TRUE(ZPath::equal_filenames(ZString("a\0b"), "A") && ZPath("A").equal_filenames(ZString("a\0b")) && !raw("a/b").equal_filenames("a\\b"));
    EXPECT_TRUE(ZPath("C:\\ABC").starts_with("c:\\ab") && ZPath("abc").starts_with(ZString("A\0x")) && !ZPath("ab").starts_with("abc"));
    std::mt19937 random(3);
    const std::u16string units = u"_\0\0`{\xF7\xDF\x1E9E\x131\x17F\xD800\xD801\xDC28\xDC00\xFFFF"s.append(kSmall).append(kCapital);
    for (int i = 0; i < 20000; ++i) {
        std::u16string a, b;
        for (auto bits = random() % 64; bits > 0; bits /= 2) {
            (bits % 2 ? a : b) += units[random() % units.size()];
        }
        const ZPath left = ZPath::from_fs_path(a), right = ZPath::from_fs_path(b);
        int order = 0;
        bool starts = false;
        EXPECT_EQ(allocationsOf([&] { order = ZPath::compare_filenames(left, right), starts = left.starts_with(right); }), 0);
        const int difference = folded(a).compare(folded(b));
        EXPECT_EQ(order, (difference > 0) - (difference < 0));
        EXPECT_EQ(starts, folded(a).compare(0, folded(b).size(), folded(b)) == 0);
    }
}

TEST(Path, ConvertsBetweenEncodings) {
    const ZPath path("a/\xC3\xA4/\xE2\x82\xAC\\\xF0\x9F\x98\x80/");
    const ZString native = "a\\\xC3\xA4\\\xE2\x82\xAC\\\xF0\x9F\x98\x80\\", generic = "a/\xC3\xA4/\xE2\x82\xAC/\xF0\x9F\x98\x80/";
    EXPECT_TRUE(path.u16string() == u"a\\\xE4\\\x20AC\\\xD83D\xDE00\\" && path.generic_u16string() == u"a/\xE4/\x20AC/\xD83D\xDE00/");
    EXPECT_TRUE(path.wstring() == L"a\\\xE4\\\x20AC\\\x1F600\\" && path.generic_wstring() == L"a/\xE4/\x20AC/\x1F600/");
    EXPECT_EQ(ZString(path), native);
    EXPECT_TRUE(path.string() == native && path.u8string() == native && path.native() == native && path.fs_path().u8string() == native);
    EXPECT_TRUE(path.generic() == generic && path.generic_string() == generic && path.generic_u8string() == generic && path.fs_path().generic_u8string() == generic);
    EXPECT_EQ(std::filesystem::path(path.fs_path()), generic.to_string());
    EXPECT_EQ(text(ZPath("a/b")) + text(ZPath("a\0/"s)) + text(ZPath(ZStringLiteral("a/b"))) + text(raw("a/b")), "a\\ba\0\\a\\ba/b"s);
    EXPECT_EQ(FilesystemPath::fromSystem("a/\xC3\xA4"), FilesystemPath(u"a\\\xE4"));
    EXPECT_THROW_MSG(ZPath("/\xFF"), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_THROW_MSG(ZPath("\xED\xA0\x80"), utf8::invalid_code_point, "Invalid code point");
    EXPECT_THROW_MSG(ZPath("a\xE2\x82"), utf8::not_enough_room, "Not enough space");
    EXPECT_THROW_MSG(FilesystemPath::fromNarrow("\xFF"), std::invalid_argument, "invalid char filename argument");
    EXPECT_THROW_MSG(FilesystemPath::fromSystem("a\xC3"), std::invalid_argument, "invalid char filename argument");
    const FilesystemPath broken(u"a\xDE00\xD83D");
    EXPECT_EQ(broken.wstring(), std::wstring({L'a', wchar_t{0xDE00}, wchar_t{0xD83D}}));
    EXPECT_THROW_MSG(ZPath::from_fs_path(broken).native(), utf8::invalid_utf16, "Invalid UTF-16");
    EXPECT_THROW_MSG(ZPath::from_fs_path(broken).generic(), utf8::invalid_utf16, "Invalid UTF-16");
    EXPECT_EQ(allocationsOf([] { ZPath("some/path/that/is/longer/than/short/strings").normalize(); }), 1);
}

TEST(Path, IsCompletedByTheWorkingDirectory) {
    const std::string here = text(ZPath::current_path());
    EXPECT_EQ(here, text(ZPath(std::filesystem::current_path().string())));
    const std::vector<Names> rows = {{"", here}, {"a\\..\\b", here + "\\b"}, {"\\a\\.", "\\a"}, {"D:foo", "D:\\foo"}, {"D:\\foo\\", "D:\\foo"}, {"\\\\s", "\\\\s\\"}};
    expectLast(rows, [](const Names& row) { return ZPath(row[0]).complete_path(); });
    expectLast(rows, [](const Names& row) { return ZPath(row[0]).physical_path(); });
    EXPECT_EQ(text(ZPath("\\a\\.").system_complete()), "\\a\\.");
    EXPECT_TRUE(ZPath("C:\\abc").is_contained_within_path("C:\\ab") && ZPath("a\\b").is_contained_within_path_physical(ZPath::current_path()) && !ZPath("a\\..\\..").is_contained_within_path("."));
    ZPath dot("."), missing("no such thing");
    EXPECT_TRUE(dot.equivalent("/proc/self/cwd") && missing.equivalent("x\\..\\NO such thing"));
    EXPECT_FALSE(missing.equivalent("nor this") || dot.equivalent("..") || dot.equivalent("C:\\"));
}
// clang-format on
