#pragma once

#include "link/JobOutcome.h"
#include "link/Workplace.h"

namespace corvane {

/// Connects for a job, and looks who is there before anything is sent: the job may go on only if
/// the product has said in this very session that it is one of `desiredClass`, or, if `anyDevice`,
/// if any product is there. Otherwise the outcome has a reason and a cure, and no text. A job lets
/// the product go in either case.
[[nodiscard]] JobOutcome ReachProduct(const Workplace& place, const std::string& desiredClass,
                                      bool anyDevice);

/// Steps of the link, with pauses between them, until `over`, for so many milliseconds at most. On
/// a machine that gave this program no turn meanwhile, what has come by then still counts: some
/// steps are taken in any case.
template<class Over>
void AwaitLink(const Workplace& place, std::int32_t longest, Over over) {
    constexpr int leastSteps = 20;
    const std::uint32_t start = place.clock.now();
    for (int steps = 0;
         !over() && (steps < leastSteps || Elapsed(place.clock.now(), start) < longest); ++steps) {
        place.link.Update();
        if (!over())
            place.pause.pause();
    }
}

/// Why no link is open, with the cure; the text is that of a job that has not begun.
[[nodiscard]] JobOutcome NoLinkOpen(const KOCommLink& link);

/// What to do when a reply has not come in the middle of a job.
[[nodiscard]] std::string NoReplyCure(const KOCommLink& link);

} // namespace corvane
