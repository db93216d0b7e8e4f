#pragma once

#include "kolib/KODevice.h"

namespace corvane {

/// What a person is told to do about a link that is not open, in the window and at the console.

inline constexpr const char* BrokenAdvice =
    "Unplug it and plug it in again. If it stays so, try another cable and another socket.";

[[nodiscard]] inline std::string BusyAdvice(const LinkHindrance& hindrance) {
    return "Another program uses it" + (hindrance.holder.empty() ? "" : ": " + hindrance.holder) +
           ". Close that program.";
}

} // namespace corvane
