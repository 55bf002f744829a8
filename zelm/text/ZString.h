#pragma once

#include <zelm/Export.h>
#include <zelm/text/TextRange.h>
#include <zelm/text/ZStringLiteral.h>
#include <zelm/text/ZStringView.h>

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>

namespace Zelm {

namespace details {

/// Enables an overload for arguments of exactly one of `Allowed`, references and const aside. Such overloads
/// take no part in conversions, which would otherwise make calls ambiguous.
template <class Argument, class... Allowed>
using RequireExactly = std::enable_if_t<(std::is_same_v<std::decay_t<Argument>, Allowed> || ...)>;

/// The same for pointers to characters, but not for arrays, which decay to them.
template <class Argument>
using RequireCharacterPointer =
    std::enable_if_t<std::is_same_v<Argument, const char*> || std::is_same_v<Argument, char*>>;

} // namespace details

/// The text of the library: characters, UTF-8 by convention, with a shared and counted owner.
///
/// A ZString shows a run of characters that its Storage keeps alive. Copies, cuts and trims share the Storage
/// and move no character; only operations that produce new text allocate. A string without a Storage is empty
/// or shows a literal.
///
/// Different objects that share a Storage may be used from several threads freely. One object may be read by
/// several threads, conversions to `std::string` included; while one of them changes it, nobody else may use
/// it.
///
/// Functions in the style of the standard library count bytes. No NUL stands behind the text in general:
/// c_str() and to_string() provide one, at the price of a copy of a cut text, once.
class ZELM_EXPORT ZString : public details::TextRange {
public:
    /// Counted characters. `parent` is a Storage that must live as long, since views may still point into it.
    struct ZELM_EXPORT Storage {
        explicit Storage(const char* text) : value(text) {}
        Storage(const char* text, std::size_t length) : value(text, length) {}
        explicit Storage(const std::string& text) : value(text) {}
        explicit Storage(std::string&& text) noexcept : value(std::move(text)) {}
        /// Takes parent and count over as they are, without counting: not for sharing.
        Storage(const Storage& other);
        Storage& operator=(const Storage& other);
        ~Storage();

        void addRef() noexcept { ref_count.fetch_add(1); }
        /// The caller that takes the last reference away destroys the Storage and releases its parent.
        void decRef() noexcept;

        std::string value;
        Storage* parent = nullptr;
        std::atomic<std::int32_t> ref_count{1};
    };

    /// Empty, without a Storage.
    constexpr ZString() noexcept = default;
    /// Shows the literal: no allocation, no counting, ever.
    constexpr ZString(const ZStringLiteral& literal) noexcept : TextRange(literal.data(), literal.size()) {}
    /// A literal of the source text, likewise. A `const` array on the stack looks the same to the compiler
    /// and must not be passed here: its text would not live long enough, and padding behind it would count.
    template <std::size_t N>
    constexpr ZString(const char (&literal)[N]) noexcept : TextRange(literal, N - 1) {
        assert(literal[N - 1] == '\0');
    }
    /// Copies up to the first NUL.
    template <std::size_t N>
    ZString(char (&text)[N]) : ZString(text, std::char_traits<char>::length(text)) {}
    template <class Pointer, class = details::RequireCharacterPointer<Pointer>>
    ZString(const Pointer& text) : ZString(text, std::char_traits<char>::length(text)) {}
    ZString(const char* text, std::size_t length) : ZString(new Storage(text, length)) {}
    ZString(const std::string& text) : ZString(new Storage(text)) {}
    ZString(std::string&& text) : ZString(new Storage(std::move(text))) {}
    /// Copies. Explicit, since every conversion would.
    explicit ZString(ZStringView text) : ZString(new Storage(text.data(), text.size())) {}
    ZString(std::nullptr_t) = delete;

    ZString(const ZString& other) noexcept : TextRange(other), pimpl_(other.sharedStorage()) {}
    /// The source ends as a default-made string.
    ZString(ZString&& other) noexcept
        : TextRange(other), pimpl_(other.pimpl_.load(std::memory_order_relaxed)) {
        other.reset();
    }
    ~ZString() { release(pimpl_.load(std::memory_order_relaxed)); }

    static ZString from_char_ptr(const char* text);
    static ZString from_char(char character);

    ZString& operator=(const ZString& other) noexcept;
    /// Swaps the Storages, so that the source goes on holding the former one until it dies.
    ZString& operator=(ZString&& other) noexcept;
    ZString& operator=(ZStringLiteral literal) noexcept;
    template <std::size_t N>
    ZString& operator=(const char (&literal)[N]) noexcept {
        return *this = ZStringLiteral(literal, N - 1);
    }
    template <std::size_t N>
    ZString& operator=(char (&text)[N]) {
        return *this = ZString(text);
    }
    template <class Pointer, class = details::RequireCharacterPointer<Pointer>>
    ZString& operator=(const Pointer& text) {
        return *this = ZString(text);
    }
    /// Copies or moves the text in; it may lie in the Storage that is let go.
    template <class Text, class = details::RequireExactly<Text, std::string, ZStringView>>
    ZString& operator=(Text&& text) {
        return *this = ZString(std::forward<Text>(text));
    }

    /// Empty, without a Storage.
    void clear() noexcept;
    void swap(ZString& other) noexcept;

    /// The characters with a NUL behind them, valid until this object is assigned to, appended to, cleared,
    /// swapped or destroyed. A text that shows only a part of its Storage gets a Storage of its own at the
    /// first call.
    const char* c_str() const { return to_string().c_str(); }
    /// The same as a `std::string`; of a temporary by value.
    const std::string& to_string() const&;
    std::string to_string() && { return std::string(data_, length_); }
    operator const std::string&() const& { return to_string(); }
    operator std::string() && { return std::move(*this).to_string(); }

