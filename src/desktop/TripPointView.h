#pragma once

#include "controls/TripPointControl.h"

#include <QWidget>

namespace corvane {

/// A percentage as a vertical slider with a box below it.
class TripPointView final : public QWidget {
  public:
    TripPointView(TripPointControl& control, QWidget* parent);
};

} // namespace corvane
