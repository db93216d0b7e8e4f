#include "desktop/Theme.h"

#include "base/KORgbValue.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

namespace corvane::Theme {

namespace {

constexpr double ReadableContrast = 4.5;

double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// The colour on the way from `start` to `goal` that is the first to be read on a ground.
QColor readable(const QColor& start, const QColor& ground, const QColor& goal) {
    QColor color = start;
    for (int step = 0; step < 20 && contrast(color, ground) < ReadableContrast; ++step) {
        const double share = (step + 1) / 20.0;
        const auto mix = [share](int from, int to) {
            return from + static_cast<int>(share * (to - from));
        };
        color.setRgb(mix(start.red(), goal.red()), mix(start.green(), goal.green()),
                     mix(start.blue(), goal.blue()));
    }
    return color;
}

} // namespace

QPalette darkPalette() {
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

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

QColor fromRgb(int color) {
    return {color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF};
}

QColor readableOn(const QColor& ground) {
    return contrast(Qt::black, ground) >= contrast(Qt::white, ground) ? Qt::black : Qt::white;
}

QColor tinted(const QColor& ground, int color) {
    constexpr double share = 0.3;
    const KORgbValue blended = KORgbValue(ground.red(), ground.green(), ground.blue())
                                   .BlendWith(KORgbValue::FromColor(color), share);
    return {blended.R, blended.G, blended.B};
}

double contrast(const QColor& a, const QColor& b) {
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor textColor(const QPalette& palette, int color) {
    return readable(fromRgb(color), palette.color(QPalette::Window),
                    isDark(palette) ? Qt::white : Qt::black);
}

QColor hintColor(const QPalette& palette, QPalette::ColorRole ground) {
    const QColor start = palette.color(ground);
    return readable(start, start, palette.color(QPalette::WindowText));
}

QIcon programIcon() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(picture("logo", QSize(size, size), 1));
    return icon;
}

QPixmap picture(const QString& name, QSize size, qreal devicePixelRatio) {
    QPixmap pixmap(size * devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(":/pictures/" + name + ".svg");
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

} // namespace corvane::Theme
