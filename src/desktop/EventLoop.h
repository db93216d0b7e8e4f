#pragma once

#include "controls/Inputs.h"

#include <QApplication>

#include <functional>
#include <utility>

namespace corvane {

/// The desktop's event loop. A caller's fault is told in a message box and ends the operation, not
/// the program. Before a press anywhere counts what was typed elsewhere.
class DesktopApplication final : public QApplication {
  public:
    DesktopApplication(int& argc, char** argv);
    bool notify(QObject* receiver, QEvent* event) override;

  private:
    bool deliver(QObject* receiver, QEvent* event);
};

/// Runs a function before and after all that happens in the window's thread, and so before anything
/// is painted, as long as it lives. Those that live at a time end in the opposite order.
class BetweenEvents {
  public:
    explicit BetweenEvents(std::function<void()> run)
        : run_(std::move(run)), outer_(std::exchange(innermost, this)) {}
    ~BetweenEvents() { innermost = outer_; }
    BetweenEvents(const BetweenEvents&) = delete;
    BetweenEvents& operator=(const BetweenEvents&) = delete;

    static void runAll() {
        for (const BetweenEvents* each = innermost; each != nullptr; each = each->outer_)
            each->run_();
    }

  private:
    static inline const BetweenEvents* innermost = nullptr;

    std::function<void()> run_;
    const BetweenEvents* outer_;
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
