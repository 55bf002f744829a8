// File calls and streams on real files: names of every kind, things of every kind at their place, and
// failures.

#include <zelm/files/FilesystemError.h>
#include <zelm/files/Utf8Files.h>
#include <zelm/files/Utf8Streams.h>

#include <support/ChildProcess.h>
#include <support/ExpectThrow.h>

#include <utf8.h>

#include <fcntl.h>
#include <iterator>
#include <map>
#include <sstream>

using namespace Zelm;
using namespace Zelm::Testing;
namespace fs = std::filesystem;

namespace {

using Name = const ZString&;

std::string read(const fs::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// All names below the working directory, with the content of files.
std::map<std::string, std::string> listing() {
    std::map<std::string, std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
        const bool isFile = fs::is_regular_file(entry.symlink_status());
        names[entry.path().lexically_normal().string()] = isFile ? read(entry) : "";
    }
    return names;
}

/// Runs in a directory of its own, below the one that the tests are started in.
class FileCalls : public ::testing::Test {
protected:
    FileCalls() { renew(); }
    ~FileCalls() override { leave(); }

    /// Starts again with one of each.
    void renew() {
        leave();
        fs::create_directories(directory_ / "full/inner");
        fs::current_path(directory_);
        fs::create_directory("empty");
        std::ofstream("file") << "text";
        std::ofstream("full/file") << "more";
        fs::create_symlink("file", "to file");
        fs::create_symlink("full", "to full");
        fs::create_symlink("nowhere", "dangling");
        fs::create_symlink("loop", "loop");
    }

private:
    void leave() {
        fs::current_path(home_);
        fs::remove_all(directory_);
    }

    const fs::path home_ = fs::current_path();
    const fs::path directory_ = home_ / ("files." + std::to_string(::getpid()));
};

/// '+' if a call on a name succeeds, '-' if it fails, '!' if it throws because the name is no UTF-8. A
/// success does what `effect` says, '*' to make and '/' to remove what has the name, and all else stays as it
/// was.
char tryOut(char effect, int (*call)(Name), const std::string& name) {
    auto before = listing();
    char result = '!';
    try {
        result = call(name) == 0 ? '+' : '-';
    } catch (const utf8::invalid_utf8&) {}
    auto after = listing();
    if (result == '+' && effect == '/') {
        before.erase(name.substr(0, name.find_last_not_of("/\\") + 1));
    } else if (result == '+' && effect == '*') {
        EXPECT_TRUE(fs::exists(ZPath(name).fs_path()));
        for (const char* made : {"missing", "missing/inner", "nowhere"}) {
            after.erase(made);
        }
    }
    EXPECT_EQ(before, after) << name << result;
    return result;
}

/// Opens two files of the same content by the same mode and uses them in the same way.
template <class Ours, class Peer>
void compare(int mode) {
    SCOPED_TRACE(mode);
    std::ofstream("ours") << "old";
    std::ofstream("peer") << "old";
    Ours ours("ours", mode);
    Peer peer("peer", static_cast<std::ios_base::openmode>(mode));
    const auto use = [](auto& stream) {
        std::filebuf& buffer = *stream.rdbuf();
        std::ostringstream log;
        log << stream.is_open() << stream.rdstate() << std::streamoff(buffer.pubseekoff(0, std::ios::cur));
        log << ' ' << buffer.sputc('x') << std::streamoff(buffer.pubseekoff(0, std::ios::beg));
        log << ' ' << buffer.sgetc() << (stream.close(), stream.rdstate());
        return log.str();
    };
    EXPECT_EQ(use(ours), use(peer));
    EXPECT_EQ(read("ours"), read("peer"));
}

} // namespace

