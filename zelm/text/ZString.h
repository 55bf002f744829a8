#pragma once

#include <zelm/text/ZStringView.h>

#include <atomic>
#include <cstdint>
#include <utility>

#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace Zelm {

namespace details {

/// Whether no other thread can be running, so that counts need no locked instruction: two thirds of the cost
/// of a copy. Only this thread itself can start another one, and what it has written is visible there.
inline bool isOnlyThread() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

/// Counts one more owner, without a locked instruction while there is one thread.
template <class Count>
void addOwner(std::atomic<Count>& owners) noexcept {
    if (isOnlyThread()) {
        owners.store(owners.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    } else {
        owners.fetch_add(1);
    }
}
/// Counts one owner less and tells whether it was the last.
template <class Count>
bool removeOwner(std::atomic<Count>& owners) noexcept {
    if (isOnlyThread()) {
        const Count before = owners.load(std::memory_order_relaxed);
        owners.store(before - 1, std::memory_order_relaxed);
        return before == 1;
    }
    return owners.fetch_sub(1) == 1;
}

} // namespace details

/// The library's text: a view of characters (UTF-8 by convention) and a counted, shared owner of them.
///
/// Copies and cuts (`substr`, `left`, `mid`, `right`, the trims) share the characters: no allocation, one
/// atomic increment at most. A ZString of a string literal or ZStringLiteral owns nothing at all: no
/// allocation, no atomic operation, ever. Only operations that make new text make a new Storage, the counted
/// owner.
///
/// The characters are not NUL-terminated in general. `c_str()`, `to_string()` and the conversion to
/// `const std::string&` provide a terminated copy: free if the object shows the whole of its Storage,
/// otherwise one Storage that the object keeps. Readers that only look use `data()` and `size()`.
///
/// Threads: objects that share characters may be used from different threads freely. One object may be read
/// by several threads at once, `to_string()` included; changing it needs the usual exclusion.
///
/// If memory runs out, `std::bad_alloc` leaves the object as it was.
class ZELM_EXPORT ZString : public details::TextRange {
public:
    struct Storage;

    /// Empty, with null data and no Storage.
    constexpr ZString() noexcept = default;
    /// Shares the literal.
    constexpr ZString(const ZStringLiteral& literal) noexcept : TextRange(literal.data(), literal.size()) {}
    /// Shares a string literal. A `const char` array that is no string literal looks the same to the
    /// compiler: it has to live as long as this text and all copies, and to be filled up to its final NUL;
    /// copy any other through `from_char_ptr`.
    template <std::size_t N>
    constexpr ZString(const char (&literal)[N]) noexcept : TextRange(literal, N - 1) {
        assert(literal[N - 1] == '\0');
    }
    /// Copies a writable array up to its first NUL, or all of it if it has none.
    template <std::size_t N>
    ZString(char (&buffer)[N]) : ZString(buffer, ::strnlen(buffer, N)) {}
    /// Copies what a `const char*` or `char*` points at, as `from_char_ptr`.
    template <class Pointer, details::IfAnyOf<Pointer, const char*, char*> = 0>
    ZString(const Pointer& text) : ZString(from_char_ptr(text)) {}
    ZString(std::nullptr_t) = delete;
    /// Copies `count` characters, NULs among them too.
    ZString(const char* text, std::size_t count);
    ZString(const std::string& text);
    ZString(std::string&& text);
    /// Copies the viewed characters; explicit because it does.
    explicit ZString(ZStringView text) : ZString(text.data(), text.size()) {}

    /// Shares the characters of `other`.
    ZString(const ZString& other) noexcept;
    /// Leaves `other` default-constructed.
    ZString(ZString&& other) noexcept : TextRange(other), pimpl_(other.heldStorage()) {
        other.show(nullptr, 0);
        other.hold(nullptr);
    }
    ~ZString();

    /// Copies the text up to its first NUL; null counts as empty.
    static ZString from_char_ptr(const char* text);
    static ZString from_char(char c);

    ZString& operator=(const ZString& other) noexcept {
        ZString(other).swap(*this);
        return *this;
    }
    /// Swaps the owners: `other` may only be destroyed or assigned to afterwards.
    ZString& operator=(ZString&& other) noexcept {
        show(other.data_, other.length_);
        Storage* const mine = heldStorage();
        hold(other.heldStorage());
        other.hold(mine);
        return *this;
    }
    /// Shares the literal and owns nothing.
    ZString& operator=(ZStringLiteral literal) noexcept {
        ZString(literal).swap(*this);
        return *this;
    }
    /// Moves in or copies a `std::string`, copies a view. The argument may show characters of this text.
    template <class Text,
              details::IfAnyOf<std::decay_t<Text>, std::string, std::string_view, ZStringView> = 0>
    ZString& operator=(Text&& text) {
        ZString(std::forward<Text>(text)).swap(*this);
        return *this;
    }

    void clear() noexcept { ZString().swap(*this); }
    void swap(ZString& other) noexcept;
    friend void swap(ZString& a, ZString& b) noexcept { a.swap(b); }

