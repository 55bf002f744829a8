// Variables, the machine's values behind them, the way back to the working directory, and scratch
// directories: their places, what the first call sweeps away, names that are taken, and other users who were
// there before.

#include <zelm/files/DirectorySaver.h>
#include <zelm/files/Environment.h>
#include <zelm/files/FilesystemError.h>
#include <zelm/files/ScratchDirectories.h>
#include <zelm/files/platform/Platform.h>

#include <support/ChildProcess.h>
#include <support/ExpectThrow.h>

#include <utf8.h>

#include <array>
#include <fstream>
#include <future>
#include <set>

using namespace Zelm;
using namespace Zelm::Environment;
using namespace Zelm::Testing;
namespace fs = std::filesystem;

namespace {

/// A directory of the test's own, for temporary files too.
const fs::path kHere = fs::absolute("environment." + std::to_string(::getpid()));
const fs::path kBase = kHere / "app";

struct Process : ::testing::Test {
    Process() {
        fs::create_directory(kHere);
        // Two separators in front are no server's name here.
        ::setenv("TMPDIR", ("/" + kHere.string()).c_str(), 1);
        setScratchDirectoryAppName("app", "");
    }
    ~Process() override { fs::remove_all(kHere); }
};

/// The value; "not set" if there is none and the target is as it was.
std::string found(bool (*get)(const ZString&, ZString*), const ZString& name) {
    ZString value = "set";
    return get(name, &value) ? value.to_string() : "not " + value.to_string();
}

/// No process is ever given so great an id.
const std::string kDead = "2147483647";

fs::path own(const fs::path& base) {
    return base / std::to_string(::getpid());
}

/// Fails unless the next directory cannot be made, with such a text about a path.
void expectFailure(const std::string& name, const std::string& failure, const fs::path& path) {
    const std::string told = FilesystemPath::fromSystem(path).u8string();
    EXPECT_THROW_MSG(makeUniqueScratchDirectory(name), std::runtime_error, failure + " \"" + told + "\".");
}

} // namespace

TEST_F(Process, HandsOverTheBytesOfANameAndOfNoPieceOfIt) {
    inChild([] {
        const auto get = getenv_zstring_allow_empty;
        for (const std::string& value : {std::string(), std::string(200000, 'x'), std::string("B=C\xff\n")}) {
            putenv_zstring("Zelm", value);
            EXPECT_TRUE(::getenv("Zelm") == value && getenv_zstring("Zelm") == value);
            EXPECT_EQ(found(get, "Zelm"), value);
        }
        for (const ZString& name : {ZString(), ZString("Zelm=B"), ZString("Zelm\0", 5)}) {
            EXPECT_THROW(putenv_zstring(name, "D"), std::bad_alloc);
            EXPECT_EQ(found(get, name), "not set");
        }
        try {
            putenv_zstring("Zelm", ZString("cut\0off", 7));
            ADD_FAILURE();
        } catch (const std::bad_alloc& error) {
            EXPECT_STREQ(error.what(), "bad allocation");
        }
        EXPECT_EQ(getenv_zstring("Zel") + getenv_zstring("zelm"), "");
        EXPECT_THROW_MSG(getenv_zstring("\xff"), utf8::invalid_utf8, "Invalid UTF-8");
    });
}

TEST_F(Process, FindsFirstLinesOfRegularFilesBehindVariables) {
    // Name, what the file holds, and what the value is.
    const std::string largest(std::size_t{1} << 20, 'x'), none = "not set";
    // clang-format off
    const std::array<std::string, 3> files[] = {
        {"plain", "abc", "abc"}, {"windows", "abc\r\nxyz", "abc"}, {"unix", "abc\nxyz", "abc"}, {"blank", "\nabc", ""},
        {"empty", "", ""}, {"cut", {"ab\0c", 4}, "ab"}, {"raw \xc3\xbc", "\xff ", "\xff "}, {"..2", "dots", "dots"},
        {"largest", largest, largest}, {"larger", largest + "x", none}, {"../outside", "secret", none},
        {"folder/inner", "secret", none}};
    const std::string others[] = {
        "", ".", "..", "folder", "link", "pipe", "/etc/hostname", "Plain", "plain/", {"plain\0", 6}, {"\0", 1}};
    // clang-format on
    const fs::path key = kHere / "SOFTWARE/Tornvale/Orvane/4.70/tvenv";
    const auto get = getenv_check_registry_zstring_allow_empty;
    details::platform::testing_setMachineStoreRoot(kHere.string());
    inChild([&] {
        EXPECT_EQ(found(get, "plain"), none);
        fs::create_directories(key / "folder");
        for (const auto& [name, text, value] : files) {
            std::ofstream(key / name) << text;
        }
        fs::create_symlink("plain", key / "link");
        EXPECT_EQ(::mkfifo((key / "pipe").c_str(), 0600), 0);
        // The first look was too early, and there is no other one.
        EXPECT_EQ(found(get, "plain"), none);
    });
    inChild([&] {
        for (const auto& [name, text, value] : files) {
            EXPECT_EQ(found(get, name), value) << name;
        }
        for (const std::string& name : others) {
            EXPECT_EQ(found(get, name), none) << name;
        }
        putenv_zstring("plain", "mine");
        putenv_zstring("unix", "");
        EXPECT_EQ(getenv_check_registry_zstring("plain") + found(get, "unix"), "mine");
        fs::rename(key, kHere / "moved");
        EXPECT_EQ(getenv_check_registry_zstring("windows"), "abc");
    });
}

