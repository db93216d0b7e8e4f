#include "controls/TripPointControl.h"

#include "base/Numbers.h"

namespace corvane {

TripPointControl::TripPointControl() {
    setValue(0);
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
}

} // namespace corvane
