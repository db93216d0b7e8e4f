#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace corvane {

/// To the nearest integer, ties to even; what does not fit goes to the nearer limit, and what is
/// no number to 0.
[[nodiscard]] inline std::int32_t RoundToInteger(double value) {
    if (std::isnan(value))
        return 0;
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::nearbyint(std::clamp(value, lowest, highest)));
}

} // namespace corvane
