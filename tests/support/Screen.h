#pragma once

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace corvane {

/// The palette of a dark desktop.
[[nodiscard]] inline QPalette darkPalette() {
    QPalette palette(QColor(49, 54, 59), QColor(42, 46, 50));
    palette.setColor(QPalette::Base, QColor(35, 38, 41));
    palette.setColor(QPalette::ToolTipBase, QColor(49, 54, 59));
    palette.setColor(QPalette::ToolTipText, QColor(239, 240, 241));
    palette.setColor(QPalette::Highlight, QColor(61, 174, 233));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, QColor(239, 240, 241));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(130, 135, 140));
    return palette;
}

/// Keeps pictures of what a test shows, in the folder CORVANE_SCREENSHOTS if that is set: in the
/// light and the dark palette.
inline void shoot(QWidget& widget, const QString& name) {
    const QString folder = qEnvironmentVariable("CORVANE_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    const QPalette light = QApplication::palette();
    widget.grab().save(folder + "/" + name + "-light.png");
    QApplication::setPalette(darkPalette());
    QApplication::processEvents();
    widget.grab().save(folder + "/" + name + "-dark.png");
    QApplication::setPalette(light);
    QApplication::processEvents();
}

/// Acts on the next dialog that stops everything, once it shows.
template<class Dialog>
void whenShown(std::function<void(Dialog&)> act) {
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act = std::move(act)] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        act(*dialog);
    });
    timer->start(5);
}

} // namespace corvane
