#pragma once

#include "base/Clock.h"

#include <chrono>
#include <functional>

namespace corvane {

/// A clock that moves only when told.
class ManualClock final : public Clock {
  public:
    explicit ManualClock(std::uint64_t start = 1000) : milliseconds_(start) {}

    [[nodiscard]] std::uint32_t now() const override {
        return static_cast<std::uint32_t>(milliseconds_);
    }
    [[nodiscard]] std::chrono::microseconds sinceStart() const {
        return std::chrono::milliseconds(milliseconds_);
    }
    void advance(std::uint64_t milliseconds) {
        milliseconds_ += milliseconds;
        if (Passing)
            Passing();
    }

    std::function<void()> Passing; ///< Called when time has passed; may throw.

  private:
    std::uint64_t milliseconds_;
};

/// Passes a millisecond of a manual clock at each step of a blocking operation.
class StepPause final : public Pause {
  public:
    explicit StepPause(ManualClock& clock) : clock_(clock) {}
    void pause() override { clock_.advance(1); }

  private:
    ManualClock& clock_;
};

} // namespace corvane
