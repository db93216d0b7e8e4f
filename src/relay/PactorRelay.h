#pragma once

#include "controls/ChildControl.h"

namespace corvane {

/// The picture of the relay product: its indicator and its relay.
class PactorRelay {
  public:
    PactorRelay();

    [[nodiscard]] bool RelayOn() const { return relayOn_; }
    void setRelayOn(bool on);
    [[nodiscard]] bool IndicatorOn() const { return indicatorOn_; }
    void setIndicatorOn(bool on);
    /// While it blinks, the indicator changes at every firing of the timer; when it no longer does,
    /// it stays as it is.
    [[nodiscard]] bool IndicatorBlinking() const { return TimerBlink.Enabled(); }
    void setIndicatorBlinking(bool blinking) { TimerBlink.setEnabled(blinking); }

    PictureBox IndicatorPicture;
    Label RelayLabel;
    Timer TimerBlink{50};

  private:
    void updateIndicator();
    void updateRelay();

    bool relayOn_ = false;
    bool indicatorOn_ = false;
    Connection onBlink_;
};

} // namespace corvane
