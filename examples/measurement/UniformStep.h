#pragma once

#include <optional>
#include <vector>

namespace measurement {

/// The step with which a range variable gives exactly these values: value i is `values[0] + i * step`, with
/// the product and the sum each rounded to double. Of all such steps the one with the shortest decimal text;
/// none if there is no positive one. `values` holds at least two.
std::optional<double> uniformStep(const std::vector<double>& values);

} // namespace measurement
