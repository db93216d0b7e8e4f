#pragma once

#include "base/Clock.h"

#include <chrono>

namespace corvane {

/// The clock of this machine, counting from an arbitrary moment and never set back.
class SystemClock final : public Clock {
  public:
    [[nodiscard]] std::uint32_t now() const override {
        const auto since = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<std::uint32_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
    }
};

} // namespace corvane
