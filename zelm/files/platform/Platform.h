#pragma once

#include <zelm/files/FilesystemPath.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringView.h>

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

/// All that the library asks of the operating system beyond the standard library. One folder beside this file
/// answers for each kind of system; nothing else includes its headers.
namespace Zelm::details::platform {

/// A path as the system takes it; empty, which no file is called, for one that can name nothing there, so
/// that every use of it fails as for a missing file and creates nothing. The calls below take the same form.
std::filesystem::path systemPath(const FilesystemPath& path);
/// The path for what the system calls so; nothing if no path can name it, such as text that is no UTF-8 or
/// names with a '\'.
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

/// Whether the path itself is a link that neither this user nor the system's administrator has made.
bool isForeignLink(const FilesystemPath& path);
/// Removes each entry of a directory whose name `isWanted` tells, with all that is in it: links themselves
/// and never what they lead to, also while others change the tree. What cannot be removed, or lies more than
/// 256 levels deep, stays. The path of the directory begins with `trusted`, and behind that no foreign link
/// is followed. A directory that cannot be read has no entries.
void removeEntries(const FilesystemPath& trusted, const FilesystemPath& directory,
                   bool (*isWanted)(std::string_view name));

/// Whether a variable is set, if only to an empty text; then its value. Never for what can be no name. These
/// two calls may be made by several threads at once.
bool environmentVariable(ZStringView name, ZString* value);
/// False if the system refuses, as it does a NUL in the value.
bool setEnvironmentVariable(ZStringView name, ZStringView value);

/// A key of the machine-wide store: a directory below /etc/zelm/registry, in which a value is a regular file.
class MachineStore {
public:
    /// Opens the key, whose separators are '\\', for the life of the process. It may be missing.
    explicit MachineStore(ZStringView key);
    /// Whether there is such a value; then its bytes. Never for more than 1 MiB of them or for what can be no
    /// name of a file. Links are not followed, and nothing outside the key is read. Threads may call it at
    /// once.
    bool value(ZStringView name, ZString* value) const;

private:
    int handle_;
};

/// Lets keys be opened below another directory from now on.
ZELM_EXPORT void testing_setMachineStoreRoot(ZStringView directory);

long long currentProcessId();
/// Whether a process has this id: never a negative one, always 0. One of another user counts.
bool isProcessAlive(std::int32_t id);
/// The name of the running program's file.
FilesystemPath programFile();

} // namespace Zelm::details::platform
