#pragma once

#include <QApplication>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QWidget>
#include <gtest/gtest.h>

#include <stdexcept>

namespace corvane {

/// A person's hands at a window. What they do comes in where the desktop delivers it, so that
/// focus, menus, shortcuts and who gets the pointer are the real ones. Places are pixels from the
/// corner of the widget that is named.
class Hands {
  public:
    static void press(QWidget& on, QPoint at, Qt::MouseButton button = Qt::LeftButton,
                      Qt::KeyboardModifiers held = {}) {
        // The menu of a scroll bar holds up whoever opens it: it is left at once.
        QTimer leaving;
        QObject::connect(&leaving, &QTimer::timeout, [] {
            QWidget* menu = QApplication::activePopupWidget();
            if (menu != nullptr && qobject_cast<QScrollBar*>(menu->parentWidget()) != nullptr)
                menu->close();
        });
        if (button == Qt::RightButton)
            leaving.start(0);
        QTest::mousePress(handle(on), button, held, placeOf(on, at));
    }
    static void moveTo(QWidget& on, QPoint at) { QTest::mouseMove(handle(on), placeOf(on, at)); }
    static void release(QWidget& on, QPoint at, Qt::MouseButton button = Qt::LeftButton,
                        Qt::KeyboardModifiers held = {}) {
        QTest::mouseRelease(handle(on), button, held, placeOf(on, at));
    }
    static void click(QWidget& on, QPoint at, Qt::MouseButton button = Qt::LeftButton,
                      Qt::KeyboardModifiers held = {}) {
        moveTo(on, at);
        const QPointer<QWidget> still(&on);
        press(on, at, button, held);
        if (still)
            release(on, at, button, held);
    }
    /// Presses and moves; the button stays down.
    static void startDrag(QWidget& on, QPoint from, QPoint to) {
        moveTo(on, from);
        press(on, from);
        for (int step = 1; step <= 3; ++step)
            moveTo(on, from + (to - from) * step / 3);
    }
    static void drag(QWidget& on, QPoint from, QPoint to) {
        startDrag(on, from, to);
        release(on, to);
    }
    /// A notch is 120.
    static void turnWheel(QWidget& on, QPoint at, int angle, Qt::KeyboardModifiers held = {}) {
        QWheelEvent turn(at, on.mapToGlobal(QPointF(at)), {}, QPoint(0, angle), {}, held,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(&on, &turn);
    }
    /// To whatever has the focus.
    static void key(Qt::Key which, Qt::KeyboardModifiers held = {}) {
        QTest::keyClick(focusWindow(), which, held);
    }
    static void type(const char* text) {
        for (; *text != '\0'; ++text)
            QTest::keyClick(focusWindow(), *text);
    }
    /// Drops a file that comes from another program.
    static void drop(QWidget& on, QPoint at, const std::string& file) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(file))});
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&on, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&on, &event);
        QApplication::processEvents();
    }
    static void click(QWidget& on) { click(on, on.rect().center()); }
    static void clickTab(QTabBar& bar, int index) { click(bar, bar.tabRect(index).center()); }
    /// Puts other text into a box, and stays in it.
    static void retype(QWidget& box, const char* text) {
        click(box);
        key(Qt::Key_A, Qt::ControlModifier);
        type(text);
    }
    /// Goes through menus by their captions to an entry and chooses it, with the mouse or with the
    /// keyboard alone. False if the way ends before.
    static bool choose(QMenuBar& bar, const QStringList& path, bool byMouse = true) {
        QWidget* menu = &bar;
        for (const QString& caption : path) {
            QAction* action = entryOf(*menu, caption);
            // A menu in a menu opens a little later.
            if (action == nullptr || !QTest::qWaitFor([menu] { return menu->isVisible(); }))
                return false;
            QMenu* below = action->menu(); // what is chosen may be gone from its menu at once
            auto* popup = qobject_cast<QMenu*>(menu);
            if (byMouse) {
                click(*menu, (popup == nullptr ? bar.actionGeometry(action)
                                               : popup->actionGeometry(action))
                                 .center());
            } else if (popup == nullptr) {
                key(QKeySequence::mnemonic(action->text())[0].key(), Qt::AltModifier);
            } else {
                for (auto steps = popup->actions().size();
                     popup->activeAction() != action && steps-- > 0;)
                    key(Qt::Key_Down);
                if (popup->activeAction() != action)
                    return false;
                key(below == nullptr ? Qt::Key_Return : Qt::Key_Right);
            }
            if (below != nullptr)
                menu = below;
        }
        return true;
    }
    /// Nothing if there is none.
    [[nodiscard]] static QAction* entryOf(const QWidget& menu, const QString& caption) {
        for (QAction* action : menu.actions())
            if (action->text() == caption)
                return action;
        return nullptr;
    }
    static void closeMenus() {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

  private:
    [[nodiscard]] static QWindow* handle(const QWidget& on) { return on.window()->windowHandle(); }
    [[nodiscard]] static QPoint placeOf(const QWidget& on, QPoint at) {
        return on.mapTo(on.window(), at);
    }
    [[nodiscard]] static QWindow* focusWindow() {
        if (QWindow* focus = QGuiApplication::focusWindow())
            return focus;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible())
                return window->windowHandle();
        throw std::runtime_error("there is no window");
    }
};

} // namespace corvane
