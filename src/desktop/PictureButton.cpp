#include "desktop/PictureButton.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"

#include <QPainter>
#include <QStyleOptionFocusRect>

namespace corvane {

namespace {
constexpr int Margin = 6; // pixels, room for the focus ring
}

PictureButton::PictureButton(Button& child, QString picture, QSize size,
                             const QString& accessibleName, QWidget* parent)
    : QAbstractButton(parent), picture_(std::move(picture)), size_(size) {
    setAccessibleName(accessibleName);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    Bind(this, child);
}

PictureButton* MakeLogo(Button& child, int width, QWidget* parent) {
    auto* logo = new PictureButton(child, "logo", QSize(width, width), "Maker's web site", parent);
    logo->setFocusPolicy(Qt::NoFocus);
    return logo;
}

QSize PictureButton::sizeHint() const {
    QSize hint = size_ + QSize(2 * Margin, 2 * Margin);
    if (!text().isEmpty()) {
        hint.rheight() += Margin + fontMetrics().height();
        hint.setWidth(std::max(hint.width(), fontMetrics().horizontalAdvance(text()) + 2 * Margin));
    }
    return hint;
}

void PictureButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPoint at((width() - size_.width()) / 2, Margin);
    painter.drawPixmap(at, Theme::picture(picture_, size_, devicePixelRatioF()));
    if (!text().isEmpty())
        painter.drawText(
            QRect(0, Margin + size_.height() + Margin, width(), fontMetrics().height()),
            Qt::AlignHCenter, text());
    if (hasFocus() || underMouse()) {
        QPen pen(palette().color(QPalette::Highlight), 2);
        pen.setStyle(hasFocus() ? Qt::SolidLine : Qt::DotLine);
        painter.setPen(pen);
        painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), 8, 8);
    }
}

} // namespace corvane
