#pragma once

#include "desktop/Theme.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace corvane {

/// Keeps pictures of what a test shows, in the folder CORVANE_SCREENSHOTS if that is set: in the
/// light and the dark palette.
inline void shoot(QWidget& widget, const QString& name) {
    const QString folder = qEnvironmentVariable("CORVANE_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    const QPalette light = QApplication::palette();
    widget.grab().save(folder + "/" + name + "-light.png");
    QApplication::setPalette(Theme::darkPalette());
    QApplication::processEvents();
    widget.grab().save(folder + "/" + name + "-dark.png");
    QApplication::setPalette(light);
    QApplication::processEvents();
}

/// Acts on the next dialog of a kind that stops everything, once it shows; `before` arranges what
/// comes then.
template<class Dialog>
void whenShown(
    std::function<void(Dialog&)> act, std::function<void()> before = [] {}) {
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer,
                     [timer, act = std::move(act), before = std::move(before)] {
                         auto* dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
                         if (dialog == nullptr || !dialog->isVisible())
                             return;
                         timer->stop();
                         timer->deleteLater();
                         before();
                         act(*dialog);
                     });
    timer->start(5);
}

} // namespace corvane