TEST_F(FileCalls, TakeNamesOfAllText) {
    const std::string longest = std::string(252, 'x') + u8"\u20AC";
    for (const std::string name : {"two words", u8"Gr\u00FC\u00DFe", u8"e\u0301", u8"\U0001F600\U0010FFFF",
                                   u8"\uFEFF\uFFFF\u07FF\u0800", u8"\u202E\u05E9\u0001\u007F",
                                   u8"\uD7FF\uE000*?|\"", longest.c_str()}) {
        SCOPED_TRACE(name);
        const auto before = listing();
        const fs::path file = fs::path(name) / name;
        const ZString mixed(".\\" + name + "//.\\" + name);
        ASSERT_EQ(mkpath_utf8(ZString(".\\" + name + "/")), 0);
        ofstream_utf8(ZString(name + '/' + name)) << "content";
        EXPECT_TRUE(read(file) == "content" && filesize_utf8(mixed) == 7 && access_utf8(mixed, 6) == 0);
        EXPECT_TRUE(chmod_utf8(mixed, 0400) == 0 && fs::status(file).permissions() == fs::perms::owner_read);
        const int descriptor = open_utf8("copy", O_CREAT | O_EXCL | O_WRONLY, 0640);
        EXPECT_TRUE(::write(descriptor, "four", 4) == 4 && ::close(descriptor) == 0);
        _stat64i32 status;
        EXPECT_TRUE(stat_utf8("copy", &status) == 0 && status.st_size == 4 && !(status.st_mode & 0137));
        EXPECT_EQ(rename_utf8("copy", mixed), 0);
        std::FILE* const stream = freopen_utf8(mixed, "a", std::fopen("other", "w"));
        EXPECT_TRUE(stream && std::fputs(" more", stream) >= 0 && std::fclose(stream) == 0);
        EXPECT_EQ(read(file), "four more");
        EXPECT_TRUE(chdir_utf8(name) == 0 && getcwd_utf8().ends_with("\\" + name));
        EXPECT_TRUE(unlink_utf8(name) == 0 && chdir_utf8("..") == 0 && rmdir_utf8(name) == 0);
        EXPECT_TRUE(unlink_utf8("other") == 0 && listing() == before);
    }
}