TEST_F(Process, ReturnsWhereItStartedIfThereIsAWay) {
    const fs::path home = kHere / "gr\xc3\xbc\xc3\x9f";
    fs::create_directories(home / "back\\slash");
    inChild([&home] {
        constexpr const char* kText = "current_path(): can't get current working directory";
        fs::current_path(home / "back\\slash");
        EXPECT_THROW_MSG(DirectorySaver(), FilesystemError, kText);
        fs::current_path(home);
        const DirectorySaver saver;
        EXPECT_TRUE(saver.change_dir("..") && !saver.change_dir("missing"));
        DirectorySaver() = DirectorySaver(saver);
        EXPECT_TRUE(fs::current_path() == home && home == fs::path(saver.get_original_cwd().fs_path()));
        fs::remove_all(kHere);
        EXPECT_THROW_MSG(DirectorySaver(), FilesystemError, kText);
        EXPECT_TRUE(saver.change_dir("/"));
        static_cast<void>(DirectorySaver(saver));
        EXPECT_EQ(fs::current_path(), "/");
    });
}

TEST_F(Process, KeepsItsDirectoriesBelowSharedLevelsNamedForTheProgram) {
    const fs::path program = fs::read_symlink("/proc/self/exe").stem();
    // The two names, and the levels that they make.
    const std::array<fs::path, 3> rows[] = {
        {"", "", program}, {"/etc/x", "a\\b", "etc/x/a/b"}, {"\xc3\xbc", "C:", "\xc3\xbc/C:"}};
    for (const auto& row : rows) {
        inChild([&row, base = kHere / row[2]] {
            ::umask(077);
            setScratchDirectoryAppName(row[0].native(), row[1].native());
            EXPECT_EQ(fs::path(makeUniqueScratchDirectory("x")), own(base) / "x");
            for (fs::path level = own(base) / "x"; level != kHere; level = level.parent_path()) {
                const bool isShared = level.native().size() <= base.native().size();
                EXPECT_EQ(fs::status(level).permissions(), fs::perms(isShared ? 01777 : 0700)) << level;
            }
        });
    }
}

TEST_F(Process, SweepsAwayWhatThoseLeftThatAreNoMore) {
    const std::string alive = std::to_string(::getpid());
    // clang-format off
    const std::string going[] = {
        kDead, " " + kDead, "\t\n\v\f\r +" + kDead, "+" + kDead, "00" + kDead, "-1", "-" + alive, "-2147483648"};
    const std::set<std::string> staying = {
        alive, "0", "1", "00", "+1", "-0", kDead + " ", kDead + "a", "0x10", "2.5", "+-1", "--1", "- 1", "-", "+", " ", "foo", "\xff",
        "\xff" + kDead, "\xc2\xa0" + kDead, "2147483648", "4294967297", "-2147483649", "99999999999999999999"};
    // clang-format on
    const fs::path outside = kHere / "outside";
    fs::create_directories(outside / "kept");
    // This user's own link counts as what it leads to.
    fs::create_symlink(".", kBase);
    std::set<std::string> all = staying;
    all.insert(std::begin(going), std::end(going));
    for (const std::string& name : all) {
        fs::create_directories(kBase / name / "inner");
        fs::create_symlink(outside, kBase / name / "inner/link");
    }
    fs::create_symlink(outside, kBase / ("000" + kDead));
    inChild([&] {
        fs::create_directories(own(kBase) / "inner");
        makeUniqueScratchDirectory("x");
        EXPECT_FALSE(fs::exists(own(kBase) / "inner"));
    });
    for (const std::string& name : all) {
        EXPECT_EQ(fs::exists(kBase / name), staying.count(name) == 1) << name;
    }
    EXPECT_TRUE(fs::exists(kBase / "foo/inner/link/kept") && !fs::is_symlink(kBase / ("000" + kDead)));
}

