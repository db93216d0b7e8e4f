#pragma once

#include "light/LumoraUndoableTrackChange.h"

#include <algorithm>

namespace corvane {

/// The segments that were copied last, for this one editor.
class LumoraClipboard {
  public:
    /// The segments' places are not kept.
    void copy(std::vector<LumoraPlacedElement> segments) { segments_ = std::move(segments); }
    [[nodiscard]] bool hasData() const { return !segments_.empty(); }
    /// At least one of them has a function, which a two-level track can't take.
    [[nodiscard]] bool isDataAdvanced() const {
        return std::any_of(segments_.begin(), segments_.end(), [](const auto& segment) {
            return !segment.element.functionCode().empty();
        });
    }
    /// The segments in a row from this place.
    [[nodiscard]] std::vector<LumoraPlacedElement> placedAt(int index) const {
        std::vector<LumoraPlacedElement> placed = segments_;
        for (LumoraPlacedElement& segment : placed)
            segment.index = index++;
        return placed;
    }

  private:
    std::vector<LumoraPlacedElement> segments_;
};

} // namespace corvane