TEST_F(FileCalls, SucceedByWhatLiesAtTheName) {
    static _stat64i32 status;
    const std::pair<char, int (*)(Name)> calls[] = {
        {' ', [](Name name) { return access_utf8(name, 0); }},
        {' ', [](Name name) { return stat_utf8(name, &status); }},
        {' ', [](Name name) { return chmod_utf8(name, 0700); }},
        {' ', [](Name name) { return ::close(open_utf8(name, O_RDONLY, 0)); }},
        {' ', [](Name name) { return ifstream_utf8(name) ? 0 : -1; }},
        {' ', [](Name name) { return filesize_utf8(name) == 4 ? 0 : -1; }},
        {' ', [](Name name) { return rename_utf8(name, "new") ? -1 : rename_utf8("new", name); }},
        {' ', [](Name name) { return rename_utf8(name, "missing/new"); }},
        {'*', [](Name name) { return ofstream_utf8(name, std::ios::app) ? 0 : -1; }},
        {'*', [](Name name) { return mkdir_utf8(name); }},
        {'*', [](Name name) { return mkpath_utf8(name); }},
        {'/', [](Name name) { return rmdir_utf8(name); }},
        {'/', [](Name name) { return unlink_utf8(name); }},
        {'/', [](Name name) { return remove_utf8(name); }}};
    const std::string x5000(5000, 'x');
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"+++++++-+---++", {"file", "to file"}},
        {"++++--+--+++--", {"empty", "empty\\", "to full"}},
        {"++++--+--++---", {"full"}},
        {"------+-+-----", {"dangling"}},
        {"------+-------", {"loop"}},
        {"--------+++---", {"missing"}},
        {"---------++---", {"missing/"}},
        {"----------+---", {"missing/inner"}},
        {"--------------", {"file/", "file/inner", "loop/inner", x5000, x5000.substr(0, 256), ""}},
        {"--------------", {"C:", "C:file", "C:/file", "//server/file", std::string("file\0x", 6)}},
        {"!!!!!---!-----", {"file\xFF"}}};
    for (const auto& [expected, names] : rows) {
        for (const std::string& name : names) {
            std::string results;
            for (const auto& [effect, call] : calls) {
                results += tryOut(effect, call, name);
                if (effect != ' ' && results.back() == '+') {
                    renew();
                }
            }
            EXPECT_EQ(results, expected) << name;
        }
    }
    EXPECT_TRUE(access_utf8("C:file", 0) == -1 && errno == ENOENT);
    EXPECT_THROW_MSG(freopen_utf8("\x80", "r", stdin), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_THROW_MSG(freopen_utf8("file", "\x80", stdin), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_EQ(freopen_utf8("C:file", "r", stdin), nullptr);
}

TEST_F(FileCalls, OpenStreamsAsTheStandardOnesDo) {
    for (int mode = 0; mode < 64; ++mode) {
        compare<fstream_utf8, std::fstream>(mode);
        compare<ifstream_utf8, std::ifstream>(mode);
        compare<ofstream_utf8, std::ofstream>(mode);
    }
    ifstream_utf8 stream;
    stream.setstate(std::ios::failbit | std::ios::eofbit);
    stream.open("file", 0);
    EXPECT_TRUE(stream.good());
    stream.open("full/file");
    EXPECT_TRUE(stream.rdstate() == std::ios::failbit && stream.is_open());
    stream.clear();
    ifstream_utf8 moved(std::move(stream));
    std::string text;
    EXPECT_TRUE(moved >> text && text == "text" && !stream.is_open());
    stream = std::move(moved);
    EXPECT_TRUE(stream.is_open() && stream.eof());
}

TEST_F(FileCalls, FailWithTheirTexts) {
    for (const FilesystemPath path :
         {u"missing/inner", u"\xD800", u"\xD800x", u"\xD800\xD800", u"\xDC00\xDC00"}) {
        EXPECT_THROW_MSG(ZPath::from_fs_path(path).create_directory(), FilesystemError,
                         "create_directory(p): invalid argument");
    }
    EXPECT_FALSE(ZPath("dangling").create_directory() || ZPath("file").create_directories());
    EXPECT_THROW_MSG(ZPath("C:/x").create_directories(), FilesystemError,
                     "create_directories(p): invalid argument");
    EXPECT_THROW_MSG(ZPath("full").delete_directory(), FilesystemError, "remove(p): invalid argument");
    EXPECT_THROW_MSG(ZPath("loop\\x").file_size(), FilesystemError, "file_size(p): invalid argument");
    EXPECT_THROW_MSG(ZPath("file").rename("missing/x"), FilesystemError, "rename(p1, p2): invalid arguments");
    try {
        ZPath("full/x").rename("file");
        FAIL();
    } catch (const fs::filesystem_error& error) {
        EXPECT_TRUE(error.path1() == "full/x" && error.path2() == "file" && error.code().value() == ENOENT);
    }
    inChild([] {
        fs::create_directory("no text \xFF");
        fs::current_path("no text \xFF");
        EXPECT_THROW_MSG(getcwd_utf8(), FilesystemError,
                         "current_path(): can't get current working directory");
    });
}

TEST_F(FileCalls, RemoveLinksAndNotWhatTheyLeadTo) {
    fs::create_directory_symlink("../full", "empty/link");
    std::string dots = "missing";
    while (dots.size() < 200000) {
        dots += "/.";
    }
    for (const std::string name :
         {"to full\\", "to file", "dangling", "loop", dots.c_str(), "C:/x", "", "empty/.\\"}) {
        auto names = listing();
        EXPECT_FALSE(ZPath(name).removeAllFilesDirectoriesRecursively());
        names.erase(ZPath(name).normalize().native());
        names.erase(name == "empty/.\\" ? "empty/link" : "");
        EXPECT_EQ(listing(), names) << name;
    }
}

TEST_F(FileCalls, AreRefusedWithoutPermission) {
    fs::permissions("full/file", fs::perms(0444));
    fs::permissions("full", fs::perms(0555));
    fs::permissions("empty", fs::perms(0));
    inChild([] {
        EXPECT_TRUE(becomeNobody() || ::geteuid() != 0);
        EXPECT_TRUE(ZPath("full/file").is_readable() && !ZPath("full/file").is_writable());
        EXPECT_TRUE(ifstream_utf8("full/file") && !ofstream_utf8("full/file") && !fstream_utf8("full/file"));
        for (const auto call : {mkdir_utf8, mkpath_utf8, rmdir_utf8, unlink_utf8}) {
            EXPECT_TRUE(call("full/new") == -1 && call("full/file") == -1 && call("empty/x") == -1);
        }
        EXPECT_TRUE(rename_utf8("full/file", "full/x") == -1 && chdir_utf8("empty") == -1);
        EXPECT_TRUE(ZPath("empty").is_directory() && !ZPath("empty/.").exists());
        EXPECT_THROW_MSG(ZPath("full").removeAllFilesDirectoriesRecursively(), FilesystemError,
                         "remove_all(p): invalid argument");
    });
    fs::permissions("full", fs::perms(0755));
    fs::permissions("empty", fs::perms(0755));
}
