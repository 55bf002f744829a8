#pragma once

#include <zelm/files/FilesystemPath.h>

#include <cstdint>

namespace Zelm::details {

/// The operations of the standard library; each throws FilesystemError `<name>(p): invalid argument` if the
/// system refuses, and `<name>(p1, p2): invalid arguments` for two paths.

/// Nothing happens if something is there already.
void createDirectory(const FilesystemPath& path);
void createDirectories(const FilesystemPath& path);
/// False if there is nothing. A link is removed itself.
bool removePath(const FilesystemPath& path);
/// Removes what is at the path with all that is in it, links themselves and never what they lead to.
void removeAll(const FilesystemPath& path);
void renamePath(const FilesystemPath& from, const FilesystemPath& to);
std::uintmax_t fileSize(const FilesystemPath& path);
bool areEquivalent(const FilesystemPath& a, const FilesystemPath& b);

/// Throws FilesystemError "current_path(): can't get current working directory", also for a directory whose
/// name no path can say, such as one with a '\' where the system separates by '/' alone: the path would lead
/// elsewhere.
FilesystemPath currentPath();
/// Throws FilesystemError "temp_directory_path(): can't find temp directory".
FilesystemPath temporaryDirectoryPath();

} // namespace Zelm::details
