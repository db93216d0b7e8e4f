#pragma once

#include "base/Event.h"

#include <string>

namespace corvane {

/// What a person wants to become of a program's segments. It is reported where it arises, with the
/// track and the segment in it, and whoever listens records a change. Indices count from 1.
struct LumoraRequests {
    Request<bool&> PasteStateRequested; ///< To be answered: what was copied may be pasted now.
    Request<int> SegmentAddRequested;   ///< At the end of the track.
    Request<int, int> SegmentCutRequested;
    Request<int, int> SegmentCopyRequested;
    Request<int, int> SegmentDeleteRequested;
    Request<int, int> SegmentInsertRequested;
    Request<int, int> SegmentPasteRequested;
    Request<int, int, int> TrackBrightnessChanged; ///< Percent.
    Request<int, int, int> TrackBrightness2Changed;
    Request<int, int, const std::string&> TrackFunctionChanged;
    Request<int, int, double> TrackTimeChanged; ///< Seconds.

    [[nodiscard]] bool mayPaste() const {
        bool state = false;
        PasteStateRequested(state);
        return state;
    }
};

} // namespace corvane
