#pragma once

#include "controls/Inputs.h"

namespace corvane {

/// A percentage that a slider and a box show together: a trip point, or a stick's position.
class TripPointControl final {
  public:
    TripPointControl();

    Event<> Change; ///< The person has changed the value; at every step.
    Event<> Commit; ///< The person has finished with it.

    [[nodiscard]] int Value() const { return TripPointSlider.Max() - TripPointSlider.Value(); }
    /// Limited to 0 to 100. Raises nothing.
    void setValue(int value);
    /// Shows a stick's position, not a trip point.
    [[nodiscard]] bool Simulating() const { return simulating_; }
    void setSimulating(bool simulating);
    /// What the view calls when the focus leaves the whole of it.
    void leave() const { Commit.raise(); }

    Frame TripPointFrame;
    Label TripPointLabel{"Trip Point:"};
    TextBox TripPointValue;
    Slider TripPointSlider{0, 100}; ///< Upside down: its top end means 100.

  private:
    bool simulating_ = false;
    Connections on_;
};

} // namespace corvane
