#include "desktop/AboutWindow.h"

#include "desktop/Binders.h"
#include "desktop/PictureButton.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvane {

HyperlinkLabel::HyperlinkLabel(HyperlinkControl& control, QWidget* parent)
    : QLabel(parent), control_(control) {
    setText(QString::fromStdString(control.Caption()));
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setMouseTracking(true);
    setAccessibleName("Web site " + text());
    BindWidget(this, control);
    Follow(this, control, [this] { update(); });
    Bind(this, control.HighlightTimerHack);
    On(this, control.PointerLookedFor,
       [this](bool& over) { over = rect().contains(mapFromGlobal(QCursor::pos())); });
}

void HyperlinkLabel::mouseMoveEvent(QMouseEvent*) {
    control_.mouseMoved();
}

void HyperlinkLabel::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        control_.mousePressed();
}

void HyperlinkLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        control_.mouseReleased(rect().contains(event->pos()));
}

void HyperlinkLabel::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
        event->key() == Qt::Key_Space)
        control_.open();
    else
        QLabel::keyPressEvent(event);
}

void HyperlinkLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(Theme::textColor(palette(), control_.ForeColor()));
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (hasFocus())
        painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), 3, 3);
}

AboutWindow::AboutWindow(AboutForm& form, QWidget* parent) : QDialog(parent), form_(form) {
    setWindowTitle(QString::fromStdString(form.Title()));
    auto* logo = MakeLogo(form.Logo, 96, this);
    auto* product = new QLabel(ProgramName, this);
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    large.setBold(true);
    product->setFont(large);
    auto* version = new QLabel(this);
    Bind(version, form.VersionLabel);
    QLabel* news = MakeLabel(form.NewsLabel, this);
    news->setWordWrap(true);
    news->setAlignment(Qt::AlignCenter);
    auto* site = new HyperlinkLabel(form.Site, this);
    auto* ok = new QPushButton(this);
    Bind(ok, form.OKButton);
    ok->setDefault(true);
    ok->setFocus();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4 * Theme::Spacing, 3 * Theme::Spacing, 4 * Theme::Spacing,
                               3 * Theme::Spacing);
    layout->setSpacing(Theme::Spacing);
    layout->addWidget(logo, 0, Qt::AlignHCenter);
    for (QLabel* label : {product, version, news, static_cast<QLabel*>(site)})
        layout->addWidget(label, 0, Qt::AlignHCenter);
    layout->addSpacing(Theme::Spacing);
    layout->addWidget(ok, 0, Qt::AlignHCenter);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void AboutWindow::done(int result) {
    QDialog::done(result);
    form_.close();
}

} // namespace corvane
