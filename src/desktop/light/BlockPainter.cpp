#include "desktop/light/BlockPainter.h"

#include "desktop/Theme.h"
#include "light/LumoraTrack.h"

#include <QImage>
#include <QPainter>

namespace corvane {

namespace {

constexpr int GradientRows = 64;
constexpr float DrawnTripLevel = 0.5F;

QColor toQt(const KORgbValue& color) {
    return {color.R, color.G, color.B};
}

QColor colorAt(const BlockLook& look, float t) {
    return toQt(SegmentColorAt(*look.element, look.element->track().LightColor(), look.level1,
                               look.level2, t));
}

QColor readableOn(const QColor& ground) {
    return Theme::contrast(ground, Qt::white) >= Theme::contrast(ground, Qt::black) ? Qt::white
                                                                                    : Qt::black;
}

} // namespace

void BlockPainter::draw(const BlockGeometry& geometry, const BlockLook& look) {
    drawLight(geometry, look);
    if (!geometry.handle.isEmpty())
        drawHandle(geometry);
    if (!geometry.panel.isEmpty())
        drawPanel(geometry, look);
    if (!geometry.boxes)
        drawValues(geometry, look);
    // A thin frame, so that neighbours of one colour can be told apart on any light.
    painter_.setPen(QColor(128, 128, 128));
    painter_.setBrush(Qt::NoBrush);
    if (geometry.block.width() > 2)
        painter_.drawRect(geometry.block.adjusted(0, 0, -1, -1));
    if (look.marked) {
        const QColor mark(255, 196, 0);
        painter_.setPen(QPen(Qt::black, 5));
        painter_.drawRect(geometry.block.adjusted(3, 3, -4, -4));
        painter_.setPen(QPen(mark, 3));
        painter_.drawRect(geometry.block.adjusted(3, 3, -4, -4));
    }
    if (look.focused) {
        painter_.setPen(QPen(Qt::white, 1));
        painter_.drawRect(geometry.block.adjusted(6, 6, -7, -7));
        painter_.setPen(QPen(Qt::black, 1, Qt::DotLine));
        painter_.drawRect(geometry.block.adjusted(6, 6, -7, -7));
    }
}

void BlockPainter::drawLight(const BlockGeometry& geometry, const BlockLook& look) {
    if (look.element->functionCode().empty()) {
        painter_.fillRect(geometry.block, colorAt(look, 0));
        return;
    }
    QImage rows(1, GradientRows, QImage::Format_RGB32);
    for (int row = 0; row < GradientRows; ++row) {
        const float t = static_cast<float>(row) / (GradientRows - 1);
        rows.setPixelColor(0, row,
                           colorAt(look, 1 - look.element->EvaluateFunction(t, DrawnTripLevel)));
    }
    painter_.drawImage(geometry.block, rows);
}

void BlockPainter::drawValues(const BlockGeometry& geometry, const BlockLook& look) {
    const QRect room = geometry.block.adjusted(4, 3, -4 - geometry.handle.width(), -3);
    QFont small = font_;
    small.setPixelSize(10);
    const QFontMetrics metrics(small);
    painter_.setFont(small);
    // In a low track the gradient reaches up to where the values stand.
    const bool crowded =
        !geometry.panel.isEmpty() && geometry.panel.top() < room.top() + metrics.height();
    const int widest = crowded ? geometry.panel.left() - room.left() : room.width();
    const auto draw = [&](Qt::Alignment side, const QString& text, float t) {
        if (metrics.horizontalAdvance(text) > widest)
            return;
        painter_.setPen(readableOn(colorAt(look, t)));
        painter_.drawText(room, side | Qt::AlignLeft, text);
    };
    const bool gradient = !look.element->functionCode().empty();
    draw(Qt::AlignTop, look.brightness + "%", 0);
    if (room.height() > 2 * metrics.height())
        draw(Qt::AlignBottom, look.time + " s", gradient ? 1 : 0);
}

void BlockPainter::drawHandle(const BlockGeometry& geometry) {
    const QRect& rect = geometry.handle;
    painter_.fillRect(rect, QColor(72, 72, 76));
    painter_.setPen(QColor(200, 200, 205));
    const int middle = rect.center().y();
    for (const int dx : {3, 5})
        painter_.drawLine(rect.left() + dx, middle - 8, rect.left() + dx, middle + 8);
}

void BlockPainter::drawPanel(const BlockGeometry& geometry, const BlockLook& look) {
    painter_.setRenderHint(QPainter::Antialiasing);
    painter_.setPen(QColor(128, 128, 128));
    painter_.setBrush(palette_.color(QPalette::Window));
    painter_.drawRoundedRect(QRectF(geometry.panel).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter_.setRenderHint(QPainter::Antialiasing, false);
    drawGradientControl(geometry.gradient, look);
    if (!geometry.boxes)
        return;
    const bool second = !geometry.brightness2.isEmpty();
    drawField(geometry.brightness, geometry.gradient, second ? "Brightness1" : "Brightness",
              look.brightness);
    if (second)
        drawField(geometry.brightness2, geometry.gradient, "Brightness2", look.brightness2);
    drawField(geometry.time, geometry.gradient, "Time (s)", look.time);
    if (!geometry.function.isEmpty()) {
        QFont small = font_;
        small.setPixelSize(9);
        small.setBold(true);
        painter_.setFont(small);
        painter_.setPen(palette_.color(QPalette::WindowText));
        const std::string_view label = FunctionLabel(look.element->functionCode());
        painter_.drawText(geometry.function, Qt::AlignCenter,
                          QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size())));
    }
}

