#pragma once

#include "relay/PactorControl.h"

#include <QWidget>

namespace corvane {

/// The relay editor's screen.
class PactorView final : public QWidget {
  public:
    PactorView(PactorControl& control, QWidget* parent);

  private:
    [[nodiscard]] QWidget* makeSettings(PactorControl& control);
    [[nodiscard]] QWidget* makeSimulator(PactorControl& control);
};

} // namespace corvane
