#include "desktop/Accessibility.h"

#include <QAccessibleWidget>
#include <QWidget>

namespace corvane {

namespace {

constexpr const char* CanvasMark = "isCanvas";

QAccessibleInterface* canvas(const QString&, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr || !widget->property(CanvasMark).toBool())
        return nullptr;
    return new QAccessibleWidget(widget, QAccessible::Canvas);
}

} // namespace

void TellAsCanvas(QWidget* widget) {
    static const bool installed = [] {
        QAccessible::installFactory(canvas);
        return true;
    }();
    static_cast<void>(installed);
    widget->setProperty(CanvasMark, true);
}

} // namespace corvane
