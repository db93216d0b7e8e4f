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
    connections_.push_back(TripPointSlider.Change.connect([this] {
        setValue(Value());
        Change.raise();
    }));
    connections_.push_back(TripPointValue.Change.connect([this] {
        setValue(ReadInteger(TripPointValue.Text()));
        Change.raise();
    }));
    connections_.push_back(TripPointSlider.Validate.connect([this] { Commit.raise(); }));
    connections_.push_back(TripPointValue.Validate.connect([this] {
        setValue(ReadInteger(TripPointValue.Text()));
        Commit.raise();
    }));
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
