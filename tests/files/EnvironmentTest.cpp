// Variables, the machine's values behind them, and the way back to the working directory.

#include <zelm/files/DirectorySaver.h>
#include <zelm/files/Environment.h>
#include <zelm/files/FilesystemError.h>
#include <zelm/files/platform/Platform.h>

#include <support/ChildProcess.h>
#include <support/ExpectThrow.h>
#include <support/Threads.h>

#include <utf8.h>

#include <array>
#include <fstream>

using namespace Zelm;
using namespace Zelm::Environment;
using namespace Zelm::Testing;
namespace fs = std::filesystem;

namespace {

/// The value; "not set" if there is none, with the target as it was.
std::string found(bool (*get)(const ZString&, ZString*), const ZString& name) {
    ZString value = "untouched";
    const bool isFound = get(name, &value);
    EXPECT_TRUE(isFound || value == "untouched");
    return isFound ? value.to_string() : "not set";
}

/// The key of the machine's store below a root of the test's own.
class MachineValues : public ::testing::Test {
protected:
    MachineValues() { details::platform::testing_setMachineStoreRoot(root_.string()); }
    ~MachineValues() override { fs::remove_all(root_); }

    void write(const std::string& name, const std::string& text) const {
        fs::create_directories(key_ / "folder");
        std::ofstream(key_ / name) << text;
    }

    const fs::path root_ = fs::absolute("store." + std::to_string(::getpid()));
    const fs::path key_ = root_ / "SOFTWARE/Tornvale/Orvane/4.70/tvenv";
};

} // namespace

TEST(Environment, HandsOverTheBytesOfANameAndOfNoPieceOfIt) {
    inChild([] {
        const auto get = getenv_zstring_allow_empty;
        for (const std::string value : {"", "a=b", "gr\xc3\xbc\xc3\x9f", "raw \xff", "two\nlines", "B=C"}) {
            for (const std::string& text : {std::string(200000, 'x') + value, value}) {
                putenv_zstring("Zelm", text);
                EXPECT_EQ(::getenv("Zelm"), text);
                EXPECT_EQ(getenv_zstring("Zelm"), text);
                EXPECT_EQ(found(get, "Zelm"), text);
            }
        }
        for (const ZString& name : {ZString(), ZString("Zelm=B"), ZString("Zelm\0", 5), ZString("\0", 1)}) {
            EXPECT_EQ(found(get, name) + found(get, "Zel") + found(get, "zelm"), "not setnot setnot set");
            EXPECT_THROW(putenv_zstring(name, "D"), std::bad_alloc);
        }
        try {
            putenv_zstring("Zelm", ZString("cut\0off", 7));
            ADD_FAILURE();
        } catch (const std::bad_alloc& error) {
            EXPECT_STREQ(error.what(), "bad allocation");
        }
        EXPECT_STREQ(::getenv("Zelm"), "B=C");
        EXPECT_THROW_MSG(getenv_zstring("\xff"), utf8::invalid_utf8, "Invalid UTF-8");
        EXPECT_THROW_MSG(putenv_zstring("\xff", ""), utf8::invalid_utf8, "Invalid UTF-8");
        ::clearenv();
        EXPECT_EQ(found(get, "Zelm"), "not set");
    });
}

TEST_F(MachineValues, AreFirstLinesOfRegularFilesBehindVariables) {
    // Name, what the file holds, and what the value is.
    const std::string largest(std::size_t{1} << 20, 'x'), none = "not set";
    // clang-format off
    const std::array<std::string, 3> files[] = {
        {"plain", "abc", "abc"}, {"windows", "abc\r\nxyz", "abc"}, {"unix", "abc\nxyz", "abc"}, {"old", "abc\rxyz", "abc"},
        {"blank", "\nabc", ""}, {"empty", "", ""}, {"cut", {"ab\0c", 4}, "ab"}, {"raw \xc3\xbc", "\xff ", "\xff "},
        {"largest", largest, largest}, {"larger", largest + "x", none}, {"..2", "dots", "dots"}, {"../outside", "secret", none}};
    const std::string others[] = {
        "", ".", "..", "folder", "folder/inner", "link", "pipe", "/etc/hostname", "Plain", "./plain", "plain/", "plain/.",
        {"plain\0", 6}, {"\0", 1}, std::string(5000, 'n')};
    // clang-format on
    for (const auto& file : files) {
        write(file[0], file[1]);
    }
    write("folder/inner", "secret");
    fs::create_symlink("plain", key_ / "link");
    ASSERT_EQ(::mkfifo((key_ / "pipe").c_str(), 0600), 0);
    inChild([&] {
        const auto get = getenv_check_registry_zstring_allow_empty;
        for (const auto& [name, text, value] : files) {
            EXPECT_EQ(found(get, name), value) << name;
            EXPECT_EQ(getenv_check_registry_zstring(name), value == none ? "" : value);
        }
        for (const std::string& name : others) {
            EXPECT_EQ(found(get, name), none) << name;
        }
        putenv_zstring("plain", "mine");
        putenv_zstring("unix", "");
        EXPECT_EQ(found(get, "plain") + found(get, "unix"), "mine");
        EXPECT_EQ(found(getenv_zstring_allow_empty, "windows"), none);
    });
}

TEST_F(MachineValues, AreLookedForOnceInTheLifeOfAProcess) {
    inChild([this] {
        EXPECT_EQ(getenv_check_registry_zstring("late"), "");
        write("late", "abc");
        EXPECT_EQ(getenv_check_registry_zstring("late"), "");
    });
    inChild([this] {
        EXPECT_EQ(getenv_check_registry_zstring("late"), "abc");
        fs::rename(root_ / "SOFTWARE", root_ / "moved");
        EXPECT_EQ(getenv_check_registry_zstring("late"), "abc");
    });
}

TEST_F(MachineValues, ServeThreadsAtOnceBesideVariables) {
    write("shared", "abc");
    inChild([] {
        onFourThreads([](int thread) {
            const ZString name("Zelm" + std::to_string(thread));
            for (std::size_t round = 0; round < 100; ++round) {
                EXPECT_EQ(getenv_check_registry_zstring("shared"), "abc");
                putenv_zstring(name, std::string(round, 'x'));
                EXPECT_EQ(getenv_zstring(name).size(), round);
            }
        });
    });
}

TEST(DirectorySaver, ReturnsWhereItStartedIfThereIsAWay) {
    const fs::path home = fs::absolute("saver." + std::to_string(::getpid())) / "gr\xc3\xbc\xc3\x9f";
    fs::create_directories(home / "back\\slash");
    inChild([&home] {
        constexpr const char* kText = "current_path(): can't get current working directory";
        fs::current_path(home / "back\\slash");
        EXPECT_THROW_MSG(DirectorySaver(), FilesystemError, kText);
        fs::current_path(home);
        {
            const DirectorySaver outer;
            EXPECT_TRUE(outer.change_dir(".."));
            {
                DirectorySaver inner;
                EXPECT_FALSE(inner.change_dir("missing"));
                inner = DirectorySaver(outer);
                EXPECT_EQ(fs::current_path(), home);
                EXPECT_TRUE(inner.change_dir("\\"));
            }
            EXPECT_EQ(fs::path(outer.get_original_cwd().fs_path()), fs::current_path());
            fs::remove_all(home);
            EXPECT_THROW_MSG(DirectorySaver(), FilesystemError, kText);
            EXPECT_TRUE(outer.change_dir("/"));
        }
        EXPECT_EQ(fs::current_path(), "/");
    });
    fs::remove_all(home.parent_path());
}
