#pragma once

#include "pwm/QuillonControl.h"

#include <QWidget>

namespace corvane {

/// The PWM editor's screen.
class QuillonView final : public QWidget {
  public:
    QuillonView(QuillonControl& control, QWidget* parent);

  private:
    [[nodiscard]] QWidget* makeSlot(QuillonSlot& slot);
};

} // namespace corvane
