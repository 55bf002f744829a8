#pragma once

#include <zelm/Export.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace Zelm {

/// The text of a path, in UTF-16, and its grammar, with no access to a disk.
///
/// The rules are those of Windows on every system: '/' and '\' separate, `C:` and `\\server` are root names.
/// A path is `[root name][root directory][element \ element ...]`; a separator at its end makes "." its last
/// element. Joining never replaces: `a` joined with `\b` is `a\b`. A name that begins with its only dot is
/// all extension. Text is kept as it is given, with either separator.
///
/// A path converts to `std::filesystem::path` in the form that this system takes: here UTF-8 with forward
/// slashes. One with a root name names nothing here, nor does one with a NUL or with an unpaired surrogate,
/// and every use of it fails as for a missing file.
class ZELM_EXPORT FilesystemPath {
public:
    using value_type = char16_t;
    using string_type = std::u16string;
    static constexpr char16_t preferred_separator = u'\\';

    class const_iterator;
    using iterator = const_iterator;

    FilesystemPath() = default;
    FilesystemPath(std::u16string text) noexcept : text_(std::move(text)) {}
    FilesystemPath(std::u16string_view text) : text_(text) {}
    FilesystemPath(const char16_t* text) : text_(text) {}
    /// The narrow text of this system, UTF-8 here. Throws `std::invalid_argument` "invalid char filename
    /// argument" for text that is none.
    static FilesystemPath fromNarrow(const std::string& text);
    /// A path that comes from this system, with its separators turned into '\'. Throws as fromNarrow().
    static FilesystemPath fromSystem(const std::filesystem::path& path);

    static constexpr bool isSeparator(char16_t c) noexcept { return c == u'/' || c == u'\\'; }

    const std::u16string& native() const noexcept { return text_; }
    /// Hands over the text and leaves this path empty.
    std::u16string take() && noexcept { return std::exchange(text_, {}); }
    bool empty() const noexcept { return text_.empty(); }
    void clear() noexcept { text_.clear(); }
    void swap(FilesystemPath& other) noexcept { text_.swap(other.text_); }

    /// The text in other encodings; an unpaired surrogate throws `utf8::invalid_utf16` "Invalid UTF-16" in
    /// UTF-8. A wide character here holds a whole code point. The generic forms have '/' for '\'.
    std::string u8string() const;
    std::string generic_u8string() const;
    std::wstring wstring() const;
    std::wstring generic_wstring() const;
    std::u16string u16string() const { return text_; }
    std::u16string generic_u16string() const;
    /// Converts to the form that this system takes, see above.
    operator std::filesystem::path() const;

    /// `C:` or `\\server`; views of this path.
    std::u16string_view rootNameView() const noexcept;
    std::u16string_view rootDirectoryView() const noexcept;
    std::u16string_view rootPathView() const noexcept;
    /// All behind the root.
    std::u16string_view relativePathView() const noexcept;
    /// The last element: "." behind a separator at the end, the root directory where there is nothing else.
    std::u16string_view filenameView() const noexcept;

    FilesystemPath root_name() const { return rootNameView(); }
    FilesystemPath root_directory() const { return rootDirectoryView(); }
    FilesystemPath root_path() const { return rootPathView(); }
    FilesystemPath relative_path() const { return relativePathView(); }
    FilesystemPath filename() const { return filenameView(); }
    /// All but the last element.
    FilesystemPath parent_path() const;
    FilesystemPath stem() const;
    FilesystemPath extension() const;
    bool has_root_name() const noexcept { return !rootNameView().empty(); }
    bool has_root_directory() const noexcept { return !rootDirectoryView().empty(); }
    bool has_relative_path() const noexcept { return !relativePathView().empty(); }
    /// Whether there is a root directory: a drive does not make it, and is not needed on a system without.
    bool is_absolute() const noexcept { return has_root_directory(); }

    /// Adds a '\' unless one is there, this path is empty or ends in a drive, or `other` begins with one;
    /// then the text of `other`.
    FilesystemPath& operator/=(const FilesystemPath& other);
    /// Appends the text as it is.
    FilesystemPath& operator+=(const FilesystemPath& other);
    /// Takes away the last element and leaves the separator before it; "." goes with the separators at the
    /// end that make it.
    FilesystemPath& remove_filename();

    /// The elements: root name, root directory, names; see the class.
    const_iterator begin() const noexcept;
    const_iterator end() const noexcept;
    /// The first element behind the root.
    const_iterator beginBehindRoot() const noexcept;

    // Found by argument alone, so that types that convert to a path do not compare case by accident.
    friend FilesystemPath operator/(FilesystemPath a, const FilesystemPath& b) { return a /= b; }
    friend bool operator==(const FilesystemPath& a, const FilesystemPath& b) noexcept {
        return a.text_ == b.text_;
    }
    friend bool operator!=(const FilesystemPath& a, const FilesystemPath& b) noexcept { return !(a == b); }
    friend bool operator<(const FilesystemPath& a, const FilesystemPath& b) noexcept {
        return a.text_ < b.text_;
    }
    friend void swap(FilesystemPath& a, FilesystemPath& b) noexcept { a.swap(b); }

private:
    std::u16string text_;
};

/// Goes through the elements of a path as views of its text, which must outlive it unchanged.
class ZELM_EXPORT FilesystemPath::const_iterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::u16string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = std::u16string_view;

    std::u16string_view operator*() const noexcept { return element_; }
    const_iterator& operator++() noexcept;
    const_iterator operator++(int) noexcept {
        const_iterator former = *this;
        ++*this;
        return former;
    }
    friend bool operator==(const const_iterator& a, const const_iterator& b) noexcept {
        return a.position_ == b.position_;
    }
    friend bool operator!=(const const_iterator& a, const const_iterator& b) noexcept { return !(a == b); }

private:
    friend class FilesystemPath;

    static constexpr std::size_t kEnd = std::u16string_view::npos;

    const_iterator() = default;
    const_iterator(std::u16string_view path, std::size_t position) noexcept;
    void showElementBehindRootName() noexcept;

    std::u16string_view path_;
    std::u16string_view element_;
    std::size_t position_ = kEnd;
};

inline FilesystemPath::const_iterator FilesystemPath::end() const noexcept {
    return const_iterator();
}

} // namespace Zelm
