// Scratch directories below a temporary directory of the test's own: their places, what the first call sweeps
// away, names that are taken, and other users who were there before.

#include <zelm/files/FilesystemError.h>
#include <zelm/files/ScratchDirectories.h>

#include <support/ChildProcess.h>
#include <support/ExpectThrow.h>
#include <support/Threads.h>

#include <array>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <sys/stat.h>

using namespace Zelm;
using namespace Zelm::Testing;
namespace fs = std::filesystem;

namespace {

const fs::path kProgram = fs::read_symlink("/proc/self/exe");

fs::path processDirectory(const fs::path& base) {
    return base / std::to_string(::getpid());
}

/// Type and permissions, no link followed; 0 for nothing.
mode_t modeOf(const fs::path& path) {
    struct ::stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

/// Fails unless the next directory cannot be made, with such a text about a path.
void expectFailure(const std::string& name, const std::string& failure, const fs::path& path) {
    const std::string told = FilesystemPath::fromSystem(path).u8string();
    EXPECT_THROW_MSG(makeUniqueScratchDirectory(name), std::runtime_error, failure + " \"" + told + "\".");
}

constexpr const char* kNoLevels = "Couldn't create directories for";
constexpr const char* kNotCreated = "Failed to create directory";

class Scratch : public ::testing::Test {
protected:
    Scratch() {
        fs::create_directory(temporary_);
        ::setenv("TMPDIR", temporary_.c_str(), 1);
        setScratchDirectoryAppName("app", "");
        // A child of this process that is no more.
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(0);
        }
        EXPECT_EQ(::waitpid(child, nullptr, 0), child);
        dead_ = std::to_string(child);
    }
    ~Scratch() override { fs::remove_all(temporary_); }

    const fs::path temporary_ = fs::absolute("scratch." + std::to_string(::getpid()));
    const fs::path base_ = temporary_ / "app";
    std::string dead_;
};

} // namespace

TEST_F(Scratch, LiesBelowSharedLevelsThatAreNamedForTheProgram) {
    const std::string program = kProgram.stem();
    // The two names, and the levels that they make.
    const std::array<std::string, 3> rows[] = {
        {"", "", program},         {"", "sub", program + "/sub"},   {"app", "", "app"},
        {"app", "sub", "app/sub"}, {"/etc/x", "a\\b", "etc/x/a/b"}, {"gr \xc3\xbc", "C:", "gr \xc3\xbc/C:"}};
    for (const auto& row : rows) {
        inChild([&row, base = temporary_ / row[2], this] {
            ::umask(077);
            setScratchDirectoryAppName(row[0], row[1]);
            EXPECT_EQ(fs::path(makeUniqueScratchDirectory("\xc3\xa4")), processDirectory(base) / "\xc3\xa4");
            EXPECT_EQ(modeOf(processDirectory(base)), S_IFDIR | mode_t{0700});
            EXPECT_EQ(modeOf(processDirectory(base) / "\xc3\xa4"), S_IFDIR | mode_t{0700});
            for (fs::path level = base; level != temporary_; level = level.parent_path()) {
                EXPECT_EQ(modeOf(level), S_IFDIR | mode_t{01777}) << level;
            }
            setScratchDirectoryAppName("other", "");
            EXPECT_EQ(fs::path(makeUniqueScratchDirectory("y")), processDirectory(base) / "y");
        });
    }
}

/// Runs once more under such a name.
TEST_F(Scratch, IsCalledScratchForAProgramWithoutStem) {
    if (kProgram.filename().native().front() == '.') {
        setScratchDirectoryAppName("", "");
        EXPECT_EQ(fs::path(makeUniqueScratchDirectory("x")), processDirectory(temporary_ / "Scratch") / "x");
        return;
    }
    const fs::path link = kProgram.parent_path() / (".zelm" + std::to_string(::getpid()));
    fs::create_hard_link(kProgram, link);
    inChild([&link] {
        ::execl(link.c_str(), "", "--gtest_filter=*ProgramWithoutStem", static_cast<char*>(nullptr));
        ADD_FAILURE();
    });
    fs::remove(link);
}

TEST_F(Scratch, SweepsAwayWhatProcessesLeftThatAreNoMore) {
    const std::string alive = std::to_string(::getpid());
    // clang-format off
    const std::string going[] = {
        dead_, " " + dead_, "\t\n\v\f\r +" + dead_, "+" + dead_, "00" + dead_, "-1", "-" + dead_, "-" + alive, "-2147483648", "2147483647"};
    const std::set<std::string> staying = {
        alive, "0", "1", "00", "+1", "-0", dead_ + " ", dead_ + "a", "0x10", dead_ + ".5", "+-" + dead_, "--1", "- 1", "-", "+", " ", "foo",
        "\xff", "\xff" + dead_, "\xc2\xa0" + dead_, "2147483648", "4294967297", "-2147483649",
        std::to_string((1LL << 32) + std::stoll(dead_)), "99999999999999999999"};
    // clang-format on
    fs::create_directories(temporary_ / "outside/kept");
    const auto fill = [this](const std::string& name) {
        fs::create_directories(base_ / name / "inner/deep");
        fs::create_symlink(temporary_ / "outside", base_ / name / "inner/link");
        std::ofstream(base_ / name / "inner/file") << name;
    };
    std::for_each(std::begin(going), std::end(going), fill);
    std::for_each(staying.begin(), staying.end(), fill);
    fs::create_symlink(temporary_ / "outside", base_ / ("000" + dead_));
    fs::create_symlink("nowhere", base_ / ("0000" + dead_));
    std::ofstream(base_ / ("00000" + dead_)) << "";
    inChild([&] {
        std::set<std::string> expected = staying, left;
        expected.insert(std::to_string(::getpid()));
        fill(std::to_string(::getpid()));
        fill("0" + std::to_string(::getpid()));
        makeUniqueScratchDirectory("x");
        for (const auto& entry : fs::directory_iterator(base_)) {
            left.insert(entry.path().filename());
        }
        EXPECT_EQ(left, expected);
        EXPECT_EQ(modeOf(processDirectory(base_) / "inner"), 0u);
    });
    EXPECT_TRUE(fs::exists(base_ / "foo/inner/deep") && fs::exists(temporary_ / "outside/kept"));
}

