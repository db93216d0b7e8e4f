#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace corvane {

/// A millisecond clock. Readings wrap after 2^32 ms; only their differences mean anything.
class Clock {
  public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual std::uint32_t now() const = 0;
};

/// Milliseconds from `earlier` to `now`, right across one wrap of the clock as long as the two
/// lie less than 2^31 ms (24 days) apart; negative if `earlier` is the later one.
[[nodiscard]] constexpr std::int32_t TimeDiff(std::uint32_t now, std::uint32_t earlier) {
    return static_cast<std::int32_t>(now - earlier);
}

/// The same for time-outs, and never negative: since an earlier reading that lies long ago, or from
/// before the clock was set back, very much time has passed, so that nobody waits for the clock.
[[nodiscard]] constexpr std::int32_t Elapsed(std::uint32_t now, std::uint32_t earlier) {
    constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(now - earlier, most));
}

/// How a blocking operation lets time pass between two steps: waits until the device has
/// something or at most about 1 ms, and lets the window repaint without taking input.
class Pause {
  public:
    virtual ~Pause() = default;
    virtual void pause() = 0;
};

} // namespace corvane
