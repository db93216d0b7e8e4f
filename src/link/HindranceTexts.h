#pragma once

#include "kolib/KODevice.h"

namespace corvane {

/// What a person is told to do about a link that is not open, in the window and at the console.

inline constexpr const char* ForbiddenAdvice =
    "The link may not be opened. Install the udev rule 60-corvane.rules, plug the link in again, "
    "and try again.";

inline constexpr const char* BrokenAdvice =
    "Unplug it and plug it in again. If it stays so, try another cable and another socket.";

/// Under a headline that says that it is busy.
[[nodiscard]] inline std::string BusyAdvice(const LinkHindrance& hindrance) {
    return "Another program uses it" + (hindrance.holder.empty() ? "" : ": " + hindrance.holder) +
           ". Close that program.";
}

/// Under a headline that says that there is no link.
[[nodiscard]] inline std::string StrangerAdvice(const LinkHindrance& hindrance) {
    return "What is plugged in calls itself " + hindrance.holder +
           ", and is no Corvane link. A blank chip becomes one with corvane -program.";
}

/// What stands in the way, and the cure; empty if nothing does.
[[nodiscard]] inline std::string HindranceInWords(const LinkHindrance& hindrance) {
    switch (hindrance.kind) {
    case LinkHindrance::Kind::None:
        break;
    case LinkHindrance::Kind::Busy:
        return "The link is busy: another program uses it" +
               (hindrance.holder.empty() ? "" : ", " + hindrance.holder) +
               ". Close that program, then try again.";
    case LinkHindrance::Kind::Forbidden:
        return ForbiddenAdvice;
    case LinkHindrance::Kind::Broken:
        return std::string("The link can't be opened. ") + BrokenAdvice;
    case LinkHindrance::Kind::Stranger:
        return StrangerAdvice(hindrance);
    }
    return {};
}

} // namespace corvane
