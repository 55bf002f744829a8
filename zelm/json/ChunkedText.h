#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <vector>

namespace Zelm::details {

/// Text that grows by chunks, so that what stands already is never copied and hardly more is held than the
/// text takes.
class ChunkedText {
public:
    /// Room for `count` bytes in a row behind the text, at least one of which is to be written and taken by
    /// endAt() next.
    char* room(std::size_t count) {
        if (static_cast<std::size_t>(limit_ - end_) < count) {
            addChunk(count);
        }
        return end_;
    }
    /// Takes what stands in the room before `end`.
    void endAt(char* end) noexcept { end_ = end; }

    /// The last byte of a text that is not empty.
    char& back() noexcept { return end_[-1]; }

    /// Inserts the text as a `std::string` of it would be, chunk by chunk until the stream fails.
    friend std::ostream& operator<<(std::ostream& out, const ChunkedText& text);

private:
    struct Chunk {
        std::unique_ptr<char[]> begin;
        /// Null for the chunk that is being written.
        const char* end;
    };

    void addChunk(std::size_t atLeast);

    std::vector<Chunk> chunks_;
    char* end_ = nullptr;
    char* limit_ = nullptr;
};

} // namespace Zelm::details
