#include "desktop/PointerDrag.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

#include <utility>

namespace corvane {

PointerDrag::PointerDrag(QWidget* widget, Acts acts) : QObject(widget), acts_(std::move(acts)) {
    widget->installEventFilter(this);
}

bool PointerDrag::eventFilter(QObject*, QEvent* event) {
    if (state_ == State::Idle)
        return false;
    const bool running = state_ == State::Running;
    switch (event->type()) {
    case QEvent::MouseMove:
        return moved(dynamic_cast<QMouseEvent&>(*event));
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        giveUp();
        if (dynamic_cast<QMouseEvent&>(*event).button() != Qt::LeftButton)
            return true;
        state_ = State::Idle;
        return false;
    case QEvent::MouseButtonRelease:
        if (dynamic_cast<QMouseEvent&>(*event).button() != Qt::LeftButton)
            return true;
        state_ = State::Idle;
        if (running)
            acts_.drop();
        return isOwn();
    case QEvent::ContextMenu:
    case QEvent::Wheel:
        return true;
    case QEvent::KeyPress:
        if (dynamic_cast<QKeyEvent&>(*event).key() == Qt::Key_Escape)
            giveUp();
        return running;
    case QEvent::ShortcutOverride:
        if (running)
            event->accept(); // no command in the middle of a drag
        return running;
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowDeactivate:
        giveUp();
        return false;
    default:
        return false;
    }
}

bool PointerDrag::moved(const QMouseEvent& move) {
    if (!move.buttons().testFlag(Qt::LeftButton)) {
        giveUp(); // the release went elsewhere
        state_ = State::Idle;
        return false;
    }
    if (state_ == State::GivenUp)
        return true;
    if (isOwn())
        acts_.move(move.pos());
    return isOwn();
}

/// Once.
void PointerDrag::giveUp() {
    if (std::exchange(state_, State::GivenUp) == State::Running)
        acts_.giveUp();
}

} // namespace corvane
