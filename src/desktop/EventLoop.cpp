#include "desktop/EventLoop.h"

#include "base/Assert.h"
#include "desktop/InputWidgets.h"
#include "desktop/Look.h"

#include <QElapsedTimer>
#include <QMessageBox>
#include <QPointer>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <utility>

namespace corvane {

namespace {
constexpr qint64 RepaintInterval = 30; // ms
bool insideRepaint = false;

/// Whether an event is something that a person has done.
bool isInput(const QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return true;
    case QEvent::Close:
        return event.spontaneous();
    default:
        return false;
    }
}

/// Whether a person begins something outside of where they were typing.
bool isPressElsewhere(QObject* receiver, const QEvent& event) {
    if (event.type() != QEvent::MouseButtonPress && event.type() != QEvent::MouseButtonDblClick &&
        event.type() != QEvent::TouchBegin && event.type() != QEvent::TabletPress &&
        event.type() != QEvent::Drop)
        return false;
    auto* widget = qobject_cast<QWidget*>(receiver);
    const QWidget* typing = QApplication::focusWidget();
    if (widget == nullptr || (widget == typing && event.type() == QEvent::Drop))
        return false; // text that is dropped into the box itself
    for (const QWidget* at = widget; at != nullptr; at = at->parentWidget())
        if (at == typing)
            return false; // its own menu, say
    return true;
}

std::string programName;

/// Where there is no desktop the toolkit says so at length and aborts, which looks like a crash.
void hearWhileStarting(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        std::cerr << programName
                  << ": There is no desktop to show a window on. Start it within one.\n";
        std::_Exit(EXIT_FAILURE);
    }
    if (!QByteArrayView(context.category).startsWith("qt.qpa"))
        std::cerr << qFormatLogMessage(type, context, text).toStdString() << '\n';
}

int& afterHearing(int& argc, char** argv) {
    programName = argc > 0 ? std::filesystem::path(argv[0]).filename().string() : "corvane";
    qInstallMessageHandler(hearWhileStarting);
    return argc;
}
} // namespace

DesktopApplication::DesktopApplication(int& argc, char** argv)
    : QApplication(afterHearing(argc, argv), argv) {
    qInstallMessageHandler(nullptr);
    setStyle(new Look);
}

bool DesktopApplication::notify(QObject* receiver, QEvent* event) {
    if (receiver->thread() != thread())
        return deliver(receiver, event);
    BetweenEvents::runAll();
    const bool taken = deliver(receiver, event);
    BetweenEvents::runAll();
    return taken;
}

bool DesktopApplication::deliver(QObject* receiver, QEvent* event) {
    // A fault is told in a box, which can be answered at any time.
    if (insideRepaint && isInput(*event) && activeModalWidget() == nullptr) {
        const bool offered = event->type() == QEvent::Close || event->type() == QEvent::Drop ||
                             event->type() == QEvent::DragEnter ||
                             event->type() == QEvent::DragMove;
        event->setAccepted(!offered); // what is not taken tells whoever offers it
        return true;
    }
    try {
        if (const QPointer<QObject> kept = receiver; isPressElsewhere(receiver, *event)) {
            CommitFocusedBox();
            if (kept == nullptr)
                return true;
        }
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
    QCoreApplication::processEvents();
    insideRepaint = false;
    last.start();
}

void ThrowInputAway() {
    const bool before = std::exchange(insideRepaint, true);
    QCoreApplication::processEvents();
    insideRepaint = before;
}

bool InsideRepaint() {
    return insideRepaint;
}

} // namespace corvane
