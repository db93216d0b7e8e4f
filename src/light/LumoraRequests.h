#pragma once

#include "base/Event.h"

#include <string>

namespace corvane {

/// What a person wants to become of a program's segments. It is reported where it arises, with the
/// track and the segment in it, and whoever listens records a change. Indices count from 1.
struct LumoraRequests {
    Event<bool&> PasteStateRequested; ///< To be answered: what was copied may be pasted now.
    Event<int> SegmentAddRequested;   ///< At the end of the track.
    Event<int, int> SegmentCutRequested;
    Event<int, int> SegmentCopyRequested;
    Event<int, int> SegmentDeleteRequested;
    Event<int, int> SegmentInsertRequested;
    Event<int, int> SegmentPasteRequested;
    Event<int, int, int> TrackBrightnessChanged; ///< Percent.
    Event<int, int, int> TrackBrightness2Changed;
    Event<int, int, const std::string&> TrackFunctionChanged;
    Event<int, int, double> TrackTimeChanged; ///< Seconds.

    [[nodiscard]] bool mayPaste() const {
        bool state = false;
        PasteStateRequested.raise(state);
        return state;
    }
};

} // namespace corvane
