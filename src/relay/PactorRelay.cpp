#include "relay/PactorRelay.h"

namespace corvane {

namespace {
constexpr int Green = 0x00FF00;
constexpr int Black = 0;
constexpr int White = 0xFFFFFF;
constexpr int Grey = 0x808080;
} // namespace

PactorRelay::PactorRelay() {
    updateIndicator();
    updateRelay();
    onBlink_ = TimerBlink.Fired.connect([this] { setIndicatorOn(!indicatorOn_); });
}

void PactorRelay::setRelayOn(bool on) {
    relayOn_ = on;
    updateRelay();
}

void PactorRelay::setIndicatorOn(bool on) {
    indicatorOn_ = on;
    updateIndicator();
}

void PactorRelay::updateIndicator() {
    IndicatorPicture.setBackColor(indicatorOn_ ? Green : Black);
    IndicatorPicture.setToolTipText(indicatorOn_ ? "The indicator is on" : "The indicator is off");
}

void PactorRelay::updateRelay() {
    RelayLabel.setCaption(relayOn_ ? "RELAY ON" : "RELAY OFF");
    RelayLabel.setBackColor(relayOn_ ? White : Grey);
}

} // namespace corvane
