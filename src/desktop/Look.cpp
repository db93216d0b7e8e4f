#include "desktop/Look.h"

#include "desktop/Theme.h"

#include <QStyleOption>

namespace corvane {

namespace {

/// The style takes a frame's colour from the window's by darkening it, so this is a window colour
/// that gives a frame with three times the ground's luminance, or a third of it.
void frame(QPalette& palette) {
    palette.setColor(QPalette::Window,
                     Theme::isDark(palette) ? QColor(190, 190, 190) : QColor(175, 175, 175));
}

} // namespace

void Look::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                         const QWidget* widget) const {
    const bool marked = element == PE_IndicatorCheckBox || element == PE_IndicatorRadioButton;
    if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        button != nullptr && marked) {
        QStyleOptionButton framed(*button);
        frame(framed.palette);
        QProxyStyle::drawPrimitive(element, &framed, painter, widget);
    } else if (const auto* box = qstyleoption_cast<const QStyleOptionFrame*>(option);
               box != nullptr && element == PE_FrameLineEdit) {
        QStyleOptionFrame framed(*box);
        frame(framed.palette);
        QProxyStyle::drawPrimitive(element, &framed, painter, widget);
    } else {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void Look::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                              QPainter* painter, const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (slider == nullptr || control != CC_Slider)
        return QProxyStyle::drawComplexControl(control, option, painter, widget);
    QStyleOptionSlider framed(*slider);
    frame(framed.palette);
    QProxyStyle::drawComplexControl(control, &framed, painter, widget);
}

} // namespace corvane
