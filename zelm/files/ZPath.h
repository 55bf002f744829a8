#pragma once

#include <zelm/Export.h>
#include <zelm/files/FilesystemPath.h>
#include <zelm/text/ZString.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>

namespace Zelm {

/// The path of a file: a FilesystemPath in UTF-8 `ZString`s, compared without regard to case.
///
///     ZPath path("data/run 7");                 // data\run 7
///     path /= "Grün.json";                      // data\run 7\Grün.json
///     path.replace_extension("txt").generic();  // data/run 7/Grün.txt
///
/// The naming rules are those of Windows on every system, see FilesystemPath. Text becomes a path with '\'
/// for each '/'; text that is no UTF-8 throws the exceptions of `convertZStringToUtf16`.
///
/// Nothing of this class but the last group of operations looks at a disk. There, a path that can name
/// nothing on this system is a missing file; the throwing operations throw FilesystemError.
///
/// Paths have no `==` and no `<`: whether names are equal is a question for `equal_filenames`.
class ZELM_EXPORT ZPath {
public:
    ZPath() = default;
    ZPath(const ZString& text);
    ZPath(const std::string& text);
    /// Up to the first NUL; not null.
    ZPath(const char* text);
    ZPath(ZStringLiteral text) : ZPath(ZString(text)) {}

    /// Takes the path as it is, with whichever separators it has.
    static ZPath from_fs_path(const FilesystemPath& path) { return ZPath(path, nullptr); }
    static ZPath from_fs_path(FilesystemPath&& path) { return ZPath(std::move(path), nullptr); }
    const FilesystemPath& fs_path() const noexcept { return path_; }
    operator const FilesystemPath&() const noexcept { return path_; }

    static constexpr bool is_separator(int c) noexcept { return c == '/' || c == '\\'; }

    /// The text in UTF-8; a surrogate alone, which only a FilesystemPath brings in, throws
    /// `utf8::invalid_utf16` "Invalid UTF-16".
    ZString native() const;
    ZString string() const { return native(); }
    ZString u8string() const { return native(); }
    operator ZString() const { return native(); }
    /// The text with '/' for '\'.
    ZString generic() const;
    ZString generic_string() const { return generic(); }
    ZString generic_u8string() const { return generic(); }
    /// A character of these holds a whole code point where it has 32 bits.
    std::wstring wstring() const { return path_.wstring(); }
    std::wstring generic_wstring() const { return path_.generic_wstring(); }
    std::u16string u16string() const { return path_.u16string(); }
    std::u16string generic_u16string() const { return path_.generic_u16string(); }

    ZPath& assign(const ZPath& other);
    void clear() noexcept { path_.clear(); }
    void swap(ZPath& other) noexcept { path_.swap(other.path_); }
    friend void swap(ZPath& a, ZPath& b) noexcept { a.swap(b); }
    bool empty() const noexcept { return path_.empty(); }

    /// Joins with a '\' where one is needed. Never replaces: `a` joined with `\b` is `a\b`.
    ZPath& operator/=(const ZPath& other);
    /// Appends the text alone.
    ZPath& operator+=(const ZPath& other);
    /// Becomes `resolve_path(other)`.
    ZPath& append_path(const ZPath& other);

    /// Removes the elements "." and each name with the ".." behind it, by the text alone. Leading ".." stay,
    /// behind a root too: `C:\..\a` is normal. In place and in linear time.
    ZPath& normalize();
    /// `other` as seen from this directory, normalised: `other` itself if it has a drive and a root, on this
    /// drive if it has a root only, otherwise below this path. A drive alone, as in `C:b`, means this path if
    /// that is on the same drive or on none, and nothing is known of any other drive.
    ZPath resolve_path(const ZPath& other) const;
    static ZString resolve_relative_path(const ZString& relative, const ZString& base);
    /// The way from the directory `base` to `target`, normalised, with at most `max_up` steps up. Both need a
    /// root, the same in both, and the same first name; if they have not, or if more steps are needed, `ok`,
    /// which may be null, becomes false and the result is `target`, normalised.
    ///
    /// Elements count as they are written: from `C:\a\`, with its last element ".", `C:\a\b` is `..\b`.
    static ZPath make_relative_path(const ZPath& target, const ZPath& base, bool* ok, int max_up);

    /// This path if it is absolute, otherwise as seen from the working directory, or from the root of its
    /// drive if it names one. Throws as current_path().
    ZPath system_complete() const;
    /// `system_complete()`, normalised.
    ZPath complete_path() const;
    ZPath physical_path() const { return complete_path(); }
    ZPath get_valid_automount_path() const { return *this; }

    /// The text with a '\' at its end unless it ends with a separator, even if it is empty.
    static ZString add_separator(const ZString& text);
    static bool ends_with_separator(ZStringView text) noexcept;
    bool ends_with_separator() const noexcept;

