#include <zelm/files/CaseFolding.h>
#include <zelm/files/FileOperations.h>
#include <zelm/files/PathScanning.h>
#include <zelm/files/PathText.h>
#include <zelm/files/ZPath.h>
#include <zelm/text/TextConversions.h>

#include <cassert>
#include <optional>

namespace Zelm {

namespace {

/// Normalises the names behind a root in place: the normal form is never longer than what has been read.
class Normalizer {
public:
    Normalizer(std::u16string& text, std::size_t rootEnd) noexcept
        : text_(text), rootEnd_(rootEnd), namesStart_(rootEnd), end_(rootEnd) {}

    void run() {
        for (std::size_t name = details::skipSeparators(text_, rootEnd_); name < text_.size();) {
            const std::size_t nameEnd = details::skipName(text_, name);
            add(name, nameEnd - name);
            name = details::skipSeparators(text_, nameEnd);
        }
        text_.resize(end_);
    }

private:
    void add(std::size_t name, std::size_t length) noexcept {
        if (text_[name] != u'.' || length > 2 || (length == 2 && text_[name + 1] != u'.')) {
            append(name, length);
        } else if (length == 2 && end_ > namesStart_) {
            removeLastName();
        } else if (length == 2) {
            append(name, length);
            namesStart_ = end_;
        }
    }

    void append(std::size_t name, std::size_t length) noexcept {
        if (end_ > rootEnd_) {
            text_[end_++] = FilesystemPath::preferred_separator;
        }
        std::char_traits<char16_t>::move(&text_[end_], &text_[name], length);
        end_ += length;
    }

    void removeLastName() noexcept {
        while (end_ > namesStart_ && text_[--end_] != FilesystemPath::preferred_separator) {}
    }

