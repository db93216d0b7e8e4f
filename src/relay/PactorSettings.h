#pragma once

#include "link/KOBuffer.h"

#include <array>

namespace corvane {

/// What the relay product does, as its memory holds it. Percentages are 0 to 100.
struct PactorSettings {
    static constexpr int ImageLength = 7; ///< Bytes, from address 0.

    int tripPoint = 50; ///< Stick position at which the outputs switch, percent.
    int hysteresis = 0; ///< Half width of the dead band round it, percent.
    std::array<bool, 2> indicator{true, false};    ///< Above the trip point, below it.
    std::array<bool, 3> relay{true, false, false}; ///< Above, below, without a signal.

    [[nodiscard]] KOBuffer toImage() const;
    /// The buffer must have `ImageLength` bytes, of which each means something.
    [[nodiscard]] static PactorSettings fromImage(const KOBuffer& image);

    bool operator==(const PactorSettings&) const = default;
};

} // namespace corvane
