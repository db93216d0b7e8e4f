#pragma once

#include "link/DefaultControl.h"

#include <QWidget>

namespace corvane {

/// The start screen.
class DefaultView final : public QWidget {
  public:
    DefaultView(DefaultControl& control, QWidget* parent);
};

} // namespace corvane
