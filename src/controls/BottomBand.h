#pragma once

#include "base/Event.h"

namespace corvane {

/// What hangs at the window's lower edge and leaves the product control the rest. Sizes in twips.
class BottomBand {
  public:
    virtual ~BottomBand() = default;
    Event<> DesiredPositionChanged; ///< A step up or down.
    Event<> RestartRequested;       ///< The person would like the program to start anew.
    /// Top of the band from the window's lower edge: negative while it shows.
    [[nodiscard]] virtual int DesiredTop() const = 0;
    [[nodiscard]] virtual int DesiredHeight() const = 0;
};

} // namespace corvane