TEST_F(Process, TakesTheFirstFreeNameAndBeginsAnewAfterAFailureAndAFork) {
    inChild([] {
        ::setenv("TMPDIR", (kHere / "missing").c_str(), 1);
        EXPECT_THROW_MSG(makeUniqueScratchDirectory("x"), FilesystemError,
                         "temp_directory_path(): can't find temp directory");
        ::setenv("TMPDIR", kHere.c_str(), 1);
        std::ofstream(kBase.string()) << "";
        expectFailure("x", "Couldn't create directories for", kBase);
        fs::remove(kBase);
        const fs::path made = own(kBase);
        // Names in their order, and what they give.
        const std::array<std::string, 2> rows[] = {
            {"x", "x"},       {"x", "x1"}, {"x", "x2"},          {"x1", "x11"}, {"", "1"},
            {"x/in", "x/in"}, {".", ".1"}, {"\\x\\in", "x/in1"}, {"C:", "C:"},  {"link", "link1"}};
        makeUniqueScratchDirectory("first");
        setScratchDirectoryAppName("late", "");
        fs::create_symlink("nowhere", made / "link");
        for (const auto& [name, taken] : rows) {
            EXPECT_EQ(fs::path(makeUniqueScratchDirectory(name)), made / taken);
        }
        fs::remove(made / "x1");
        EXPECT_EQ(fs::path(makeUniqueScratchDirectory("x")), made / "x1");
        expectFailure("a\\b", "Failed to create directory", made / "a/b");
        EXPECT_THROW(makeUniqueScratchDirectory(ZString("cut\0off", 7)), std::runtime_error);
        EXPECT_FALSE(fs::exists(made / "cut"));
        EXPECT_THROW_MSG(makeUniqueScratchDirectory("\xff"), std::invalid_argument,
                         "invalid char filename argument");
        inChild([] { EXPECT_EQ(fs::path(makeUniqueScratchDirectory("x")), own(kHere / "late") / "x"); });
        // Others may have put something in the place of the directory.
        fs::rename(made, kBase / "away");
        fs::create_symlink("away", made);
        expectFailure("y", "Failed to create directory", made / "y");
        EXPECT_TRUE(fs::exists(made / "x") && !fs::exists(made / "y"));
    });
}

TEST_F(Process, FollowsNoLinkThatOthersHavePlanted) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "Needs two users.";
    }
    const fs::path target = kHere / "target";
    fs::create_directories(target / kDead);
    fs::permissions(target, fs::perms::all);
    inChild([&] {
        // Nobody may have no way to the directory but from inside.
        fs::current_path(kHere);
        ::setenv("TMPDIR", ".", 1);
        const fs::path base = "./app", another = base / std::to_string(::getppid());
        fs::create_directories(another);
        fs::permissions(base, fs::perms(01777));
        fs::create_symlink(target, own(base));
        EXPECT_TRUE(::chown(another.c_str(), kNobody, kNobody) == 0 && becomeNobody());
        expectFailure("x", "Failed to create directory", own(base));
        EXPECT_TRUE(fs::exists(another));
    });
    fs::remove_all(kBase);
    fs::create_symlink(target, kBase);
    EXPECT_EQ(::lchown(kBase.c_str(), kNobody, kNobody), 0);
    inChild([] { expectFailure("x", "Couldn't create directories for", kBase); });
    EXPECT_TRUE(fs::remove(target / kDead) && fs::is_empty(target));
}

TEST_F(Process, GivesThreadsDirectoriesOfTheirOwnBesideVariables) {
    inChild([] {
        const auto work = [](const std::string& name) {
            for (std::size_t round = 0; round < 80; ++round) {
                putenv_zstring(name, std::string(round, 'x'));
                EXPECT_EQ(getenv_check_registry_zstring(name).size(), round);
                makeUniqueScratchDirectory(name);
            }
        };
        const auto other = std::async(std::launch::async, work, "other");
        work("one");
    });
}