    /// Exactly these characters as a `std::string`. Allocates if the object is cut or made of a literal, once
    /// for all later calls; `data()` does not change. The reference is valid until the object is assigned to,
    /// appended to, cleared, swapped or destroyed. Several threads may call it on one object.
    const std::string& to_string() const&;
    /// The characters of a temporary, by value.
    std::string to_string() &&;
    operator const std::string&() const { return to_string(); }
    /// The NUL-terminated characters of `to_string()`, valid as long as its result.
    const char* c_str() const { return to_string().c_str(); }

    /// The text of at most `n` characters at `pos`, sharing. Throws `std::out_of_range` "ZStringView range
    /// error" if `pos > size()`.
    ZString substr(std::size_t pos = 0, std::size_t n = npos) const { return cut(pos, cutLength(pos, n)); }
    /// The first `n` characters, or all if there are fewer; sharing, as are `mid` and `right`.
    ZString left(std::size_t n) const { return substr(0, n); }
    /// As `substr`, but empty if `pos` lies behind the end.
    ZString mid(std::size_t pos, std::size_t n = npos) const {
        return substr(pos < length_ ? pos : length_, n);
    }
    /// The last `n` characters, or all if there are fewer.
    ZString right(std::size_t n) const { return n < length_ ? cut(length_ - n, n) : *this; }
    /// The same text in a Storage of its own, made from `to_string()`.
    ZString realloc() const { return ZString(to_string()); }

    /// The text without the characters in `chars` at both ends, the front or the back; sharing, as are all
    /// trims.
    ZString trim(ZStringView chars) const noexcept;
    ZString trim_left(ZStringView chars) const noexcept;
    ZString trim_right(ZStringView chars) const noexcept;
    /// Trims blanks alone.
    ZString trim_space() const noexcept;
    ZString trim_space_left() const noexcept;
    ZString trim_space_right() const noexcept;
    /// Trims blank, tab, newline, vertical tab, form feed and carriage return.
    ZString trim_whitespace() const noexcept;
    ZString trim_whitespace_left() const noexcept;
    ZString trim_whitespace_right() const noexcept;

    /// Every occurrence of `from` replaced by `to`, found from the front; what replaced it is not searched
    /// again. Shares this text if there is none or `from` is empty. Linear time.
    ZString replace(ZStringView from, ZStringView to) const;

    /// Only 'A' to 'Z' and 'a' to 'z' change, in every locale. Always a Storage of its own.
    ZString to_lower() const;
    ZString to_upper() const;

    /// Compares with 'A' to 'Z' taken as 'a' to 'z'. At the first difference the difference of the two
    /// characters as signed numbers (unlike `compare`, bytes above 127 come first); otherwise -1, 0 or 1 by
    /// the lengths.
    int compare_ignore_case(ZStringView other) const noexcept;
    bool equal_ignore_case(ZStringView other) const noexcept { return compare_ignore_case(other) == 0; }
    bool starts_with_ignore_case(ZStringView start) const noexcept;
    bool ends_with_ignore_case(ZStringView end) const noexcept;
    /// The first match at or after `pos`, letters of either case being equal.
    ///
    /// The needle is read up to its first NUL, not by its length, and has to be NUL-terminated: a view cut
    /// from a longer text is searched with all that follows it there, and so misses. Null counts as empty.
    std::size_t find_ignore_case(ZStringView needle, std::size_t pos = 0) const noexcept;
    bool contains_ignore_case(ZStringView needle) const noexcept { return find_ignore_case(needle) != npos; }
    /// As `replace`, with `find_ignore_case` as the search and its demand on `from`; kept text keeps its
    /// case. Each match is taken to be `from.size()` characters long.
    ZString replace_ignore_case(ZStringView from, ZStringView to) const;

    /// How many characters equal `c`.
    std::size_t count_occurrences(char c) { return std::as_const(*this).count_occurrences(c); }
    std::size_t count_occurrences(char c) const noexcept;

    /// Appends. In place if this object alone holds its Storage and shows all of it, at the amortised cost of
    /// `std::string::append`; otherwise the text moves to a new buffer, and other owners keep the old one.
    /// The argument may show characters of this text. Nothing changes if it is empty.
    ZString& operator+=(ZStringView text);
    template <class Char, details::IfAnyOf<Char, char> = 0>
    ZString& operator+=(Char c) {
        return *this += ZStringView(&c, 1);
    }

    /// Shows sharing to components that count on it. `testing_get_and_add_reference` takes a reference that
    /// `testing_release_pimpl` gives back; the latter tells whether it was the last one.
    bool testing_has_pimpl() const noexcept { return storage() != nullptr; }
    bool testing_uses_this_pimpl(Storage* candidate) const noexcept { return storage() == candidate; }
    std::int32_t testing_get_ref_count() const noexcept;
    std::int32_t testing_get_pimpl_without_reference(Storage** out) const noexcept;
    std::int32_t testing_get_and_add_reference(Storage** out) const noexcept;
    static Storage* testing_get_pimpl_parent(Storage* storage) noexcept;
    static std::int32_t testing_get_pimpl_ref_count(Storage* storage) noexcept;
    static bool testing_release_pimpl(Storage* storage) noexcept;

private:
    friend ZString operator_add_impl(ZStringView a, ZStringView b);