    /// Compares the texts up to their first NUL, UTF-16 unit by unit in upper case: -1, 0 or 1. Upper case is
    /// Unicode's for each single unit, but sharp s, long s and dotless i stay as they are. '/' and '\' differ
    /// here, as only a path of a FilesystemPath can show. Names that differ in case are equal on systems too
    /// where they are two files. Allocates nothing.
    static int compare_filenames(const ZPath& a, const ZPath& b) noexcept;
    static bool equal_filenames(const ZPath& a, const ZPath& b) noexcept {
        return compare_filenames(a, b) == 0;
    }
    bool equal_filenames(const ZPath& other) const noexcept { return equal_filenames(*this, other); }
    /// Whether the text starts with that of `prefix`, compared in the same way. `C:\abcd` starts with
    /// `C:\ab`: add a separator to ask for elements.
    bool starts_with(const ZPath& prefix) const noexcept;
    /// starts_with() of the complete paths; so `C:\abc` counts as within `C:\ab`.
    bool is_contained_within_path(const ZPath& base) const;
    bool is_contained_within_path_physical(const ZPath& base) const { return is_contained_within_path(base); }

    ZPath root_name() const { return from_fs_path(path_.rootNameView()); }
    ZPath root_directory() const { return from_fs_path(path_.rootDirectoryView()); }
    ZPath root_path() const { return from_fs_path(path_.rootPathView()); }
    ZPath relative_path() const { return from_fs_path(path_.relativePathView()); }
    /// All but the last element behind the root; a root alone is its own parent.
    ZPath parent_path() const;
    /// The last element, and that up to its last dot; empty instead of ".", ".." and a separator, and so
    /// behind a separator at the end.
    ZPath filename() const;
    ZPath stem() const;
    /// The last element from its last dot on: all of `.profile`.
    ZPath extension() const { return from_fs_path(path_.extension()); }
    bool has_root_name() const noexcept { return path_.has_root_name(); }
    bool has_root_directory() const noexcept { return path_.has_root_directory(); }
    bool has_root_path() const noexcept { return !path_.rootPathView().empty(); }
    bool has_relative_path() const noexcept { return path_.has_relative_path(); }
    bool has_filename() const { return !filename().empty(); }
    bool has_stem() const { return !stem().empty(); }
    bool has_extension() const { return !extension().empty(); }
    bool has_parent_path() const { return !parent_path().empty(); }
    bool is_absolute() const noexcept { return path_.is_absolute(); }
    bool is_relative() const noexcept { return !is_absolute(); }

    /// The stem with this extension, to which a dot is added if it has none, in the parent directory. An
    /// empty one removes the extension: all from the last dot on, if no separator follows it; `.profile`
    /// becomes empty.
    ZPath& replace_extension(const ZPath& new_extension);
    ZPath& remove_extension() { return replace_extension(ZPath()); }
    /// Takes away the last element, see FilesystemPath.
    ZPath& remove_filename();

    /// What lies here, links followed. A link that leads nowhere is missing; what cannot be found out is
    /// nothing.
    bool exists() const;
    bool is_directory() const;
    bool is_regular_file() const;
    /// Whether this process may.
    bool is_readable() const;
    bool is_writable() const;
    /// Whether it is the same file: by equal_filenames() of the complete paths, otherwise by the disk. False
    /// if either is missing. Throws as current_path().
    bool equivalent(const ZPath& other);

    /// Whether this is a directory afterwards. Throws "create_directory(p): invalid argument" unless
    /// something else has the name.
    bool create_directory() const;
    /// The same with all missing parents, and "create_directories(p): invalid argument".
    bool create_directories() const;
    /// Whether it was there and was removed; throws "remove(p): invalid argument". Only an empty directory is
    /// removed, and a link itself; links that lead nowhere stay.
    bool delete_directory() const;
    bool delete_file() const;
    bool delete_file_or_directory() const;
    /// Removes whatever is here, directories with all that is in them; links themselves, not what they lead
    /// to. Always false. Throws "remove_all(p): invalid argument".
    bool removeAllFilesDirectoriesRecursively() const;
    /// Replaces a file that is called `to`. Throws "rename(p1, p2): invalid arguments".
    void rename(const ZPath& to) const;
    /// In bytes. Throws "file_size(p): invalid argument".
    std::uintmax_t file_size() const;
    /// As the C library's; null if it fails.
    std::FILE* fopen(const char* mode) const;
    /// The working directory. Throws "current_path(): can't get current working directory".
    static ZPath current_path();

private:
    /// Keeps paths from turning into this class by themselves.
    struct FromFSPath;

    ZPath(const FilesystemPath& path, FromFSPath*) : path_(path) {}
    ZPath(FilesystemPath&& path, FromFSPath*) noexcept : path_(std::move(path)) {}

    FilesystemPath path_;
};

} // namespace Zelm
