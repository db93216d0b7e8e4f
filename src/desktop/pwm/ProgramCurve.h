#pragma once

#include "pwm/QuillonProgram.h"

#include <QWidget>

namespace corvane {

/// Draws a PWM program over time. However many blocks come at once, it is drawn once.
class ProgramCurve final : public QWidget {
  public:
    ProgramCurve(QuillonProgram& program, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override { return {160, 56}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    [[nodiscard]] int top(int value) const;

    QuillonProgram& program_;
};

} // namespace corvane
