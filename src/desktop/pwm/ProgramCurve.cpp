#include "desktop/pwm/ProgramCurve.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"

#include <QPainter>

#include <algorithm>

namespace corvane {

ProgramCurve::ProgramCurve(QuillonProgram& program, QWidget* parent)
    : QWidget(parent), program_(program) {
    setMinimumSize(80, 28);
    setAccessibleName("Values of the program over time");
    setToolTip("The program's values from 0 to 255 over time");
    On(this, program.Changed, [this] { update(); });
}

int ProgramCurve::top(int value) const {
    constexpr int margin = 3;
    constexpr int highest = 255;
    return margin + (height() - 2 * margin - 1) * (highest - value) / highest;
}

void ProgramCurve::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const auto blocks = program_.blocks().bytes();
    if (blocks.empty()) {
        painter.setPen(Theme::hintColor(palette(), QPalette::Base));
        painter.drawText(rect(), Qt::AlignCenter, "No program");
        return;
    }
    // A column shows all values that fall into it, and joins the one before.
    painter.setPen(palette().color(QPalette::Highlight));
    const auto columns = static_cast<std::size_t>(std::max(1, width() - 2));
    int previous = blocks[0];
    for (std::size_t column = 0; column < columns; ++column) {
        const std::size_t first = column * blocks.size() / columns;
        const std::size_t end = std::max(first + 1, (column + 1) * blocks.size() / columns);
        const auto [low, high] = std::minmax_element(
            blocks.begin() + static_cast<std::ptrdiff_t>(first),
            blocks.begin() + static_cast<std::ptrdiff_t>(std::min(end, blocks.size())));
        const int x = static_cast<int>(column) + 1;
        painter.drawLine(x, top(std::max<int>(*high, previous)), x,
                         top(std::min<int>(*low, previous)));
        previous = blocks[std::min(end, blocks.size()) - 1];
    }
}

} // namespace corvane
