#pragma once

#include <QProxyStyle>

namespace corvane {

/// The look of all windows, whatever desktop they are on: that of the toolkit, in the desktop's
/// colours, with frames that stand out from the ground in light colours as in dark ones.
class Look final : public QProxyStyle {
  public:
    Look() : QProxyStyle("Fusion") {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
};

} // namespace corvane
