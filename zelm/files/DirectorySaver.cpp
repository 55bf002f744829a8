#include <zelm/files/DirectorySaver.h>
#include <zelm/files/Utf8Files.h>

namespace Zelm {

DirectorySaver::DirectorySaver() : original_(ZPath::current_path()) {}

DirectorySaver::~DirectorySaver() {
    try {
        chdir_utf8(original_);
    } catch (...) {
        // A destructor has nobody to tell.
    }
}

bool DirectorySaver::change_dir(const ZPath& path) const {
    return chdir_utf8(path) == 0;
}

} // namespace Zelm
