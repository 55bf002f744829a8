#pragma once

#include <zelm/arrays/SlicePlan.h>
#include <zelm/variant/RoomForElements.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <vector>

namespace Zelm::details {

/// Steps through every `stride`-th element of an array. `Stride` is a number, or one that is known when
/// compiled.
template <class Element, class Stride>
class StridedIterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = const Element*;
    using reference = const Element&;

    StridedIterator(const Element* origin, Stride stride, std::uint64_t position) noexcept
        : origin_(origin), stride_(stride), position_(position) {}

    reference operator*() const noexcept { return origin_[position_ * stride_]; }
    StridedIterator& operator++() noexcept {
        ++position_;
        return *this;
    }
    StridedIterator& operator--() noexcept {
        --position_;
        return *this;
    }
    StridedIterator& operator+=(difference_type n) noexcept {
        position_ += static_cast<std::uint64_t>(n);
        return *this;
    }
    friend difference_type operator-(const StridedIterator& a, const StridedIterator& b) noexcept {
        return static_cast<difference_type>(a.position_ - b.position_);
    }
    friend bool operator==(const StridedIterator& a, const StridedIterator& b) noexcept {
        return a.position_ == b.position_;
    }
    friend bool operator!=(const StridedIterator& a, const StridedIterator& b) noexcept { return !(a == b); }

private:
    const Element* origin_;
    Stride stride_;
    std::uint64_t position_;
};

/// Appends `count` elements, `stride` apart.
template <class Element, class Stride>
void appendStrided(std::vector<Element>& list, const Element* first, Stride stride, std::uint64_t count) {
    using Iterator = StridedIterator<Element, Stride>;
    list.insert(list.end(), Iterator(first, stride, 0), Iterator(first, stride, count));
}

/// The elements of a slice in the slice's order. `source` has more than `plan.largestOffset()` elements.
template <class Element>
std::vector<Element> gather(const Element* source, const SlicePlan& plan) {
    // Runs below this length cost less element by element, with zeros written before, than as parts of the
    // vector.
    constexpr std::uint64_t kShortRun = 8;
    if (std::is_trivially_copyable_v<Element> && plan.firstRunLength() < kShortRun) {
        std::vector<Element> selected(plan.size());
        Element* out = selected.data();
        plan.forEachRun([&](const IndexRun& run) {
            const Element* first = source + run.first;
            for (std::uint64_t i = 0; i < run.count; ++i) {
                *out++ = first[i * run.step];
            }
        });
        return selected;
    }
    auto selected = roomForElements<Element>(plan.size());
    plan.forEachRun([&](const IndexRun& run) {
        const Element* first = source + run.first;
        if (run.step == 1) {
            selected.insert(selected.end(), first, first + run.count);
        } else if (run.step == 2) {
            // Two loads of neighbours and a shuffle, where compilers know it.
            appendStrided(selected, first, std::integral_constant<std::uint64_t, 2>(), run.count);
        } else {
            appendStrided(selected, first, run.step, run.count);
        }
    });
    return selected;
}

/// Writes the elements from `source` on over those of a slice, in the slice's order. `target` has more than
/// `plan.largestOffset()` elements, and there are `plan.size()` to read.
template <class Source, class Element>
void scatter(Source source, Element* target, const SlicePlan& plan) {
    plan.forEachRun([&](const IndexRun& run) {
        Element* first = target + run.first;
        const auto count = static_cast<std::ptrdiff_t>(run.count);
        if (run.step == 1) {
            std::copy_n(source, count, first);
        } else {
            for (std::ptrdiff_t i = 0; i < count; ++i) {
                first[static_cast<std::uint64_t>(i) * run.step] = source[i];
            }
        }
        source += count;
    });
}

} // namespace Zelm::details