TEST_F(Scratch, TakesTheFirstFreeName) {
    inChild([this] {
        const fs::path own = processDirectory(base_);
        // Names in their order, and what they give.
        const std::array<std::string, 2> rows[] = {
            {"x", "x"},       {"x", "x1"},       {"x", "x2"},          {"x1", "x11"}, {"x1", "x12"},
            {"x", "x3"},      {"file", "file1"}, {"link", "link2"},    {"", "1"},     {"", "2"},
            {"x/in", "x/in"}, {".", ".1"},       {"\\x\\in", "x/in1"}, {"C:", "C:"},  {"x2", "x21"}};
        makeUniqueScratchDirectory("freed");
        std::ofstream(own / "file") << "";
        fs::create_symlink("nowhere", own / "link");
        fs::create_symlink("freed", own / "link1");
        for (const auto& [name, taken] : rows) {
            EXPECT_EQ(fs::path(makeUniqueScratchDirectory(name)), own / taken);
        }
        fs::remove(own / "freed");
        EXPECT_EQ(fs::path(makeUniqueScratchDirectory("freed")), own / "freed");
        for (const std::string& name : {std::string("a\\b"), std::string("file\\b"), std::string(300, 'n')}) {
            expectFailure(name, kNotCreated, own / name);
        }
        EXPECT_THROW(makeUniqueScratchDirectory(ZString("cut\0off", 7)), std::runtime_error);
        EXPECT_EQ(modeOf(own / "cut"), 0u);
        EXPECT_THROW_MSG(makeUniqueScratchDirectory("\xff"), std::invalid_argument,
                         "invalid char filename argument");
    });
}

TEST_F(Scratch, TriesAgainAfterAFailureAndAfterAFork) {
    inChild([this] {
        ::setenv("TMPDIR", (temporary_ / "missing").c_str(), 1);
        EXPECT_THROW_MSG(makeUniqueScratchDirectory("x"), FilesystemError,
                         "temp_directory_path(): can't find temp directory");
        ::setenv("TMPDIR", temporary_.c_str(), 1);
        setScratchDirectoryAppName("app", "sub");
        fs::create_symlink("nowhere", base_);
        expectFailure("x", kNoLevels, base_ / "sub");
        fs::remove(base_);
        std::ofstream(base_.string()) << "";
        expectFailure("x", kNoLevels, base_ / "sub");
        fs::remove(base_);
        const auto expectOwn = [this] {
            EXPECT_EQ(fs::path(makeUniqueScratchDirectory("x")), processDirectory(base_ / "sub") / "x");
        };
        expectOwn();
        inChild(expectOwn);
        EXPECT_NE(modeOf(processDirectory(base_ / "sub") / "x"), 0u);
    });
}

TEST_F(Scratch, FollowsNoLinkThatOthersHavePlanted) {
    const fs::path target = temporary_ / "target";
    fs::create_directories(target / dead_);
    fs::permissions(target, fs::perms::all);
    inChild([&] {
        makeUniqueScratchDirectory("x");
        fs::rename(processDirectory(base_), base_ / "away");
        fs::create_symlink(target, processDirectory(base_));
        expectFailure("y", kNotCreated, processDirectory(base_) / "y");
    });
    if (::geteuid() == 0) {
        inChild([&] {
            // Nobody may have no way to the directory but from inside.
            fs::current_path(temporary_);
            ::setenv("TMPDIR", ".", 1);
            const fs::path base = "./app", another = base / std::to_string(::getppid());
            fs::create_symlink(target, processDirectory(base));
            fs::create_directory(another);
            fs::create_directory(base / dead_);
            ASSERT_TRUE(::chown(another.c_str(), kNobody, kNobody) == 0 && becomeNobody());
            expectFailure("x", kNotCreated, processDirectory(base));
            EXPECT_TRUE(modeOf(base / dead_) != 0 && modeOf(another) != 0);
        });
        fs::remove_all(base_);
        fs::create_symlink(target, base_);
        ASSERT_EQ(::lchown(base_.c_str(), kNobody, kNobody), 0);
        inChild([&] { expectFailure("x", kNoLevels, base_); });
    }
    EXPECT_TRUE(fs::remove(target / dead_) && fs::is_empty(target));
}

TEST_F(Scratch, GivesThreadsDirectoriesOfTheirOwn) {
    inChild([] {
        std::mutex mutex;
        std::map<std::string, int> uses;
        onFourThreads([&](int thread) {
            for (int round = 0; round < 40; ++round) {
                const std::string name = round % 2 ? "common" : std::to_string(thread) + ".";
                try {
                    const std::string made = makeUniqueScratchDirectory(name).u8string();
                    const std::lock_guard lock(mutex);
                    EXPECT_EQ(++uses[made], 1);
                } catch (const std::runtime_error&) {
                    EXPECT_EQ(name, "common");
                }
            }
        });
        EXPECT_GT(uses.size(), 80u);
    });
}
