#include "desktop/light/BlockPainter.h"

#include "desktop/Theme.h"
#include "desktop/light/Colors.h"
#include "light/LumoraTrack.h"

#include <QImage>
#include <QPainter>

#include <algorithm>

namespace corvane {

namespace {

constexpr int GradientRows = 64;
constexpr float DrawnTripLevel = 0.5F;

QColor colorAt(const BlockLook& look, float t) {
    return toQt(SegmentColorAt(*look.element, look.lightColor, look.level1, look.level2, t));
}

} // namespace

void BlockPainter::draw(const BlockGeometry& geometry, const BlockLook& look) {
    painter_.save();
    painter_.setClipRect(geometry.block, Qt::IntersectClip); // nothing stands over a neighbour
    drawLight(geometry, look);
    if (!geometry.handle.isEmpty())
        drawHandle(geometry);
    if (!geometry.panel.isEmpty())
        drawPanel(geometry, look);
    // A thin frame, so that neighbours of one colour can be told apart on any light.
    painter_.setPen(QColor(128, 128, 128));
    painter_.setBrush(Qt::NoBrush);
    if (geometry.block.width() > 2)
        painter_.drawRect(geometry.block.adjusted(0, 0, -1, -1));
    if (look.marked)
        drawFrame(geometry, 3, {QPen(Qt::black, 5), QPen(QColor(255, 196, 0), 3)});
    if (look.focused)
        drawFrame(geometry, 6, {QPen(Qt::white, 1), QPen(Qt::black, 1, Qt::DotLine)});
    if (!geometry.boxes)
        drawValues(geometry, look);
    painter_.restore();
}

void BlockPainter::drawFrame(const BlockGeometry& geometry, int inset,
                             std::initializer_list<QPen> pens) {
    // In a narrow block it moves out to the edges.
    const int side = std::clamp(geometry.block.width() / 2 - 3, 0, inset);
    for (const QPen& pen : pens) {
        painter_.setPen(pen);
        painter_.drawRect(geometry.block.adjusted(side, inset, -side - 1, -inset - 1));
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
    QFont small = font_;
    small.setPixelSize(10);
    const QFontMetrics metrics(small);
    painter_.setFont(small);
    const QRect room = geometry.block.adjusted(1, 3, -1 - geometry.handle.width(), -3);
    // In a low track the gradient reaches up to where the values stand.
    const bool crowded =
        !geometry.panel.isEmpty() && geometry.panel.top() < room.top() + metrics.height();
    const int widest = crowded ? geometry.panel.left() - room.left() : room.width();
    // On a plate of their own, so that they can be read on any light and over any frame. Where
    // there is little room the unit is left out.
    const auto draw = [&](bool atTop, const QString& number, const QString& unit) {
        constexpr int beside = 2;
        QString text = number + unit;
        if (metrics.horizontalAdvance(text) + 2 * beside > widest)
            text = number;
        const int width = metrics.horizontalAdvance(text) + 2 * beside;
        if (width > widest)
            return;
        const int left = room.left() + std::min(7, widest - width);
        const QRect plate(left, atTop ? room.top() + 4 : room.bottom() - 3 - metrics.height(),
                          width, metrics.height());
        painter_.fillRect(plate, QColor(24, 24, 26));
        painter_.setPen(Qt::white);
        painter_.drawText(plate, Qt::AlignCenter, text);
    };
    draw(true, look.brightness, "%");
    if (room.height() > 2 * metrics.height() + 8)
        draw(false, look.time, " s");
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
        const std::string_view code = FunctionLabel(look.element->functionCode());
        const QString label = QString::fromUtf8(code.data(), static_cast<qsizetype>(code.size()));
        painter_.setFont(fitting(label, geometry.function.width()));
        painter_.setPen(palette_.color(QPalette::WindowText));
        painter_.drawText(geometry.function, Qt::AlignCenter, label);
    }
}

/// Bold and small, and as much narrower as the text needs to fit.
QFont BlockPainter::fitting(const QString& text, int width) const {
    QFont font = font_;
    font.setPixelSize(9);
    font.setBold(true);
    for (int stretch = 100; stretch > 60 && QFontMetrics(font).horizontalAdvance(text) > width;
         stretch -= 5)
        font.setStretch(stretch - 5);
    return font;
}

void BlockPainter::drawGradientControl(const QRect& rect, const BlockLook& look) {
    const QColor light = Theme::fromRgb(look.lightColor);
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
