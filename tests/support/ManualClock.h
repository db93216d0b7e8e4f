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
        return static_cast<std::uint32_t>(
            static_cast<std::uint64_t>(off_) +
            (milliseconds_ < standsUntil_ ? stoodAt_ : milliseconds_));
    }
    [[nodiscard]] std::chrono::microseconds sinceStart() const {
        return std::chrono::milliseconds(milliseconds_);
    }
    void advance(std::uint64_t milliseconds) {
        milliseconds_ += milliseconds;
        if (Passing)
            Passing();
    }

    /// What is read goes wrong by so many milliseconds, while time passes as ever.
    void goWrong(std::int64_t milliseconds) { off_ += milliseconds; }
    /// What is read stands still for so many milliseconds, and then catches up.
    void standStill(std::uint64_t milliseconds) {
        stoodAt_ = milliseconds_;
        standsUntil_ = milliseconds_ + milliseconds;
    }

    std::function<void()> Passing; ///< Called when time has passed.

  private:
    std::uint64_t milliseconds_;
    std::int64_t off_ = 0;
    std::uint64_t stoodAt_ = 0;
    std::uint64_t standsUntil_ = 0;
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
