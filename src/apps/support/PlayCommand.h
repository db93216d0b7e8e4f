#pragma once

#include "apps/support/Program.h"

#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// How a light program is played without a window.
struct PlaySetup {
    struct Move {
        int time = 0;  ///< ms from the beginning
        int stick = 0; ///< percent
    };

    double seconds = 1;
    int step = 100; ///< ms
    std::vector<Move> stick{{0, 50}};
    bool noSignal = false;
    bool hysteresis = false;
    std::string png; ///< File for a picture of it; empty for none.
};

/// Reads "P[,T:P...]": a stick position in percent, and further ones from times in seconds.
[[nodiscard]] std::optional<std::vector<PlaySetup::Move>> ParseStick(const std::string& text);

/// Prints the brightness of the six channels over time. Gives the exit status.
int PlayLight(Program& program, const std::string& file, const PlaySetup& setup);

} // namespace corvane