void BlockPainter::drawGradientControl(const QRect& rect, const BlockLook& look) {
    const QColor light = Theme::fromRgb(look.element->track().LightColor());
    if (look.element->Binary()) {
        painter_.fillRect(QRect(rect.topLeft(), QSize(rect.width(), rect.height() / 2)), light);
        painter_.fillRect(rect.adjusted(0, rect.height() / 2, 0, 0), Qt::black);
    } else {
        QLinearGradient fade(rect.topLeft(), rect.bottomLeft());
        fade.setColorAt(0, light);
        fade.setColorAt(1, Qt::black);
        painter_.fillRect(rect, fade);
    }
    painter_.setPen(QColor(128, 128, 128));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawRect(rect.adjusted(0, 0, -1, -1));
    // The mark at the present level.
    const int y = rect.top() + (100 - look.level1) * (rect.height() - 1) / 100;
    painter_.setPen(QPen(Qt::black, 3));
    painter_.drawLine(rect.left() - 1, y, rect.right() + 1, y);
    painter_.setPen(QPen(QColor(255, 196, 0), 1));
    painter_.drawLine(rect.left() - 1, y, rect.right() + 1, y);
}

void BlockPainter::drawField(const QRect& rect, const QRect& gradient, const QString& label,
                             const QString& text) {
    QFont small = font_;
    small.setPixelSize(10);
    painter_.setFont(small);
    painter_.setPen(palette_.color(QPalette::WindowText));
    painter_.drawText(
        QRect(gradient.right() + 4, rect.top(), rect.left() - gradient.right() - 6, rect.height()),
        Qt::AlignVCenter | Qt::AlignLeft, label);
    painter_.fillRect(rect, palette_.color(QPalette::Base));
    painter_.setPen(QColor(128, 128, 128));
    painter_.drawRect(rect.adjusted(0, 0, -1, -1));
    small.setPixelSize(12);
    painter_.setFont(small);
    painter_.setPen(palette_.color(QPalette::Text));
    painter_.drawText(rect.adjusted(3, 0, -4, 0), Qt::AlignVCenter | Qt::AlignRight, text);
}

} // namespace corvane
