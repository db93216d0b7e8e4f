#pragma once

#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QWheelEvent>
#include <QWidget>

namespace corvane {

/// A person's hands at a window. What they do comes in where the desktop delivers it, so that
/// focus, menus, shortcuts and who gets the pointer are the real ones. Places are pixels from the
/// corner of the widget that is named.
class Hands {
  public:
    explicit Hands(QWidget& window) : window_(window) {}

    void press(QWidget& on, QPoint at, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers held = {}) const {
        QTest::mousePress(handle(on), button, held, placeOf(on, at));
    }
    void moveTo(QWidget& on, QPoint at) const { QTest::mouseMove(handle(on), placeOf(on, at)); }
    void release(QWidget& on, QPoint at, Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers held = {}) const {
        QTest::mouseRelease(handle(on), button, held, placeOf(on, at));
    }
    void click(QWidget& on, QPoint at, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers held = {}) const {
        moveTo(on, at);
        const QPointer<QWidget> still(&on);
        press(on, at, button, held);
        if (still)
            release(on, at, button, held);
    }
    /// Presses and moves; the button stays down.
    void startDrag(QWidget& on, QPoint from, QPoint to) const {
        moveTo(on, from);
        press(on, from);
        for (int step = 1; step <= 3; ++step)
            moveTo(on, from + (to - from) * step / 3);
    }
    void drag(QWidget& on, QPoint from, QPoint to) const {
        startDrag(on, from, to);
        release(on, to);
    }
    /// A notch is 120.
    void turnWheel(QWidget& on, QPoint at, int angle, Qt::KeyboardModifiers held = {}) const {
        QWheelEvent turn(at, on.mapToGlobal(QPointF(at)), {}, QPoint(0, angle), {}, held,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(&on, &turn);
    }
    /// To whatever has the focus.
    void key(Qt::Key which, Qt::KeyboardModifiers held = {}) const {
        QTest::keyClick(focusWindow(), which, held);
    }
    void type(const char* text) const {
        for (; *text != '\0'; ++text)
            QTest::keyClick(focusWindow(), *text);
    }

  private:
    [[nodiscard]] static QWindow* handle(const QWidget& on) { return on.window()->windowHandle(); }
    [[nodiscard]] static QPoint placeOf(const QWidget& on, QPoint at) {
        return on.mapTo(on.window(), at);
    }
    [[nodiscard]] QWindow* focusWindow() const {
        QWindow* focus = QGuiApplication::focusWindow();
        return focus == nullptr ? window_.windowHandle() : focus;
    }

    QWidget& window_;
};

} // namespace corvane
