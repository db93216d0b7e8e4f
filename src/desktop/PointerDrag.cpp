#include "desktop/PointerDrag.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

namespace corvane {

PointerDrag::PointerDrag(QWidget* widget, Acts acts) : QObject(widget), acts_(std::move(acts)) {
    widget->installEventFilter(this);
}

bool PointerDrag::eventFilter(QObject*, QEvent* event) {
    switch (state_) {
    case State::Running:
        return whileRunning(*event);
    case State::GivenUp:
        return whileGivenUp(*event);
    case State::Idle:
        break;
    }
    return false;
}

bool PointerDrag::whileRunning(QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseMove: {
        const auto& move = dynamic_cast<QMouseEvent&>(event);
        if (!move.buttons().testFlag(Qt::LeftButton)) {
            giveUp(); // the release went elsewhere
            state_ = State::Idle;
            return false;
        }
        if (isOwn())
            acts_.move(move.pos());
        return isOwn();
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        giveUp();
        if (dynamic_cast<QMouseEvent&>(event).button() != Qt::LeftButton)
            return true;
        state_ = State::Idle;
        return false;
    case QEvent::MouseButtonRelease:
        if (dynamic_cast<QMouseEvent&>(event).button() != Qt::LeftButton)
            return true;
        state_ = State::Idle;
        acts_.drop();
        return isOwn();
    case QEvent::KeyPress:
        if (dynamic_cast<QKeyEvent&>(event).key() == Qt::Key_Escape)
            giveUp();
        return true;
    case QEvent::ShortcutOverride:
        event.accept(); // no command in the middle of a drag
        return true;
    case QEvent::ContextMenu:
    case QEvent::Wheel:
        return true;
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowDeactivate:
        giveUp();
        return false;
    default:
        return false;
    }
}

bool PointerDrag::whileGivenUp(QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseMove:
        if (dynamic_cast<QMouseEvent&>(event).buttons().testFlag(Qt::LeftButton))
            return true;
        state_ = State::Idle;
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (dynamic_cast<QMouseEvent&>(event).button() != Qt::LeftButton)
            return true;
        state_ = State::Idle;
        return false;
    case QEvent::MouseButtonRelease:
        if (dynamic_cast<QMouseEvent&>(event).button() != Qt::LeftButton)
            return true;
        state_ = State::Idle;
        return isOwn();
    case QEvent::ContextMenu:
    case QEvent::Wheel:
        return true;
    default:
        return false;
    }
}

void PointerDrag::giveUp() {
    state_ = State::GivenUp;
    acts_.giveUp();
}

} // namespace corvane
