#include <zelm/text/ZString.h>

#include <zelm/text/AsciiCase.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace Zelm {

namespace {

constexpr ZStringView kWhitespace(" \t\n\v\f\r", 6);

const std::string& emptyText() {
    static const std::string empty;
    return empty;
}

/// The text of the view up to its first NUL, beyond its end if need be.
ZStringView measured(ZStringView text) {
    return ZStringView(text.data());
}

template <class Fold>
ZString folded(ZStringView text, Fold fold) {
    std::string result(text.size(), '\0');
    std::transform(text.begin(), text.end(), result.begin(), fold);
    return ZString(std::move(result));
}

bool equalFolded(const char* a, const char* b, std::size_t count) {
    return std::equal(a, a + count, b,
                      [](char x, char y) { return details::toLowerAscii(x) == details::toLowerAscii(y); });
}

/// Long needles are folded once and searched in linear time; short ones are compared in place.
constexpr std::size_t kLongNeedle = 16;

} // namespace

ZString::Storage::Storage(const Storage& other)
    : value(other.value), parent(other.parent), ref_count(other.ref_count.load()) {}

ZString::Storage& ZString::Storage::operator=(const Storage& other) {
    if (this != &other) {
        value = other.value;
    }
    parent = other.parent;
    ref_count.store(other.ref_count.load());
    return *this;
}

ZString::Storage::~Storage() {
    release(parent);
}

void ZString::Storage::decRef() noexcept {
    // A loop, since texts that were cut and read again and again make chains as long as they are.
    for (Storage* storage = this; storage && storage->ref_count.fetch_sub(1) == 1;) {
        Storage* const next = std::exchange(storage->parent, nullptr);
        delete storage;
        storage = next;
    }
}

ZString ZString::from_char_ptr(const char* text) {
    return ZString(text);
}

ZString ZString::from_char(char character) {
    return ZString(std::string(1, character));
}

ZString& ZString::operator=(const ZString& other) noexcept {
    Storage* const taken = other.sharedStorage();
    release(pimpl_.exchange(taken, std::memory_order_acq_rel));
    length_ = other.length_;
    data_ = other.data_;
    return *this;
}

ZString& ZString::operator=(ZString&& other) noexcept {
    length_ = other.length_;
    data_ = other.data_;
    other.pimpl_.store(
        pimpl_.exchange(other.pimpl_.load(std::memory_order_acquire), std::memory_order_acq_rel),
        std::memory_order_release);
    return *this;
}

ZString& ZString::operator=(ZStringLiteral literal) noexcept {
    clear();
    length_ = literal.size();
    data_ = literal.data();
    return *this;
}

void ZString::clear() noexcept {
    Storage* const former = storage();
    reset();
    release(former);
}

void ZString::reset() noexcept {
    length_ = 0;
    data_ = nullptr;
    pimpl_.store(nullptr, std::memory_order_release);
}

void ZString::swap(ZString& other) noexcept {
    std::swap(length_, other.length_);
    std::swap(data_, other.data_);
    other.pimpl_.store(pimpl_.exchange(other.storage(), std::memory_order_acq_rel),
                       std::memory_order_release);
}

const std::string& ZString::to_string() const& {
    Storage* present = storage();
    if (present && present->value.size() == length_) {
        return present->value;
    }
    if (length_ == 0) {
        return emptyText();
    }
    // The new Storage takes over the reference on the present one, into which views may point.
    auto fresh = std::make_unique<Storage>(data_, length_);
    fresh->parent = present;
    if (pimpl_.compare_exchange_strong(present, fresh.get(), std::memory_order_acq_rel)) {
        return fresh.release()->value;
    }
    // Another thread has read this text at the same time and was first.
    fresh->parent = nullptr;
    return present->value;
}

ZString ZString::substr(std::size_t position, std::size_t count) const {
    if (position > length_) {
        details::throwTextRangeError();
    }
    ZString result(*this);
    result.data_ += position;
    result.length_ = std::min(length_ - position, count);
    return result;
}

ZString ZString::mid(std::size_t position, std::size_t count) const {
    return substr(std::min(position, length_), count);
}

ZString ZString::right(std::size_t count) const {
    return substr(length_ - std::min(length_, count));
}

ZString ZString::trim(ZStringView chars) const {
    return trim_right(chars).trim_left(chars);
}

ZString ZString::trim_left(ZStringView chars) const {
    return substr(std::min(find_first_not_of(chars), length_));
}

ZString ZString::trim_right(ZStringView chars) const {
    // npos + 1 is 0: nothing stays of a text that consists of `chars`.
    return left(find_last_not_of(chars) + 1);
}

ZString ZString::trim_whitespace() const {
    return trim(kWhitespace);
}
ZString ZString::trim_whitespace_left() const {
    return trim_left(kWhitespace);
}
ZString ZString::trim_whitespace_right() const {
    return trim_right(kWhitespace);
}