    std::u16string& text_;
    const std::size_t rootEnd_;
    /// The end of the root and of the ".." that nothing before them takes away.
    std::size_t namesStart_;
    std::size_t end_;
};

/// The way, not normalised; nothing unless both have the same root and first name and at most `maxUp` steps
/// lead up.
std::optional<std::u16string> wayBetween(const FilesystemPath& base, const FilesystemPath& target,
                                         int maxUp) {
    if (!base.is_absolute() || !target.is_absolute() ||
        details::compareFolded(base.rootPathView(), target.rootPathView()) != 0) {
        return std::nullopt;
    }
    auto up = base.beginBehindRoot();
    auto down = target.beginBehindRoot();
    bool related = false;
    for (; up != base.end() && down != target.end() && details::compareFolded(*up, *down) == 0;
         ++up, ++down) {
        related = true;
    }
    if (!related) {
        return std::nullopt;
    }
    std::u16string way;
    way.reserve(base.native().size() + target.native().size());
    for (; up != base.end(); ++up, --maxUp) {
        if (maxUp <= 0) {
            return std::nullopt;
        }
        way += u"..\\";
    }
    for (; down != target.end(); ++down) {
        details::joinPath(way, *down);
    }
    return way;
}

/// A name, and nothing in place of an element that is none.
FilesystemPath realName(std::u16string_view element) {
    const bool isNone = element == u"." || element == u".." || element == u"/" || element == u"\\";
    return isNone ? std::u16string_view() : element;
}

std::u16string decoded(std::string_view text) {
    return details::decodePath(text, details::Separators::Turned);
}

} // namespace

ZPath::ZPath(const ZString& text) : path_(decoded({text.data(), text.size()})) {}

ZPath::ZPath(const std::string& text) : path_(decoded(text)) {}

ZPath::ZPath(const char* text) : path_((assert(text), decoded(text))) {}

ZString ZPath::native() const {
    return convertUtf16ToZString(path_.native());
}

ZString ZPath::generic() const {
    return path_.generic_u8string();
}

ZPath& ZPath::assign(const ZPath& other) {
    return *this = other;
}

ZPath& ZPath::operator/=(const ZPath& other) {
    path_ /= other.path_;
    return *this;
}

ZPath& ZPath::operator+=(const ZPath& other) {
    path_ += other.path_;
    return *this;
}

ZPath& ZPath::append_path(const ZPath& other) {
    return *this = resolve_path(other);
}

ZPath& ZPath::normalize() {
    const std::size_t rootEnd = path_.rootPathView().size();
    std::u16string text = std::move(path_).take();
    Normalizer(text, rootEnd).run();
    path_ = std::move(text);
    if (rootEnd == 0 && path_.has_root_directory()) {
        // The first name looks like a drive, behind which none is joined with a separator.
        path_ = path_.root_name() /= path_.relative_path();
    }
    return *this;
}

ZPath ZPath::resolve_path(const ZPath& other) const {
    const std::u16string_view ownRoot = path_.rootNameView();
    const std::u16string_view otherRoot = other.path_.rootNameView();
    std::u16string resolved;
    if (otherRoot.empty()) {
        resolved = other.has_root_directory() ? ownRoot : std::u16string_view(path_.native());
        details::joinPath(resolved, other.path_.native());
    } else if (other.has_root_directory() ||
               (!ownRoot.empty() && details::compareFolded(ownRoot, otherRoot) != 0)) {
        resolved = other.path_.native();
    } else {
        resolved = otherRoot;
        details::joinPath(resolved, path_.rootDirectoryView());
        details::joinPath(resolved, path_.relativePathView());
        details::joinPath(resolved, other.path_.relativePathView());
    }
    ZPath result = from_fs_path(std::move(resolved));
    result.normalize();
    return result;
}

ZString ZPath::resolve_relative_path(const ZString& relative, const ZString& base) {
    return ZPath(base).resolve_path(ZPath(relative)).native();
}

ZPath ZPath::make_relative_path(const ZPath& target, const ZPath& base, bool* ok, int max_up) {
    std::optional<std::u16string> way = wayBetween(base.path_, target.path_, max_up);
    if (ok) {
        *ok = way.has_value();
    }
    ZPath result = way ? from_fs_path(*std::move(way)) : target;
    result.normalize();
    return result;
}

ZPath ZPath::system_complete() const {
    if (is_absolute()) {
        return *this;
    }
    const FilesystemPath current = details::currentPath();
    const std::u16string_view drive = path_.rootNameView();
    std::u16string complete = current.native();
    if (!drive.empty() && drive != current.rootNameView()) {
        complete = drive;
        complete += FilesystemPath::preferred_separator;
    }
    details::joinPath(complete, path_.relativePathView());
    return from_fs_path(std::move(complete));
}

ZPath ZPath::complete_path() const {
    ZPath complete = system_complete();
    complete.normalize();
    return complete;
}

ZString ZPath::add_separator(const ZString& text) {
    return ends_with_separator(text) ? text : text + '\\';
}

bool ZPath::ends_with_separator(ZStringView text) noexcept {
    return !text.empty() && is_separator(text.back());
}

bool ZPath::ends_with_separator() const noexcept {
    return !path_.empty() && is_separator(path_.native().back());
}

int ZPath::compare_filenames(const ZPath& a, const ZPath& b) noexcept {
    return details::compareFolded(a.path_.native(), b.path_.native());
}

bool ZPath::starts_with(const ZPath& prefix) const noexcept {
    return details::startsWithFolded(path_.native(), prefix.path_.native());
}

bool ZPath::is_contained_within_path(const ZPath& base) const {
    return complete_path().starts_with(base.complete_path());
}

ZPath ZPath::parent_path() const {
    return from_fs_path(has_relative_path() ? path_.parent_path() : path_.root_path());
}

ZPath ZPath::filename() const {
    return from_fs_path(realName(path_.filenameView()));
}

ZPath ZPath::stem() const {
    return from_fs_path(realName(path_.stem().native()));
}

ZPath& ZPath::replace_extension(const ZPath& new_extension) {
    if (new_extension.empty()) {
        const ZString text = native();
        for (std::size_t i = text.size(); i-- > 0 && !is_separator(text[i]);) {
            if (text[i] == '.') {
                return *this = ZPath(text.left(i));
            }
        }
        return *this;
    }
    FilesystemPath name = stem().path_;
    if (new_extension.path_.native().front() != u'.') {
        name += u".";
    }
    name += new_extension.path_;
    path_ = parent_path().path_ /= name;
    return *this;
}

ZPath& ZPath::remove_filename() {
    path_.remove_filename();
    return *this;
}

} // namespace Zelm
