#include <zelm/files/FilesystemPath.h>
#include <zelm/files/PathScanning.h>
#include <zelm/files/PathText.h>
#include <zelm/files/platform/Platform.h>

#include <utf8.h>

#include <algorithm>
#include <stdexcept>

namespace Zelm {

using details::isSeparatorAt;
using details::skipName;
using details::skipSeparators;

namespace {

bool startsWithDrive(std::u16string_view text) noexcept {
    return text.size() >= 2 && text[1] == u':' &&
           ((text[0] >= u'a' && text[0] <= u'z') || (text[0] >= u'A' && text[0] <= u'Z'));
}

std::size_t rootNameLength(std::u16string_view text) noexcept {
    if (startsWithDrive(text)) {
        return 2;
    }
    const bool server = isSeparatorAt(text, 0) && skipSeparators(text, 0) == 2 && text.size() > 2;
    return server ? skipName(text, 2) : 0;
}

/// Where the name begins that ends with the text.
std::size_t lastNameStart(std::u16string_view text) noexcept {
    std::size_t start = text.size();
    while (start > 0 && !FilesystemPath::isSeparator(text[start - 1])) {
        --start;
    }
    return start;
}

/// How long the stem of a name is; all that follows it is the extension.
std::size_t stemLength(std::u16string_view name) noexcept {
    if (name == u"." || name == u"..") {
        return name.size();
    }
    return std::min(name.rfind(u'.'), name.size());
}

} // namespace

void details::joinPath(std::u16string& path, std::u16string_view other) {
    if (other.empty()) {
        return;
    }
    const bool isDrive = path.size() == 2 && startsWithDrive(path);
    const bool separated = path.empty() || isDrive || FilesystemPath::isSeparator(path.back()) ||
                           FilesystemPath::isSeparator(other[0]);
    const std::size_t end = path.size();
    // In this order because `other` may show the path.
    path.append(other);
    if (!separated) {
        path.insert(end, 1, FilesystemPath::preferred_separator);
    }
}

FilesystemPath FilesystemPath::fromNarrow(const std::string& text) {
    try {
        return details::decodePath(text, details::Separators::AsGiven);
    } catch (const utf8::exception&) {
        throw std::invalid_argument("invalid char filename argument");
    }
}

FilesystemPath FilesystemPath::fromSystem(const std::filesystem::path& path) {
    try {
        return details::decodePath(path.u8string(), details::Separators::Turned);
    } catch (const utf8::exception&) {
        throw std::invalid_argument("invalid char filename argument");
    }
}

std::string FilesystemPath::u8string() const {
    return details::encodePath(text_, details::Separators::AsGiven);
}

std::string FilesystemPath::generic_u8string() const {
    return details::encodePath(text_, details::Separators::Turned);
}

std::wstring FilesystemPath::wstring() const {
    return details::widenPath(text_, details::Separators::AsGiven);
}

std::wstring FilesystemPath::generic_wstring() const {
    return details::widenPath(text_, details::Separators::Turned);
}

std::u16string FilesystemPath::generic_u16string() const {
    std::u16string generic = text_;
    std::replace(generic.begin(), generic.end(), u'\\', u'/');
    return generic;
}

FilesystemPath::operator std::filesystem::path() const {
    return details::platform::systemPath(*this);
}

std::u16string_view FilesystemPath::rootNameView() const noexcept {
    return std::u16string_view(text_).substr(0, rootNameLength(text_));
}

std::u16string_view FilesystemPath::rootDirectoryView() const noexcept {
    const std::size_t start = rootNameLength(text_);
    return std::u16string_view(text_).substr(start, isSeparatorAt(text_, start) ? 1 : 0);
}

std::u16string_view FilesystemPath::rootPathView() const noexcept {
    const std::size_t nameLength = rootNameLength(text_);
    return std::u16string_view(text_).substr(0, nameLength + (isSeparatorAt(text_, nameLength) ? 1 : 0));
}

std::u16string_view FilesystemPath::relativePathView() const noexcept {
    return std::u16string_view(text_).substr(skipSeparators(text_, rootNameLength(text_)));
}

std::u16string_view FilesystemPath::filenameView() const noexcept {
    const std::u16string_view relative = relativePathView();
    if (relative.empty()) {
        const std::u16string_view directory = rootDirectoryView();
        return directory.empty() ? rootNameView() : directory;
    }
    const std::u16string_view name = relative.substr(lastNameStart(relative));
    return name.empty() ? std::u16string_view(u".") : name;
}

FilesystemPath FilesystemPath::parent_path() const {
    FilesystemPath parent;
    parent.text_.reserve(text_.size());
    for (const_iterator element = begin(), next = element; element != end(); element = next) {
        if (++next != end()) {
            details::joinPath(parent.text_, *element);
        }
    }
    return parent;
}

FilesystemPath FilesystemPath::stem() const {
    const std::u16string_view name = filenameView();
    return name.substr(0, stemLength(name));
}

FilesystemPath FilesystemPath::extension() const {
    const std::u16string_view name = filenameView();
    return name.substr(stemLength(name));
}

FilesystemPath& FilesystemPath::operator/=(const FilesystemPath& other) {
    details::joinPath(text_, other.text_);
    return *this;
}

FilesystemPath& FilesystemPath::operator+=(const FilesystemPath& other) {
    text_ += other.text_;
    return *this;
}

FilesystemPath& FilesystemPath::remove_filename() {
    const std::u16string_view relative = relativePathView();
    if (relative.empty()) {
        text_.resize(rootDirectoryView().empty() ? 0 : rootNameLength(text_));
        return *this;
    }
    const std::size_t name = relative.size() - lastNameStart(relative);
    text_.resize(name > 0 ? text_.size() - name : text_.find_last_not_of(u"/\\") + 1);
    return *this;
}

FilesystemPath::const_iterator FilesystemPath::begin() const noexcept {
    return text_.empty() ? end() : const_iterator(text_, 0);
}

FilesystemPath::const_iterator FilesystemPath::beginBehindRoot() const noexcept {
    const std::size_t start = skipSeparators(text_, rootNameLength(text_));
    return start < text_.size() ? const_iterator(text_, start) : end();
}

FilesystemPath::const_iterator::const_iterator(std::u16string_view path, std::size_t position) noexcept
    : path_(path), position_(position) {
    const std::size_t rootName = position == 0 ? rootNameLength(path) : 0;
    if (rootName > 0) {
        element_ = path.substr(0, rootName);
    } else {
        showElementBehindRootName();
    }
}

void FilesystemPath::const_iterator::showElementBehindRootName() noexcept {
    if (position_ == path_.size()) {
        element_ = u".";
        return;
    }
    const std::size_t end = isSeparator(path_[position_]) ? position_ + 1 : skipName(path_, position_ + 1);
    element_ = {path_.data() + position_, end - position_};
}

FilesystemPath::const_iterator& FilesystemPath::const_iterator::operator++() noexcept {
    const std::size_t end = position_ + element_.size();
    const bool isRootName = position_ == 0 && rootNameLength(path_) > 0;
    const bool isRootDirectory = !isRootName && isSeparator(element_[0]);
    position_ = isRootName ? end : skipSeparators(path_, end);
    // Only a separator behind a name makes one more element of the text's end.
    if (position_ < path_.size() || (position_ == path_.size() && position_ > end && !isRootDirectory)) {
        showElementBehindRootName();
    } else {
        position_ = kEnd;
    }
    return *this;
}

} // namespace Zelm
