#pragma once

#include <zelm/files/FilesystemPath.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringView.h>

#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

/// All that the library asks of the operating system beyond the standard library. One folder beside this file
/// answers for each kind of system; nothing else includes its headers.
namespace Zelm::details::platform {

/// A path as the system takes it; empty, which no file is called, for one that can name nothing there, so that
/// every use of it fails as for a missing file and creates nothing. The calls below take the same form.
std::filesystem::path systemPath(const FilesystemPath& path);
/// The path for what the system calls so; nothing if no path can name it, such as text that is no UTF-8 or names
/// with a '\\'.
std::optional<FilesystemPath> pathFromSystem(const std::filesystem::path& path);

/// What lies at a path, links followed; `unknown` where that cannot be found out. Never `none` or `symlink`.
std::filesystem::file_type fileType(const FilesystemPath& path);
/// Whether anything has this name, a link that leads nowhere too.
bool isSomethingAt(const FilesystemPath& path);

/// The calls of the C library, by path. Each fails with its own return value and `errno`.
int access(const FilesystemPath& path, int mode);
int chmod(const FilesystemPath& path, int mode);
int stat(const FilesystemPath& path, struct ::stat* status);
int open(const FilesystemPath& path, int flags, int mode);
std::FILE* fopen(const FilesystemPath& path, const std::u16string& mode);
std::FILE* freopen(const FilesystemPath& path, const std::u16string& mode, std::FILE* file);
int chdir(const FilesystemPath& path);
/// Opens a stream buffer; null as from `std::filebuf::open`. A directory does not open.
std::filebuf* open(std::filebuf& buffer, const FilesystemPath& path, std::ios_base::openmode mode);

/// Makes one directory with exactly these permissions, whatever the process's mask, as far as its file system
/// keeps them, and never follows a link at its place. Fails with a code, also if something is there.
std::error_code makeDirectory(const FilesystemPath& path, unsigned permissions);
/// Whether the path itself, no link followed, is a directory of this user that nobody else can write to.
bool isPrivateDirectory(const FilesystemPath& path);

/// The value of a variable, empty ones too; nothing if it is not set or if `name` can be no name.
std::optional<ZString> environmentVariable(const ZString& name);
/// False if the system refuses.
bool setEnvironmentVariable(const ZString& name, const ZString& value);

/// The value `name` below the key of the machine-wide store, with separators '\' in `key`; nothing if there
/// is none, or if the key or `name` can be no name there.
class MachineStore {
public:
    /// Opens a key for reading, once for the life of the process.
    explicit MachineStore(ZStringView key);
    bool isOpen() const noexcept;
    /// The raw text of a value.
    std::optional<ZString> value(const ZString& name) const;

private:
    int handle_;
};

long long currentProcessId();
/// `id` is any number.
bool isProcessAlive(long long id);
/// The file of the running program.
FilesystemPath programFile();

} // namespace Zelm::details::platform