int ZString::compare_ignore_case(ZStringView other) const noexcept {
    const std::size_t common = std::min(length_, other.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int a = static_cast<signed char>(details::toLowerAscii(data_[i]));
        const int b = static_cast<signed char>(details::toLowerAscii(other[i]));
        if (a != b) {
            return a - b;
        }
    }
    return length_ == other.size() ? 0 : length_ < other.size() ? -1 : 1;
}

bool ZString::starts_with_ignore_case(ZStringView prefix) const noexcept {
    return prefix.size() <= length_ && equalFolded(data_, prefix.data(), prefix.size());
}

bool ZString::ends_with_ignore_case(ZStringView suffix) const noexcept {
    return suffix.size() <= length_ && equalFolded(end() - suffix.size(), suffix.data(), suffix.size());
}

std::size_t ZString::find_ignore_case(ZStringView needle, std::size_t position) const {
    const ZStringView wanted = measured(needle);
    if (wanted.size() > length_ || position > length_ - wanted.size()) {
        return npos;
    }
    if (wanted.empty()) {
        return position;
    }
    if (wanted.size() >= kLongNeedle) {
        const ZString text = folded(*this, details::toLowerAscii);
        return text.find(folded(wanted, details::toLowerAscii), position);
    }
    const char first = details::toLowerAscii(wanted.front());
    const char* const last = end() - wanted.size();
    for (const char* candidate = data_ + position; candidate <= last; ++candidate) {
        if (details::toLowerAscii(*candidate) == first &&
            equalFolded(candidate, wanted.data(), wanted.size())) {
            return static_cast<std::size_t>(candidate - data_);
        }
    }
    return npos;
}

template <class Find>
ZString ZString::replaced(std::size_t removed, ZStringView to, Find find) const {
    std::size_t found = find(0);
    if (found == npos) {
        return *this;
    }
    std::string result;
    std::size_t kept = 0;
    for (; found != npos; found = find(kept)) {
        result.append(data_ + kept, found - kept).append(to.begin(), to.end());
        kept = std::min(found + removed, length_);
    }
    result.append(data_ + kept, length_ - kept);
    return ZString(std::move(result));
}

ZString ZString::replace(ZStringView from, ZStringView to) const {
    if (from.empty()) {
        return *this;
    }
    return replaced(from.size(), to, [&](std::size_t position) { return find(from, position); });
}

ZString ZString::replace_ignore_case(ZStringView from, ZStringView to) const {
    if (from.empty() || measured(from).empty()) {
        return *this;
    }
    const ZString text = to_lower();
    const ZString wanted = folded(measured(from), details::toLowerAscii);
    return replaced(from.size(), to, [&](std::size_t position) { return text.find(wanted, position); });
}

ZString ZString::to_lower() const {
    return folded(*this, details::toLowerAscii);
}

ZString ZString::to_upper() const {
    return folded(*this, details::toUpperAscii);
}

std::string ZString::concatenated(ZStringView text) const {
    std::string result;
    result.reserve(length_ + text.size());
    result.append(begin(), end()).append(text.begin(), text.end());
    return result;
}

ZString& ZString::operator+=(ZStringView text) {
    if (text.empty()) {
        return *this;
    }
    Storage* const own = storage();
    // Acquire, so that what former owners have read is over before this one writes.
    if (!own || own->ref_count.load(std::memory_order_acquire) != 1) {
        return *this = concatenated(text);
    }
    if (own->value.size() == length_) {
        own->value.append(text.data(), text.size());
    } else {
        own->value = concatenated(text);
    }
    length_ = own->value.size();
    data_ = own->value.data();
    // Last, since `text` may lie in the buffer of the parent.
    release(std::exchange(own->parent, nullptr));
    return *this;
}

std::size_t ZString::count_occurrences(char character) {
    return static_cast<std::size_t>(std::count(begin(), end(), character));
}

std::int32_t ZString::testing_get_ref_count() const noexcept {
    Storage* const present = storage();
    return present ? present->ref_count.load() : 0;
}

std::int32_t ZString::testing_get_pimpl_without_reference(Storage** result) const noexcept {
    *result = storage();
    return testing_get_ref_count();
}

std::int32_t ZString::testing_get_and_add_reference(Storage** result) const noexcept {
    *result = storage();
    return *result ? (*result)->ref_count.fetch_add(1) : 0;
}

ZString::Storage* ZString::testing_get_pimpl_parent(Storage* storage) noexcept {
    return storage ? storage->parent : nullptr;
}

std::int32_t ZString::testing_get_pimpl_ref_count(Storage* storage) noexcept {
    return storage->ref_count.load();
}

bool ZString::testing_release_pimpl(Storage* storage) noexcept {
    const bool isLast = storage && storage->ref_count.load() == 1;
    release(storage);
    return isLast;
}

ZString operator_add_impl(ZStringView a, ZStringView b) {
    std::string result;
    result.reserve(a.size() + b.size());
    result.append(a.begin(), a.end()).append(b.begin(), b.end());
    return ZString(std::move(result));
}

} // namespace Zelm
