// What a person does on the canvas with the mouse, the wheel and the keys.
#include "base/KOMath.h"
#include "desktop/Binders.h"
#include "desktop/Twips.h"
#include "desktop/light/TracksCanvas.h"

#include <QLabel>
#include <QMenu>
#include <QMouseEvent>

#include <cmath>

namespace corvane {

namespace {

constexpr int HandleThreshold = 3; // pixels before a drag of the width begins
constexpr int HandleReach = 9;     // pixels from the right edge
constexpr double WheelStep = 120;  // of a usual mouse
constexpr int ScrollPixels = 60;   // for one step of the wheel

} // namespace

void TracksCanvas::mousePressEvent(QMouseEvent* event) {
    atTheEnd_ = false;
    if (event->button() != Qt::LeftButton)
        return;
    const Hit hit = hitAt(event->pos());
    if (hit.track == 0)
        return;
    if (hit.element == 0) {
        tracks_.takeFocus(hit.track);
        tracks_.track(hit.track).loseFocus();
        tracks_.track(hit.track).setSelectedIndex(0);
        followFocus();
        return;
    }
    tracks_.track(hit.track).press(hit.element);
    if (hit.geometry.function.contains(event->pos()))
        return showMenu(hit, event->globalPosition().toPoint());
    for (const auto& [field, box] :
         {std::pair(hit.geometry.brightness, &brightness_),
          std::pair(hit.geometry.brightness2, &brightness2_), std::pair(hit.geometry.time, &time_)})
        if (field.contains(event->pos()))
            return edit(*box);
    startDrag(hit, event->pos());
}

void TracksCanvas::startDrag(const Hit& hit, QPoint point) {
    dragged_ = hit;
    pressedAt_ = point;
    dragMoves_ = false;
    const bool narrow = hit.geometry.handle.isEmpty();
    if (narrow || hit.geometry.handle.contains(point)) {
        drag_ = Drag::Width;
        pointer_.begin();
        const LumoraTrackEditor& track = tracks_.track(hit.track);
        pressedX_ = point.x() * TwipsPerPixel + tracks_.scrollOffset() -
                    track.GetTrackLeft(hit.element) - track.GetTrackWidth(hit.element) +
                    SegmentBlock::HandleWidth;
        if (SegmentBlock* worked = block())
            worked->startWidthDrag(track.GetTrackWidth(hit.element), tracks_.TimeScale(),
                                   pressedX_);
    } else if (hit.geometry.gradient.contains(point)) {
        drag_ = Drag::Brightness;
        pointer_.begin();
        dragMoves_ = true;
        continueDrag(point);
    }
}

void TracksCanvas::mouseMoveEvent(QMouseEvent* event) {
    const Hit hit = hitAt(event->pos());
    const bool onHandle =
        hit.element != 0 && (hit.geometry.handle.isEmpty() ||
                             event->pos().x() >= hit.geometry.block.right() - HandleReach);
    if (onHandle)
        setCursor(Qt::SplitHCursor);
    else if (hit.geometry.gradient.contains(event->pos()))
        setCursor(Qt::SizeVerCursor);
    else
        unsetCursor();
}

void TracksCanvas::continueDrag(QPoint point) {
    SegmentBlock* worked = block();
    if (worked == nullptr)
        return;
    if (drag_ == Drag::Brightness) {
        const QRect& gradient = dragged_.geometry.gradient;
        worked->dragBrightness(point.y() - gradient.top(), gradient.height());
        showBubble(point, QString::fromStdString(worked->txtBrightness.Text()) + " %");
        return;
    }
    if (!dragMoves_ && std::abs(point.x() - pressedAt_.x()) < HandleThreshold)
        return;
    dragMoves_ = true;
    const LumoraTrackEditor& track = tracks_.track(dragged_.track);
    const int handle = track.GetTrackLeft(dragged_.element) +
                       track.GetTrackWidth(dragged_.element) - SegmentBlock::HandleWidth;
    worked->moveWidthDrag(point.x() * TwipsPerPixel + tracks_.scrollOffset() - handle);
    const double total = static_cast<double>(track.track().TimeLimit()) - worked->element().time() +
                         worked->shownTime();
    showBubble(point, QString("%1 s, track %2 s")
                          .arg(QString::fromStdString(worked->txtTime.Text()))
                          .arg(total, 0, 'f', 2));
}

void TracksCanvas::endDrag() {
    const Drag ended = std::exchange(drag_, Drag::None);
    bubble_->hide();
    if (SegmentBlock* worked = block()) {
        if (ended == Drag::Width)
            worked->endWidthDrag();
        else
            worked->endBrightnessDrag();
    }
    placeBoxes();
    describe();
}

void TracksCanvas::cancelDrag() {
    drag_ = Drag::None;
    bubble_->hide();
    if (SegmentBlock* worked = block())
        worked->cancel();
    placeBoxes();
}

void TracksCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    const Hit hit = hitAt(event->pos());
    const bool onControl =
        hit.geometry.handle.contains(event->pos()) || hit.geometry.gradient.contains(event->pos());
    if (event->button() != Qt::LeftButton || hit.element == 0 || onControl)
        return mousePressEvent(event);
    tracks_.track(hit.track).press(hit.element);
    editFocused();
}

