#include "desktop/light/SimulatorView.h"

#include "desktop/Accessibility.h"
#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/light/Colors.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolTip>
#include <QVBoxLayout>

namespace corvane {

namespace {

QRect rectOf(const LumoraSimulatorControl::Patch& patch) {
    return {patch.left, patch.top, patch.width, patch.height};
}

/// The picture's own pixels as an image, valid as long as the picture.
QImage imageOf(const Picture& picture) {
    return {reinterpret_cast<const uchar*>(picture.pixels.data()), picture.width, picture.height,
            QImage::Format_ARGB32};
}

QString fileIn(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 ? urls.front().toLocalFile() : QString();
}

} // namespace

SimulatorCanvas::SimulatorCanvas(LumoraSimulatorControl& control, QWidget* parent)
    : QWidget(parent),
      control_(control),
      drag_(this, {.move = [this](QPoint point) { moveLight(point); },
                   .drop =
                       [this] {
                           unsetCursor();
                           control_.releaseLight(control_.draggedLight());
                       },
                   .giveUp =
                       [this] {
                           unsetCursor();
                           control_.cancelDrag();
                       }}) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent); // forty times a second; it paints all of it anyway
    setAcceptDrops(true);
    setMinimumSize(120, 80);
    TellAsCanvas(this);
    setAccessibleName("Picture of the model with its lights");
    const QColor face = palette().color(QPalette::Button);
    control.setButtonFace({face.red(), face.green(), face.blue()});
    on_(control.LightChanged, [this](int channel) { showLight(channel); });
    on_(control.CanvasChanged, [this] {
        background_ = control_.background().picture.empty()
                          ? QImage()
                          : imageOf(control_.background().picture).copy();
        update();
    });
    on_(control.MenuWanted, [this](int channel) { showMenu(channel); });
}

void SimulatorCanvas::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), toQt(control_.BackColor()));
    if (!background_.isNull())
        painter.drawImage(rectOf(control_.background()).topLeft(), background_);
    // All lenses before all lights, which shine over the lens of a neighbour too.
    painter.setCompositionMode(QPainter::CompositionMode_Darken);
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        const LumoraSimulatorControl::Patch& patch = control_.light(channel);
        if (!patch.lens.empty() && rectOf(patch).intersects(event->rect()))
            painter.drawImage(rectOf(patch).topLeft(), imageOf(patch.lens));
    }
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        const LumoraSimulatorControl::Patch& patch = control_.light(channel);
        const QRect rect = rectOf(patch);
        if (!rect.intersects(event->rect()))
            continue;
        if (patch.picture.empty()) {
            painter.fillRect(rect, toQt(patch.color));
            painter.setPen(QColor(128, 128, 128)); // a dark one can be found too
            painter.drawRect(rect.adjusted(0, 0, -1, -1));
        } else {
            // Light upon light: none of them hides another.
            painter.setCompositionMode(QPainter::CompositionMode_Lighten);
            painter.drawImage(rect.topLeft(), imageOf(patch.picture));
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void SimulatorCanvas::resizeEvent(QResizeEvent*) {
    control_.Resize(width(), height());
}

void SimulatorCanvas::mousePressEvent(QMouseEvent* event) {
    const int channel = control_.lightAt(event->pos().x(), event->pos().y());
    if (event->button() == Qt::RightButton) {
        control_.openMenu(channel);
    } else if (event->button() == Qt::LeftButton && channel != 0) {
        const QPoint inside = event->pos() - rectOf(control_.light(channel)).topLeft();
        control_.pressLight(channel, inside.x(), inside.y());
        drag_.begin();
        setCursor(Qt::ClosedHandCursor);
    }
}

void SimulatorCanvas::moveLight(QPoint point) {
    const int channel = control_.draggedLight();
    if (channel == 0)
        return;
    const QPoint inside = point - rectOf(control_.light(channel)).topLeft();
    control_.moveLight(channel, inside.x(), inside.y());
}

void SimulatorCanvas::showLight(int channel) {
    QRect& shown = shown_[static_cast<std::size_t>(channel) - 1];
    update(shown); // where it was, however large it was
    shown = rectOf(control_.light(channel));
    update(shown);
}

void SimulatorCanvas::dragEnterEvent(QDragEnterEvent* event) {
    if (!fileIn(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void SimulatorCanvas::dropEvent(QDropEvent* event) {
    event->acceptProposedAction();
    const QPoint at = event->position().toPoint();
    control_.takePicture(control_.lightAt(at.x(), at.y()),
                         fileIn(*event->mimeData()).toStdString());
}

bool SimulatorCanvas::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto& help = dynamic_cast<QHelpEvent&>(*event);
        const int channel = control_.lightAt(help.pos().x(), help.pos().y());
        if (channel == 0)
            QToolTip::hideText();
        else
            QToolTip::showText(help.globalPos(), QString("Channel %1").arg(channel), this,
                               rectOf(control_.light(channel)));
        return true;
    }
    return QWidget::event(event);
}

void SimulatorCanvas::showMenu(int channel) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    Bind(menu, control_.menuLayout(channel));
    // Below the button that was pressed, perhaps with a key; otherwise where the pointer is.
    const auto* pressed = qobject_cast<QAbstractButton*>(QApplication::focusWidget());
    const bool byButton = pressed != nullptr && parentWidget()->isAncestorOf(pressed);
    menu->popup(byButton ? pressed->mapToGlobal(pressed->rect().bottomLeft()) : QCursor::pos());
}

SimulatorView::SimulatorView(LumoraSimulatorControl& control, QWidget* parent)
    : QWidget(parent), canvas_(new SimulatorCanvas(control, this)) {
    Bind(this, control.UpdateTimer);
    auto* options = new QHBoxLayout;
    options->setSpacing(Theme::Spacing / 2);
    options->addWidget(new QLabel("Channels", this));
    int channel = 0;
    for (Button& child : control.LightChannelButton) {
        auto* button = new QPushButton(this);
        Bind(button, child);
        button->setFixedWidth(4 * Theme::Spacing);
        button->setAccessibleName(QString("Light of channel %1").arg(++channel));
        options->addWidget(button);
    }
    options->addSpacing(2 * Theme::Spacing);
    options->addWidget(new QLabel("Background", this));
    auto* backgroundOptions = new QPushButton(this);
    Bind(backgroundOptions, control.BackgroundOptionsButton);
    options->addWidget(backgroundOptions);
    options->addStretch();

    auto* checks = new QHBoxLayout;
    checks->setSpacing(2 * Theme::Spacing);
    for (CheckBox* child : {&control.SlowMotionCheck, &control.SimulateLossOfSignalCheck,
                            &control.SimulateHysteresisCheck}) {
        auto* box = new QCheckBox(this);
        Bind(box, *child);
        checks->addWidget(box);
    }
    checks->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::Spacing / 2);
    layout->addWidget(canvas_, 1);
    layout->addLayout(options);
    layout->addLayout(checks);
}

} // namespace corvane
