#pragma once

#include <QObject>
#include <QPoint>

#include <functional>

class QMouseEvent;
class QWidget;

namespace corvane {

/// Drags with the left button on one widget, each from its press to the release of the button.
/// Escape, another button, and whatever takes the pointer or the focus away give a drag up, and
/// what follows until the button is released does nothing. As long as it lasts, keys and the wheel
/// do nothing else.
class PointerDrag final : public QObject {
  public:
    struct Acts {
        std::function<void(QPoint)> move; ///< Without it the widget moves by itself.
        std::function<void()> drop;
        std::function<void()> giveUp; ///< Puts everything back.
    };
    /// Lives with the widget.
    PointerDrag(QWidget* widget, Acts acts);

    /// The left button has been pressed on something that can be dragged.
    void begin() { state_ = State::Running; }
    [[nodiscard]] bool running() const { return state_ == State::Running; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    enum class State { Idle, Running, GivenUp };

    [[nodiscard]] bool moved(const QMouseEvent& move);
    void giveUp();
    [[nodiscard]] bool isOwn() const { return acts_.move != nullptr; }

    State state_ = State::Idle;
    Acts acts_;
};

} // namespace corvane
