#pragma once

#include <zelm/Export.h>
#include <zelm/files/ZPath.h>
#include <zelm/text/ZString.h>

#include <cstddef>
#include <cstdio>

#include <sys/stat.h>

/// The file calls of the C library by names in UTF-8, with the naming rules of ZPath: '/' and '\' separate. A
/// name that can name nothing here, such as one with a drive or a NUL, fails as a missing file does and
/// creates nothing. A call that only hands on the system's result sets `errno`, and throws the exceptions of
/// `convertZStringToUtf16` for a name that is no UTF-8; the others say which they are.
namespace Zelm {

/// Each '/' turned into '\'. Shares the text if there is none.
ZELM_EXPORT ZString fixFilenameSlashes(const ZString& name);

/// What `stat_utf8` tells, with times and sizes of 64 bits.
using _stat64i32 = struct ::stat;

/// `mode` 0 asks whether there is such a file, 4 whether it can be read, 2 written, 6 both. 0 if so, or -1.
ZELM_EXPORT int access_utf8(const ZString& name, int mode);
/// 0 or -1.
ZELM_EXPORT int chmod_utf8(const ZString& name, int mode);
/// 0 or -1.
ZELM_EXPORT int stat_utf8(const ZString& name, _stat64i32* status);
/// The file descriptor or -1; nobody else is kept from the file. `pmode` are the permissions of a new file.
ZELM_EXPORT int open_utf8(const ZString& name, int oflag, int pmode);
/// `file`, or null with `file` closed. A mode that is no UTF-8 throws as such a name.
ZELM_EXPORT std::FILE* freopen_utf8(const ZString& name, const ZString& mode, std::FILE* file);
/// 0 or -1.
ZELM_EXPORT int chdir_utf8(const ZPath& path);

// These never throw and leave `errno` undefined.

/// 0 if there is a directory afterwards, otherwise -1.
ZELM_EXPORT int mkdir_utf8(const ZString& name) noexcept;
/// The same, making missing parents.
ZELM_EXPORT int mkpath_utf8(const ZString& name) noexcept;
/// Removes an empty directory and nothing else. 0 or -1, as are the next three.
ZELM_EXPORT int rmdir_utf8(const ZString& name) noexcept;
/// Removes anything but a directory; a link that leads nowhere counts as missing and stays.
ZELM_EXPORT int unlink_utf8(const ZString& name) noexcept;
/// The same as `unlink_utf8`: it does not remove a directory.
ZELM_EXPORT int remove_utf8(const ZString& name) noexcept;
/// Replaces a file that is called `to`.
ZELM_EXPORT int rename_utf8(const ZString& from, const ZString& to) noexcept;
/// In bytes; 0 as well where there is no file to measure.
ZELM_EXPORT std::size_t filesize_utf8(const ZString& name) noexcept;

/// The working directory, with '\'. Throws FilesystemError "current_path(): can't get current working
/// directory", also if its name has no form here.
ZELM_EXPORT ZString getcwd_utf8();

} // namespace Zelm
