#pragma once

#include <json/json.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Zelm::details {

/// The infinities of a document, which `Json::Reader` takes for no numbers: it is given a document in which
/// others stand in their places, and they are put back where elements are read.
class JsonInfinities {
public:
    /// Finds the infinities and writes as many characters over each.
    explicit JsonInfinities(std::string& document);

    /// The infinity in whose place this number was read, if there was one.
    std::optional<double> take(const Json::Value& number);

    bool isEmpty() const noexcept { return places_.empty(); }
    /// Whether each of them has been put back. One that stands where no infinity can be makes the document
    /// malformed.
    bool allTaken() const noexcept { return taken_ == places_.size(); }

private:
    std::vector<std::ptrdiff_t> places_; // ascending
    std::size_t taken_ = 0;
};

} // namespace Zelm::details
