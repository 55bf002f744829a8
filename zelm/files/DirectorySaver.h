#pragma once

#include <zelm/Export.h>
#include <zelm/files/ZPath.h>

namespace Zelm {

/// Puts the working directory of the process back at the end of its scope. The directory belongs to all
/// threads, so savers on different threads disturb each other. A copy returns to the same directory in turn.
class ZELM_EXPORT DirectorySaver {
public:
    /// Throws FilesystemError "current_path(): can't get current working directory", also for a directory
    /// that no path could lead back to, since its name has a backslash in it or is no UTF-8.
    DirectorySaver();
    DirectorySaver(const DirectorySaver&) = default;
    DirectorySaver& operator=(const DirectorySaver&) = default;
    /// Says nothing if there is no way back.
    ~DirectorySaver();

    /// Whether that succeeded; where to return to stays the same.
    bool change_dir(const ZPath& path) const;
    const ZPath& get_original_cwd() const noexcept { return original_; }

private:
    ZPath original_;
};

} // namespace Zelm
