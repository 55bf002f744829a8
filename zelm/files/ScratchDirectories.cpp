#include <zelm/files/FileOperations.h>
#include <zelm/files/ScratchDirectories.h>
#include <zelm/files/platform/Platform.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace Zelm {

namespace {

using namespace details;

/// What every user may add to and only the owner of an entry take from.
constexpr unsigned kShared = 01777;
constexpr unsigned kPrivate = 0700;

ZString s_application;
ZString s_subdirectory;

[[noreturn]] void throwAbout(const char* failure, const FilesystemPath& path) {
    throw std::runtime_error(failure + (" \"" + path.u8string()) + "\".");
}

[[noreturn]] void throwNotCreated(const FilesystemPath& path) {
    throwAbout("Failed to create directory", path);
}

FilesystemPath narrowPath(const ZString& text) {
    return FilesystemPath::fromNarrow(std::string(text.data(), text.size()));
}

bool isDirectory(const FilesystemPath& path) {
    return platform::fileType(path) == std::filesystem::file_type::directory;
}

/// Reads what `strtol` reads to the end where a `long` has 32 bits; false for all else.
bool readProcessId(std::string_view name, std::int32_t& id) {
    name.remove_prefix(std::min(name.find_first_not_of(" \t\n\v\f\r"), name.size()));
    if (name.size() > 1 && name[0] == '+' && name[1] != '-') {
        name.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), id);
    return error == std::errc() && end == name.data() + name.size();
}

bool isStale(std::string_view name) {
    std::int32_t id = 0;
    return readProcessId(name, id) && (id == platform::currentProcessId() || !platform::isProcessAlive(id));
}

class ZScratchDirectories {
public:
    ZScratchDirectories(const ZString& application, const ZString& subdirectory);

    /// False in a process that was forked from the one that made this.
    bool isOfThisProcess() const { return processId_ == platform::currentProcessId(); }
    FilesystemPath makeUnique(const ZString& name) const;

private:
    void makeSharedLevels(std::size_t temporaryLength) const;

    FilesystemPath base_;
    FilesystemPath process_;
    long long processId_ = platform::currentProcessId();
};

ZScratchDirectories::ZScratchDirectories(const ZString& application, const ZString& subdirectory) {
    const FilesystemPath temporary = temporaryDirectoryPath();
    base_ = temporary;
    base_ /= application.empty() ? platform::programFile().stem() : narrowPath(application);
    base_ /= narrowPath(subdirectory);
    if (base_ == temporary) {
        base_ /= std::u16string_view(u"Scratch");
    }
    makeSharedLevels(temporary.native().size());
    platform::removeEntries(temporary, base_, isStale);
    process_ = base_ / FilesystemPath::fromNarrow(std::to_string(processId_));
    if (platform::makeDirectory(process_, kPrivate) || !platform::isPrivateDirectory(process_)) {
        throwNotCreated(process_);
    }
}

/// A level that another user has replaced by a link would have the sweep and all that follows happen
/// elsewhere.
void ZScratchDirectories::makeSharedLevels(std::size_t temporaryLength) const {
    const std::u16string& text = base_.native();
    for (std::size_t end = temporaryLength; end < text.size();) {
        end = std::min(text.find_first_of(u"/\\", end + 1), text.size());
        const FilesystemPath level = text.substr(0, end);
        if (platform::isForeignLink(level) ||
            (!isDirectory(level) && platform::makeDirectory(level, kShared) && !isDirectory(level))) {
            throwAbout("Couldn't create directories for", base_);
        }
    }
}

FilesystemPath ZScratchDirectories::makeUnique(const ZString& name) const {
    const FilesystemPath wanted = narrowPath(name);
    FilesystemPath candidate = process_ / wanted;
    for (unsigned long long number = 1; platform::isSomethingAt(candidate); ++number) {
        const std::string digits = std::to_string(number);
        candidate = process_ / FilesystemPath(wanted.native() + std::u16string(digits.begin(), digits.end()));
    }
    // The directory of the process may have been replaced since it was made, by whoever may change the base.
    if (!platform::isPrivateDirectory(process_) || platform::makeDirectory(candidate, kPrivate)) {
        throwNotCreated(candidate);
    }
    return candidate;
}

/// Made by the first call that succeeds, and never destroyed.
const ZScratchDirectories& scratchDirectories() {
    static std::mutex mutex;
    static auto& directories = *new std::unique_ptr<const ZScratchDirectories>;
    const std::lock_guard lock(mutex);
    if (!directories || !directories->isOfThisProcess()) {
        directories = std::make_unique<const ZScratchDirectories>(s_application, s_subdirectory);
    }
    return *directories;
}

} // namespace

void setScratchDirectoryAppName(ZString application, ZString subdirectory) {
    s_application = std::move(application);
    s_subdirectory = std::move(subdirectory);
}

FilesystemPath makeUniqueScratchDirectory(ZString name) {
    return scratchDirectories().makeUnique(name);
}

} // namespace Zelm
