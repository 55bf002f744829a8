#pragma once

#include <zelm/Export.h>
#include <zelm/files/FilesystemPath.h>
#include <zelm/text/ZString.h>

namespace Zelm {

/// Names the directories below the temporary one in which this process will work: `application`, by default
/// the stem of the program's file name, and in it `subdirectory` if it is not empty. To be called before any
/// thread makes a scratch directory, and without effect afterwards.
ZELM_EXPORT void setScratchDirectoryAppName(ZString application, ZString subdirectory);

/// Makes an empty directory that nobody else uses and returns its path: `name` below the directory of this
/// process, which is called by its id and lies below those that setScratchDirectoryAppName() names. Where
/// something has that name, a link too, the first free one of `name1`, `name2` and so on is taken; each costs
/// one look at the disk. Nothing is removed at the end of the process.
///
/// The first call also removes the directories of processes that are no more: every entry beside that of this
/// process which is called by a decimal number, with leading blanks and a sign if it likes, that is the id of
/// no living process. Links are removed themselves, and what cannot be removed stays. If that call fails, the
/// next one tries again; a process that was forked begins anew.
///
/// Users share all levels above that of the process, which is this user's alone; who made the shared ones
/// first could still have directories made elsewhere, but nothing removed. All names are text of the system,
/// UTF-8 here, used as they are: one with ".." in it leads out of the directory of the process.
///
/// Two threads that ask for the same name at once may find the same one free; then one of them fails.
///
/// Throws FilesystemError "temp_directory_path(): can't find temp directory"; `std::runtime_error` "Couldn't
/// create directories for "<path>"." for the shared levels, and "Failed to create directory "<path>"." for
/// those below; `std::invalid_argument` "invalid char filename argument" for a name that is no UTF-8.
ZELM_EXPORT FilesystemPath makeUniqueScratchDirectory(ZString name);

} // namespace Zelm
