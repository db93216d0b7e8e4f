#include "controls/TripPointControl.h"

#include "base/Numbers.h"

namespace corvane {

namespace {
constexpr const char* TripPointTip =
    "Position of the stick from which on the top track or slot is in force, 0 to 100 percent";
constexpr const char* StickTip = "Position of the stick to try, 0 to 100 percent";
} // namespace

TripPointControl::TripPointControl() {
    setValue(0);
    TripPointValue.setToolTipText(TripPointTip);
    on_(TripPointSlider.Change, [this] {
        setValue(Value());
        Change.raise();
    });
    on_(TripPointValue.Change, [this] {
        setValue(ReadInteger(TripPointValue.Text()));
        Change.raise();
    });
    on_(TripPointSlider.Validate, [this] { Commit.raise(); });
    on_(TripPointValue.Validate, [this] {
        setValue(ReadInteger(TripPointValue.Text()));
        Commit.raise();
    });
}

void TripPointControl::setValue(int value) {
    const int clamped = std::clamp(value, 0, 100);
    TripPointSlider.setValue(100 - clamped);
    TripPointSlider.setToolTipText(std::to_string(clamped) + "%");
    TripPointValue.setText(std::to_string(clamped));
}

void TripPointControl::setSimulating(bool simulating) {
    if (simulating == simulating_)
        return;
    simulating_ = simulating;
    TripPointLabel.setCaption(simulating ? "Stick At:" : "Trip Point:");
    TripPointValue.setToolTipText(simulating ? StickTip : TripPointTip);
}

} // namespace corvane