    /// Takes over one reference on `owner`.
    ZString(const char* data, std::size_t length, Storage* owner) noexcept
        : TextRange(data, length), pimpl_(owner) {}

    ZString cut(std::size_t pos, std::size_t n) const noexcept;
    ZString& appendSlowly(ZStringView text);

    void show(const char* data, std::size_t length) noexcept {
        data_ = data;
        length_ = length;
    }
    /// The owner, where other threads may be reading this object.
    Storage* storage() const noexcept { return pimpl_.load(std::memory_order_acquire); }
    /// The owner, where this thread alone uses this object.
    Storage* heldStorage() const noexcept { return pimpl_.load(std::memory_order_relaxed); }
    void hold(Storage* owner) noexcept { pimpl_.store(owner, std::memory_order_relaxed); }

    mutable std::atomic<Storage*> pimpl_{nullptr};
};

/// The counted owner of characters.
///
/// A new one has one reference and no parent. `value` is written only by an object that holds the one
/// reference.
struct ZELM_EXPORT ZString::Storage {
    explicit Storage(const char* text) : value(text ? text : "") {}
    Storage(const char* text, std::size_t count) : value(text, count) {}
    explicit Storage(const std::string& text) : value(text) {}
    explicit Storage(std::string&& text) noexcept : value(std::move(text)) {}
    Storage(std::size_t count, char c) : value(count, c) {}
    /// Copies parent and count verbatim, without taking references: no way to share a Storage.
    Storage(const Storage& other);
    Storage& operator=(const Storage& other);
    ~Storage() { release(parent); }

    /// Each thread keeps the memory of a few for its next ones.
    static void* operator new(std::size_t size);
    static void operator delete(void* memory, std::size_t size) noexcept;

    void addRef() noexcept { details::addOwner(ref_count); }
    /// Gives back one reference; the last one destroys the Storage and gives back that on its parent in turn.
    void decRef() noexcept {
        if (dropsLastRef()) {
            destroy(this);
        }
    }
    /// `addRef` and `decRef` that accept null.
    static Storage* share(Storage* storage) noexcept {
        if (storage) {
            storage->addRef();
        }
        return storage;
    }
    static void release(Storage* storage) noexcept {
        if (storage) {
            storage->decRef();
        }
    }

    std::string value;
    /// Owner of an older buffer that a ZString still shows; one reference is held on it.
    Storage* parent = nullptr;
    std::atomic<std::int32_t> ref_count{1};

private:
    bool dropsLastRef() noexcept { return details::removeOwner(ref_count); }
    static void destroy(Storage* storage) noexcept;
};

static_assert(sizeof(ZString) == 3 * sizeof(void*) && alignof(ZString) == alignof(void*));

inline ZString::ZString(const ZString& other) noexcept
    : TextRange(other), pimpl_(Storage::share(other.storage())) {}

inline ZString::~ZString() {
    Storage::release(heldStorage());
}

inline void ZString::swap(ZString& other) noexcept {
    const ZStringView view = other;
    other.show(data_, length_);
    show(view.data(), view.size());
    Storage* const mine = heldStorage();
    hold(other.heldStorage());
    other.hold(mine);
}

inline ZString ZString::cut(std::size_t pos, std::size_t n) const noexcept {
    return ZString(data_ + pos, n, Storage::share(storage()));
}

inline ZString& ZString::operator+=(ZStringView text) {
    // Acquire: what other owners read before they let go has to come before this write.
    Storage* const own = heldStorage();
    if (own && own->ref_count.load(std::memory_order_acquire) == 1 && own->value.size() == length_ &&
        !own->parent) {
        own->value.append(text.data(), text.size());
        show(own->value.data(), own->value.size());
        return *this;
    }
    return appendSlowly(text);
}

/// `a` followed by `b`, in a Storage of its own even if both are empty.
ZELM_EXPORT ZString operator_add_impl(ZStringView a, ZStringView b);

template <class A, class B, details::IfTexts<A, B> = 0>
ZString operator+(const A& a, const B& b) {
    return operator_add_impl(a, b);
}
template <class Text, class Char, details::IfTexts<Text, ZString> = 0, details::IfAnyOf<Char, char> = 0>
ZString operator+(const Text& text, Char c) {
    return operator_add_impl(text, ZStringView(&c, 1));
}
template <class Char, class Text, details::IfTexts<ZString, Text> = 0, details::IfAnyOf<Char, char> = 0>
ZString operator+(Char c, const Text& text) {
    return operator_add_impl(ZStringView(&c, 1), text);
}

} // namespace Zelm

template <>
struct std::hash<Zelm::ZString> {
    std::size_t operator()(const Zelm::ZString& text) const noexcept {
        return std::hash<std::string_view>()(text);
    }
};
