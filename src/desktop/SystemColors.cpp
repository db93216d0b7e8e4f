#include "desktop/SystemColors.h"

#include "desktop/Theme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace corvane {

namespace {

void take(bool prefersDark) {
    static bool ours = false; // whether the palette in use was set here
    if (prefersDark && !Theme::isDark(QApplication::palette())) {
        QApplication::setPalette(Theme::darkPalette());
        ours = true;
    } else if (!prefersDark && ours) {
        QApplication::setPalette(QPalette()); // the desktop's own
        ours = false;
    }
}

void ask() {
    constexpr unsigned dark = 1;
    QDBusMessage question = QDBusMessage::createMethodCall(
        "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
        "org.freedesktop.portal.Settings", "Read");
    question << "org.freedesktop.appearance"
             << "color-scheme";
    auto* answer =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), qApp);
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [answer] {
        const QDBusPendingReply<QVariant> reply = *answer;
        if (reply.isValid()) {
            // Some desktops wrap the number once more than others.
            QVariant value = reply.value();
            while (value.canConvert<QDBusVariant>())
                value = value.value<QDBusVariant>().variant();
            take(value.toUInt() == dark);
        }
        answer->deleteLater();
    });
}

} // namespace

void FollowSystemColors() {
    if (!QDBusConnection::sessionBus().isConnected())
        return;
    ask();
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, qApp,
                     [](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive)
                             ask();
                     });
}

} // namespace corvane
