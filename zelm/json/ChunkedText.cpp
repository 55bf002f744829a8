#include <zelm/json/ChunkedText.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>

namespace Zelm::details {

void ChunkedText::addChunk(std::size_t atLeast) {
    // From 4 kB, which most documents fit in, up to 64 kB.
    constexpr std::size_t kSmallest = 4096;
    constexpr std::size_t kMostDoublings = 4;
    const std::size_t size = std::max(atLeast, kSmallest << std::min(chunks_.size(), kMostDoublings));
    std::unique_ptr<char[]> bytes(new char[size]);
    if (!chunks_.empty()) {
        chunks_.back().end = end_;
    }
    end_ = bytes.get();
    limit_ = end_ + size;
    chunks_.push_back({std::move(bytes), nullptr});
}

std::ostream& operator<<(std::ostream& out, const ChunkedText& text) {
    const auto bytesOf = [&text](const ChunkedText::Chunk& chunk) {
        const char* const end = chunk.end ? chunk.end : text.end_;
        return std::string_view(chunk.begin.get(), static_cast<std::size_t>(end - chunk.begin.get()));
    };
    if (out.width() > 0) {
        std::string whole;
        for (const ChunkedText::Chunk& chunk : text.chunks_) {
            whole += bytesOf(chunk);
        }
        return out << whole;
    }
    for (const ChunkedText::Chunk& chunk : text.chunks_) {
        if (!(out << bytesOf(chunk))) {
            break;
        }
    }
    return out;
}

} // namespace Zelm::details
