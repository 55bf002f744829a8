#include <zelm/files/FilesystemPath.h>
#include <zelm/files/PathText.h>
#include <zelm/files/platform/Platform.h>

#include <utf8.h>

#include <algorithm>
#include <stdexcept>

namespace Zelm {

namespace {

constexpr std::size_t kEnd = std::u16string_view::npos;

bool isSeparatorAt(std::u16string_view text, std::size_t position) noexcept {
    return position < text.size() && FilesystemPath::isSeparator(text[position]);
}

/// The first position from here on that is no separator, or that is one; the end of the text without any.
std::size_t skipSeparators(std::u16string_view text, std::size_t position) noexcept {
    while (isSeparatorAt(text, position)) {
        ++position;
    }
    return position;
}
std::size_t skipName(std::u16string_view text, std::size_t position) noexcept {
    while (position < text.size() && !FilesystemPath::isSeparator(text[position])) {
        ++position;
    }
    return position;
}

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
    return const_iterator(text_, text_.empty() ? kEnd : 0);
}

FilesystemPath::const_iterator FilesystemPath::beginBehindRoot() const noexcept {
    const std::size_t start = skipSeparators(text_, rootNameLength(text_));
    return const_iterator(text_, start < text_.size() ? start : kEnd);
}

FilesystemPath::const_iterator FilesystemPath::end() const noexcept {
    return const_iterator(text_, kEnd);
}

FilesystemPath::const_iterator::const_iterator(std::u16string_view path, std::size_t position) noexcept
    : path_(path), position_(position) {
    if (position == kEnd) {
        return;
    }
    const std::size_t rootName = position == 0 ? rootNameLength(path) : 0;
    if (rootName > 0) {
        element_ = path.substr(0, rootName);
    } else if (position == path.size()) {
        element_ = u".";
    } else if (isSeparator(path[position])) {
        element_ = path.substr(position, 1);
    } else {
        element_ = path.substr(position, skipName(path, position) - position);
    }
}

FilesystemPath::const_iterator& FilesystemPath::const_iterator::operator++() noexcept {
    if (position_ == path_.size()) {
        return *this = const_iterator(path_, kEnd);
    }
    const bool isRootName = position_ == 0 && rootNameLength(path_) > 0;
    const bool isRootDirectory = !isRootName && isSeparator(element_[0]);
    const std::size_t end = position_ + element_.size();
    const std::size_t next = isRootName ? end : skipSeparators(path_, end);
    // Only a separator behind a name makes one more element of the text's end.
    const bool isOver = next == path_.size() && (next == end || isRootDirectory);
    return *this = const_iterator(path_, isOver ? kEnd : next);
}

} // namespace Zelm
