#include "desktop/EventLoop.h"

#include "base/Assert.h"
#include "desktop/Look.h"

#include <QElapsedTimer>
#include <QMessageBox>

namespace corvane {

namespace {
constexpr qint64 RepaintInterval = 30; // ms
bool insideRepaint = false;
} // namespace

DesktopApplication::DesktopApplication(int& argc, char** argv) : QApplication(argc, argv) {
    setStyle(new Look);
}

bool DesktopApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const AssertionFailed& failure) {
        QMessageBox::critical(nullptr, "Corvane", failure.what());
        return true;
    }
}

bool QtKeyboard::CtrlHeld() const {
    return QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier);
}

bool QtKeyboard::ShiftHeld() const {
    return QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier);
}

void RepaintWithoutInput() {
    static QElapsedTimer last;
    if (insideRepaint || (last.isValid() && last.elapsed() < RepaintInterval))
        return;
    insideRepaint = true;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    insideRepaint = false;
    last.start();
}

bool InsideRepaint() {
    return insideRepaint;
}

} // namespace corvane
