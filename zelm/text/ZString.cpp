#include <zelm/text/ZString.h>

#include <zelm/text/CharacterSet.h>

#include <algorithm>

namespace Zelm {

namespace {

using details::CharacterSet;

constexpr CharacterSet kBlank(" ");
constexpr CharacterSet kWhitespace(" \t\n\v\f\r");

/// The back goes first: a text of nothing but such characters ends up at its front.
ZString trimmed(const ZString& text, const CharacterSet& chars, bool left, bool right) noexcept {
    // With nothing to keep this is npos + 1, which is 0.
    const std::size_t end = right ? chars.findLastNotIn(text, ZString::npos) + 1 : text.size();
    const std::size_t start = left ? std::min(chars.findFirstNotIn(text, 0), end) : 0;
    return text.mid(start, end - start);
}

} // namespace

ZString::ZString(const char* text, std::size_t count) : pimpl_(new Storage(text, count)) {
    show(heldStorage()->value.data(), count);
}
ZString::ZString(const std::string& text) : pimpl_(new Storage(text)) {
    show(heldStorage()->value.data(), text.size());
}
ZString::ZString(std::string&& text) : pimpl_(new Storage(std::move(text))) {
    show(heldStorage()->value.data(), heldStorage()->value.size());
}

ZString ZString::from_char_ptr(const char* text) {
    return ZString(ZStringView(text));
}

ZString ZString::from_char(char c) {
    return ZString(&c, 1);
}

const std::string& ZString::to_string() const& {
    Storage* shown = storage();
    if (shown && shown->value.size() == length_) {
        return shown->value;
    }
    if (length_ == 0) {
        static const std::string nothing;
        return nothing;
    }
    Storage* const exact = new Storage(data_, length_);
    // The reference on the old owner, whose buffer this object goes on showing, passes to the new one.
    exact->parent = shown;
    if (pimpl_.compare_exchange_strong(shown, exact, std::memory_order_acq_rel, std::memory_order_acquire)) {
        return exact->value;
    }
    // Another thread was quicker: `shown` is now its Storage of the same text.
    exact->parent = nullptr;
    delete exact;
    return shown->value;
}

std::string ZString::to_string() && {
    Storage* const own = heldStorage();
    if (own && own->ref_count.load(std::memory_order_acquire) == 1 && own->value.size() == length_) {
        std::string text = std::move(own->value);
        clear();
        return text;
    }
    return std::string(data_, length_);
}

ZString& ZString::appendSlowly(ZStringView text) {
    if (text.empty()) {
        return *this;
    }
    Storage* const own = heldStorage();
    if (own && own->ref_count.load(std::memory_order_acquire) == 1 && own->value.size() == length_) {
        own->value.append(text.data(), text.size());
    } else {
        std::string joined;
        joined.reserve(length_ + text.size());
        joined.append(data_, length_).append(text.data(), text.size());
        if (!own || own->ref_count.load(std::memory_order_acquire) != 1) {
            return *this = std::move(joined);
        }
        own->value = std::move(joined);
    }
    show(own->value.data(), own->value.size());
    // Last, since the appended text may lie in the parent's buffer.
    Storage::release(std::exchange(own->parent, nullptr));
    return *this;
}

ZString operator_add_impl(ZStringView a, ZStringView b) {
    // Filled and written over, in place: cheaper than to append twice.
    const std::size_t size = a.size() + b.size();
    auto* const sum = new ZString::Storage(size, '\0');
    std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), sum->value.data()));
    return ZString(sum->value.data(), size, sum);
}

ZString ZString::trim(ZStringView chars) const noexcept {
    return trimmed(*this, CharacterSet(chars), true, true);
}
ZString ZString::trim_left(ZStringView chars) const noexcept {
    return trimmed(*this, CharacterSet(chars), true, false);
}
ZString ZString::trim_right(ZStringView chars) const noexcept {
    return trimmed(*this, CharacterSet(chars), false, true);
}

ZString ZString::trim_space() const noexcept {
    return trimmed(*this, kBlank, true, true);
}
ZString ZString::trim_space_left() const noexcept {
    return trimmed(*this, kBlank, true, false);
}
ZString ZString::trim_space_right() const noexcept {
    return trimmed(*this, kBlank, false, true);
}

ZString ZString::trim_whitespace() const noexcept {
    return trimmed(*this, kWhitespace, true, true);
}
ZString ZString::trim_whitespace_left() const noexcept {
    return trimmed(*this, kWhitespace, true, false);
}
ZString ZString::trim_whitespace_right() const noexcept {
    return trimmed(*this, kWhitespace, false, true);
}

std::int32_t ZString::testing_get_ref_count() const noexcept {
    return storage() ? testing_get_pimpl_ref_count(storage()) : 0;
}
std::int32_t ZString::testing_get_pimpl_without_reference(Storage** out) const noexcept {
    *out = storage();
    return *out ? testing_get_pimpl_ref_count(*out) : 0;
}
std::int32_t ZString::testing_get_and_add_reference(Storage** out) const noexcept {
    *out = storage();
    return *out ? (*out)->ref_count.fetch_add(1) : 0;
}
ZString::Storage* ZString::testing_get_pimpl_parent(Storage* storage) noexcept {
    return storage ? storage->parent : nullptr;
}
std::int32_t ZString::testing_get_pimpl_ref_count(Storage* storage) noexcept {
    return storage->ref_count.load();
}
bool ZString::testing_release_pimpl(Storage* storage) noexcept {
    if (!storage) {
        return false;
    }
    const bool last = storage->ref_count.load() == 1;
    storage->decRef();
    return last;
}

} // namespace Zelm
