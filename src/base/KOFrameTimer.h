#pragma once

#include "base/Clock.h"

namespace corvane {

/// Measures the length of frames.
class KOFrameTimer {
  public:
    explicit KOFrameTimer(const Clock& clock) : clock_(clock) { Reset(); }

    void Update() {
        const std::uint32_t now = clock_.now();
        timeStep_ = TimeDiff(now, last_);
        last_ = now;
    }
    void Reset() {
        last_ = clock_.now();
        timeStep_ = 0;
    }
    /// Length of the last frame, ms.
    [[nodiscard]] int TimeStep() const { return timeStep_; }
    [[nodiscard]] float TimeStepInSeconds() const { return static_cast<float>(timeStep_) / 1000; }

  private:
    const Clock& clock_;
    std::uint32_t last_ = 0;
    int timeStep_ = 0;
};

/// Milliseconds since it was made or reset.
class KOStopWatch {
  public:
    explicit KOStopWatch(const Clock& clock) : clock_(clock) { Reset(); }

    [[nodiscard]] int TimeElapsed() const { return TimeDiff(clock_.now(), start_); }
    void Reset() { start_ = clock_.now(); }

  private:
    const Clock& clock_;
    std::uint32_t start_ = 0;
};

} // namespace corvane
