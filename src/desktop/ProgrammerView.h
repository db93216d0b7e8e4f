#pragma once

#include "shell/ProgrammerControl.h"

#include <QWidget>

namespace corvane {

/// The programmer's screen.
class ProgrammerView final : public QWidget {
  public:
    ProgrammerView(ProgrammerControl& control, QWidget* parent);
};

} // namespace corvane
