#pragma once

#include <QColor>
#include <QPalette>

class QIcon;

namespace corvane {

/// The program's own colours, for a light or a dark desktop as the palette tells, and its pictures.
/// Colours given as numbers have red in the low byte.
namespace Theme {

inline constexpr int Spacing = 8; // pixels, between parts and round groups

/// Colours for a dark desktop.
[[nodiscard]] QPalette darkPalette();
[[nodiscard]] bool isDark(const QPalette& palette);
[[nodiscard]] QColor fromRgb(int color);
/// A colour of the core for text, brightened on a dark ground until it can be read.
[[nodiscard]] QColor textColor(const QPalette& palette, int color);
/// For words that say what is missing: paler than text on this ground, but readable.
[[nodiscard]] QColor hintColor(const QPalette& palette, QPalette::ColorRole ground);
/// Black or white, whichever can be read on this ground.
[[nodiscard]] QColor readableOn(const QColor& ground);
/// A ground with a touch of a colour of the core.
[[nodiscard]] QColor tinted(const QColor& ground, int color);
[[nodiscard]] double contrast(const QColor& a, const QColor& b);

[[nodiscard]] QIcon programIcon();
/// A drawn picture by its name, such as "logo", in this size of logical pixels.
[[nodiscard]] QPixmap picture(const QString& name, QSize size, qreal devicePixelRatio);

} // namespace Theme

} // namespace corvane