    /// The text from `position` on, `count` characters at most. Throws `std::out_of_range` "ZStringView range
    /// error" if `position` is past the end. Shares, as do all cuts and trims.
    ZString substr(std::size_t position, std::size_t count = npos) const;
    /// The first `count` characters, or all.
    ZString left(std::size_t count) const { return substr(0, count); }
    /// As substr(), with `position` cut down to the length.
    ZString mid(std::size_t position, std::size_t count = npos) const;
    /// The last `count` characters, or all.
    ZString right(std::size_t count) const;
    /// The same text in a Storage of its own. A cut text gets a new Storage as well, as by to_string().
    ZString realloc() const { return ZString(to_string()); }

    /// Without the characters of `chars` at both ends, at the front, or at the back.
    ZString trim(ZStringView chars) const;
    ZString trim_left(ZStringView chars) const;
    ZString trim_right(ZStringView chars) const;
    /// Without blanks.
    ZString trim_space() const { return trim(" "); }
    ZString trim_space_left() const { return trim_left(" "); }
    ZString trim_space_right() const { return trim_right(" "); }
    /// Without blank, tab, newline, vertical tab, form feed and carriage return.
    ZString trim_whitespace() const;
    ZString trim_whitespace_left() const;
    ZString trim_whitespace_right() const;

    // Letters fold by ASCII alone, whatever the locale.

    /// The signed difference of the first two folded characters that differ, as signed bytes; else -1, 0 or 1
    /// by length.
    int compare_ignore_case(ZStringView other) const noexcept;
    bool equal_ignore_case(ZStringView other) const noexcept { return compare_ignore_case(other) == 0; }
    bool starts_with_ignore_case(ZStringView prefix) const noexcept;
    bool ends_with_ignore_case(ZStringView suffix) const noexcept;
    /// The needle counts up to its first NUL and not by its length: pass whole texts, not cuts of longer
    /// ones.
    std::size_t find_ignore_case(ZStringView needle, std::size_t position = 0) const;
    bool contains_ignore_case(ZStringView needle) const { return find_ignore_case(needle) != npos; }

    /// Every occurrence of `from` replaced by `to`, which is not searched again. Shares if there is none.
    /// Linear.
    ZString replace(ZStringView from, ZStringView to) const;
    /// The same with find_ignore_case(): `from` is searched up to its first NUL, but its length is what is
    /// removed.
    ZString replace_ignore_case(ZStringView from, ZStringView to) const;
    ZString to_lower() const;
    ZString to_upper() const;

    /// Appends in place, amortised, if nobody shares the Storage; else the text moves to a new one. `text`
    /// may lie in this string. Unchanged if memory runs out.
    ZString& operator+=(ZStringView text);
    template <class Char, class = details::RequireExactly<Char, char>>
    ZString& operator+=(Char character) {
        return *this += ZStringView(&character, 1);
    }

    std::size_t count_occurrences(char character);

    // How Storages are shared, for inspection.

    bool testing_has_pimpl() const noexcept { return storage() != nullptr; }
    bool testing_uses_this_pimpl(Storage* storage) const noexcept { return this->storage() == storage; }
    /// 0 without a Storage.
    std::int32_t testing_get_ref_count() const noexcept;
    /// Stores the Storage and returns its count.
    std::int32_t testing_get_pimpl_without_reference(Storage** storage) const noexcept;
    /// The same, and takes a reference; the count is the one before.
    std::int32_t testing_get_and_add_reference(Storage** storage) const noexcept;
    static Storage* testing_get_pimpl_parent(Storage* storage) noexcept;
    static std::int32_t testing_get_pimpl_ref_count(Storage* storage) noexcept;
    /// Releases one reference; whether it was the last.
    static bool testing_release_pimpl(Storage* storage) noexcept;

private:
    explicit ZString(Storage* fresh) noexcept
        : TextRange(fresh->value.data(), fresh->value.size()), pimpl_(fresh) {}

    Storage* storage() const noexcept { return pimpl_.load(std::memory_order_acquire); }
    Storage* sharedStorage() const noexcept {
        Storage* const shared = storage();
        if (shared) {
            shared->addRef();
        }
        return shared;
    }
    static void release(Storage* storage) noexcept {
        if (storage) {
            storage->decRef();
        }
    }
    void reset() noexcept;
    std::string concatenated(ZStringView text) const;
    template <class Find>
    ZString replaced(std::size_t removed, ZStringView to, Find find) const;

    // Reading a cut text as std::string replaces its Storage, possibly in several threads at once.
    mutable std::atomic<Storage*> pimpl_{nullptr};
};

/// `a` followed by `b`, in a new Storage; one buffer of the final size.
ZELM_EXPORT ZString operator_add_impl(ZStringView a, ZStringView b);

inline ZString operator+(ZStringView a, ZStringView b) {
    return operator_add_impl(a, b);
}
template <class Char, class = details::RequireExactly<Char, char>>
ZString operator+(ZStringView a, Char b) {
    return operator_add_impl(a, ZStringView(&b, 1));
}
template <class Char, class = details::RequireExactly<Char, char>>
ZString operator+(Char a, ZStringView b) {
    return operator_add_impl(ZStringView(&a, 1), b);
}

inline void swap(ZString& a, ZString& b) noexcept {
    a.swap(b);
}

} // namespace Zelm

template <>
struct std::hash<Zelm::ZString> {
    std::size_t operator()(const Zelm::ZString& text) const noexcept {
        return std::hash<Zelm::ZStringView>()(text);
    }
};