void TracksCanvas::showBubble(QPoint point, const QString& text) {
    bubble_->setText(text);
    bubble_->adjustSize();
    QPoint at = point + QPoint(16, -bubble_->height() - 6);
    at.setX(std::clamp(at.x(), 0, std::max(0, width() - bubble_->width())));
    at.setY(std::max(0, at.y()));
    bubble_->move(at);
    bubble_->show();
    bubble_->raise();
}

// Menus

void TracksCanvas::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Mouse)
        return showMenu(hitAt(event->pos()), event->globalPos());
    Hit hit;
    hit.track = tracks_.SelectedIndex();
    if (hit.track == 0)
        return;
    QPoint at = trackRect(hit.track).center();
    hit.element = tracks_.track(hit.track).FocusedIndex();
    if (hit.element != 0) {
        hit.geometry = geometryOf(hit.track, hit.element);
        at = (hit.geometry.block & rect()).center();
        hit.geometry.function = {};
    }
    showMenu(hit, mapToGlobal(at));
}

void TracksCanvas::showMenu(const Hit& hit, QPoint globalPoint) {
    if (hit.track == 0)
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (hit.element == 0) {
        control_.trackPopup.prepare(tracks_, hit.track);
        Bind(menu, control_.trackPopup.layout());
    } else {
        if (!control_.segmentPopup.prepare(tracks_, hit.track, hit.element)) {
            menu->deleteLater();
            return;
        }
        const bool onFunction = hit.geometry.function.contains(mapFromGlobal(globalPoint));
        Bind(menu,
             onFunction ? control_.segmentPopup.functionLayout() : control_.segmentPopup.layout());
    }
    menu->popup(globalPoint);
}

// The wheel and the keys

void TracksCanvas::wheelEvent(QWheelEvent* event) {
    const QPoint angle = event->angleDelta();
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        const double steps = angle.y() / WheelStep;
        tracks_.ZoomAbout(static_cast<float>(std::pow(1.25, steps)),
                          RoundToInteger(event->position().x() * TwipsPerPixel));
    } else {
        const QPoint smooth = event->pixelDelta();
        const int pixel = smooth.x() != 0 ? smooth.x() : smooth.y();
        const int turned = angle.x() != 0 ? angle.x() : angle.y();
        if (!smooth.isNull())
            wheelSteps_ += pixel;
        else
            wheelSteps_ += turned / WheelStep * ScrollPixels;
        const int whole = static_cast<int>(wheelSteps_);
        wheelSteps_ -= whole; // small steps add up
        tracks_.scrollTo(tracks_.scrollOffset() - whole * TwipsPerPixel);
    }
    event->accept();
}

void TracksCanvas::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        return leave(true);
    case Qt::Key_Tab:
    case Qt::Key_Backtab: // with Ctrl, or they would not come here
        return leave(event->key() == Qt::Key_Tab);
    case Qt::Key_Left:
        return tracks_.moveFocus(-1, 0);
    case Qt::Key_Right:
        return tracks_.moveFocus(1, 0);
    case Qt::Key_Up:
        return tracks_.moveFocus(0, -1);
    case Qt::Key_Down:
        return tracks_.moveFocus(0, 1);
    case Qt::Key_Home:
        return tracks_.moveFocus(
            -tracks_.track(std::max(1, tracks_.SelectedIndex())).track().GetTrackCount(), 0);
    case Qt::Key_End:
        return tracks_.moveFocus(
            tracks_.track(std::max(1, tracks_.SelectedIndex())).track().GetTrackCount(), 0);
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
        return editFocused();
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

bool TracksCanvas::event(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        update();
    } else if (event->type() == QEvent::ToolTip) {
        showTip(dynamic_cast<QHelpEvent&>(*event));
        return true;
    }
    return QWidget::event(event);
}

} // namespace corvane
