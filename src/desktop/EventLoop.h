#pragma once

#include "controls/Inputs.h"

#include <QApplication>

namespace corvane {

/// The desktop's event loop. A caller's fault is told in a message box and ends the operation, not
/// the program. Before a press anywhere counts what was typed elsewhere.
class DesktopApplication final : public QApplication {
  public:
    DesktopApplication(int& argc, char** argv);
    bool notify(QObject* receiver, QEvent* event) override;
};

/// The keyboard as it is now.
class QtKeyboard final : public KOKeyboard {
  public:
    [[nodiscard]] bool CtrlHeld() const override;
    [[nodiscard]] bool ShiftHeld() const override;
};

/// Lets windows repaint in the middle of a blocking operation, some times a second at most. What a
/// person does meanwhile is thrown away, and timers that are bound to a control's stand still.
void RepaintWithoutInput();
/// Throws away what a person has done and nothing has taken yet.
void ThrowInputAway();
[[nodiscard]] bool InsideRepaint();

} // namespace corvane
