#include "desktop/light/TracksCanvas.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace corvane {

namespace {

constexpr int TwipsPerPixel = LumoraScrollableTracks::TwipsPerPixel;
constexpr int HandleThreshold = 3; // pixels before a drag of the width begins
constexpr int HandleReach = 9;     // pixels from the right edge
constexpr double WheelStep = 120;  // of a usual mouse
constexpr int ScrollPixels = 60;   // for one step of the wheel
const QColor SelectedTrack(128, 0, 0);
const QColor OtherTrack(64, 0, 0);

int toPixels(int twips) {
    return static_cast<int>(std::floor(static_cast<double>(twips) / TwipsPerPixel));
}

} // namespace

TracksCanvas::TracksCanvas(LumoraControl& control, QWidget* parent)
    : QWidget(parent), control_(control), tracks_(control.tracks), bubble_(new QLabel(this)) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumSize(120, 80);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName("Tracks");
    brightness_.setAccessibleName("Brightness in percent");
    brightness2_.setAccessibleName("Brightness at the bottom of the range in percent");
    time_.setAccessibleName("Time in seconds");
    for (Box* box : {&brightness_, &brightness2_, &time_}) {
        QFont small = font();
        small.setPixelSize(12);
        box->setFont(small);
        box->setAlignment(Qt::AlignRight);
        box->setTextMargins(0, 0, 0, 0);
        box->installEventFilter(this);
        box->hide();
    }
    bubble_->setAutoFillBackground(true);
    bubble_->setContentsMargins(6, 3, 6, 3);
    bubble_->setFrameShape(QFrame::Box);
    bubble_->setForegroundRole(QPalette::ToolTipText);
    bubble_->setBackgroundRole(QPalette::ToolTipBase);
    bubble_->setAttribute(Qt::WA_TransparentForMouseEvents);
    bubble_->hide();

    const auto on = [this](auto& event, auto react) {
        connections_.push_back(event.connect(react));
    };
    on(tracks_.TrackLookChanged, [this](int track) {
        if (tracks_.TrackVisible(track))
            update(trackRect(track));
        placeBoxes();
    });
    on(tracks_.LayoutChanged, [this] {
        update();
        placeBoxes();
    });
    on(tracks_.FocusMoved, [this] { followFocus(); });
}

// Geometry

QRect TracksCanvas::trackRect(int trackIndex) const {
    const int top = toPixels(tracks_.TrackTop(trackIndex));
    return {0, top, width(), toPixels(tracks_.TrackHeight(trackIndex))};
}

BlockGeometry TracksCanvas::geometryOf(int trackIndex, int elementIndex) const {
    const LumoraTrackEditor& track = tracks_.track(trackIndex);
    const QRect rect = trackRect(trackIndex);
    const int left = track.GetTrackLeft(elementIndex) - tracks_.scrollOffset();
    const int right = left + track.GetTrackWidth(elementIndex);
    return BlockGeometry::of(track.track().GetTrack(elementIndex), toPixels(left), toPixels(right),
                             rect.top(), rect.height());
}

TracksCanvas::Hit TracksCanvas::hitAt(QPoint point) const {
    Hit hit;
    for (int index = 1; index <= tracks_.TrackCount(); ++index)
        if (tracks_.TrackVisible(index) && trackRect(index).contains(0, point.y()))
            hit.track = index;
    if (hit.track == 0)
        return hit;
    hit.element =
        tracks_.track(hit.track).indexAt(point.x() * TwipsPerPixel + tracks_.scrollOffset());
    if (hit.element != 0)
        hit.geometry = geometryOf(hit.track, hit.element);
    return hit;
}

// Painting

void TracksCanvas::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), QColor(24, 24, 26));
    for (int index = 1; index <= tracks_.TrackCount(); ++index) {
        if (!tracks_.TrackVisible(index))
            continue;
        const QRect clip = trackRect(index) & event->rect();
        if (!clip.isEmpty())
            paintTrack(painter, index, clip);
    }
    if (hasFocus() && block() == nullptr) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void TracksCanvas::paintTrack(QPainter& painter, int trackIndex, const QRect& clip) const {
    const LumoraTrackEditor& track = tracks_.track(trackIndex);
    painter.fillRect(clip, track.Selected() ? SelectedTrack : OtherTrack);
    const int count = track.track().GetTrackCount();
    if (count == 0)
        return paintEmptyTrack(painter, trackIndex, trackRect(trackIndex));
    painter.save();
    painter.setClipRect(clip);
    BlockPainter blocks(painter, font(), palette());
    const int right = (clip.right() + 1) * TwipsPerPixel + tracks_.scrollOffset();
    for (int index = track.firstRightOf(clip.left() * TwipsPerPixel + tracks_.scrollOffset());
         index <= count && track.GetTrackLeft(index) < right; ++index)
        blocks.draw(geometryOf(trackIndex, index), lookOf(track, index));
    painter.restore();
}

void TracksCanvas::paintEmptyTrack(QPainter& painter, int trackIndex, const QRect& rect) const {
    const bool top = tracks_.track(trackIndex).track().topTrack();
    painter.setFont(font());
    painter.setPen(QColor(240, 214, 214));
    painter.drawText(rect, Qt::AlignCenter | Qt::TextWordWrap,
                     QString("Channel %1, %2\nPress Add to begin.")
                         .arg(LumoraDocument::channelOf(trackIndex))
                         .arg(top ? "top track: plays above the trip point"
                                  : "bottom track: plays at or below the trip point"));
}

BlockLook TracksCanvas::lookOf(const LumoraTrackEditor& track, int elementIndex) const {
    const LumoraTrackElement& element = track.track().GetTrack(elementIndex);
    BlockLook look;
    look.element = &element;
    look.marked = track.isMarked(elementIndex);
    const SegmentBlock* worked = track.block();
    if (worked != nullptr && &worked->element() == &element) {
        look.brightness = QString::fromStdString(worked->txtBrightness.Text());
        look.brightness2 = QString::fromStdString(worked->txtBrightness2.Text());
        look.time = QString::fromStdString(worked->txtTime.Text());
        look.level1 = worked->level1();
        look.level2 = worked->level2();
        look.focused = hasFocusInside();
    } else {
        look.brightness = QString::number(element.brightness());
        look.brightness2 = QString::number(element.brightness2());
        look.time = QString::fromStdString(LumoraTrackElement::FormatTime(element.time()));
        look.level1 = element.brightness();
        look.level2 = element.brightness2();
    }
    return look;
}

void TracksCanvas::resizeEvent(QResizeEvent*) {
    tracks_.Resize(width() * TwipsPerPixel, height() * TwipsPerPixel);
}

// The focus and the boxes

SegmentBlock* TracksCanvas::block() const {
    const int track = tracks_.focusedTrack();
    return track == 0 ? nullptr : tracks_.track(track).block();
}

bool TracksCanvas::hasFocusInside() const {
    const QWidget* focus = QApplication::focusWidget();
    return focus != nullptr && (focus == this || isAncestorOf(focus));
}

void TracksCanvas::followFocus() {
    if (tracks_.focusedTrack() != 0 && !hasFocusInside())
        setFocus(Qt::OtherFocusReason);
    placeBoxes();
    describe();
    update();
}

void TracksCanvas::placeBoxes() {
    SegmentBlock* present = block();
    if (present != shown_) {
        shown_ = present;
        const bool typing = !hasFocus() && hasFocusInside();
        brightness_.bindTo(present == nullptr ? nullptr : &present->txtBrightness);
        brightness2_.bindTo(present == nullptr ? nullptr : &present->txtBrightness2);
        time_.bindTo(present == nullptr ? nullptr : &present->txtTime);
        if (typing)
            setFocus(Qt::OtherFocusReason);
    }
    BlockGeometry geometry;
    if (present != nullptr) {
        const int track = tracks_.focusedTrack();
        geometry = geometryOf(track, tracks_.track(track).FocusedIndex());
    }
    const bool dragging = drag_ != Drag::None && dragMoves_;
    const auto place = [&](Box& box, const QRect& rect) {
        const bool shows = !rect.isEmpty() && this->rect().intersects(rect) && !dragging;
        if (shows)
            box.setGeometry(rect);
        if (box.isVisibleTo(this) != shows)
            box.setVisible(shows);
    };
    place(brightness_, geometry.brightness);
    place(brightness2_, geometry.brightness2);
    place(time_, geometry.time);
}

void TracksCanvas::describe() {
    QString text;
    if (const SegmentBlock* worked = block()) {
        const int track = tracks_.focusedTrack();
        text = QString("Channel %1, %2 track, segment %3 of %4, %5 percent, %6 seconds")
                   .arg(LumoraDocument::channelOf(track))
                   .arg(LumoraDocument::onStateOf(track) ? "bottom" : "top")
                   .arg(tracks_.track(track).FocusedIndex())
                   .arg(tracks_.track(track).track().GetTrackCount())
                   .arg(worked->element().brightness())
                   .arg(QString::fromStdString(
                       LumoraTrackElement::FormatTime(worked->element().time())));
    }
    setAccessibleDescription(text);
}

void TracksCanvas::focusInEvent(QFocusEvent* event) {
    const bool byKeys =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (byKeys && tracks_.focusedTrack() == 0)
        tracks_.FocusOnSelection();
    update();
}

void TracksCanvas::focusOutEvent(QFocusEvent* event) {
    const bool forAWhile = event->reason() == Qt::PopupFocusReason ||
                           event->reason() == Qt::ActiveWindowFocusReason ||
                           event->reason() == Qt::MenuBarFocusReason;
    if (!forAWhile && !hasFocusInside() && drag_ == Drag::None)
        tracks_.loseFocus();
    update();
}

bool TracksCanvas::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& key = dynamic_cast<QKeyEvent&>(*event);
        if (key.key() == Qt::Key_Escape || key.key() == Qt::Key_Return ||
            key.key() == Qt::Key_Enter) {
            if (SegmentBlock* worked = block()) {
                if (key.key() == Qt::Key_Escape)
                    worked->cancel();
                else
                    worked->Commit();
            }
            setFocus(Qt::OtherFocusReason);
            return true;
        }
    } else if (event->type() == QEvent::FocusOut) {
        const auto reason = dynamic_cast<QFocusEvent&>(*event).reason();
        // Once the focus has arrived where it goes.
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            QMetaObject::invokeMethod(
                this,
                [this] {
                    if (!hasFocusInside() && QApplication::focusWidget() != nullptr)
                        tracks_.loseFocus();
                    update();
                },
                Qt::QueuedConnection);
    }
    return QWidget::eventFilter(watched, event);
}

void TracksCanvas::edit(Box& box) {
    placeBoxes();
    if (!box.isVisibleTo(this))
        return;
    box.setFocus(Qt::OtherFocusReason);
    box.selectAll();
}

void TracksCanvas::editFocused() {
    placeBoxes();
    if (brightness_.isVisibleTo(this))
        edit(brightness_);
    else if (SegmentBlock* worked = block())
        worked->changeBrightness(); // there is no room for boxes
}

// The mouse

void TracksCanvas::mousePressEvent(QMouseEvent* event) {
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
        const LumoraTrackEditor& track = tracks_.track(hit.track);
        pressedX_ = point.x() * TwipsPerPixel + tracks_.scrollOffset() -
                    track.GetTrackLeft(hit.element) - track.GetTrackWidth(hit.element) +
                    SegmentBlock::HandleWidth;
        if (SegmentBlock* worked = block())
            worked->startWidthDrag(track.GetTrackWidth(hit.element), tracks_.TimeScale(),
                                   pressedX_);
    } else if (hit.geometry.gradient.contains(point)) {
        drag_ = Drag::Brightness;
        dragMoves_ = true;
        continueDrag(point);
    }
}

void TracksCanvas::mouseMoveEvent(QMouseEvent* event) {
    if (drag_ != Drag::None)
        return continueDrag(event->pos());
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

void TracksCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        endDrag();
}

void TracksCanvas::endDrag() {
    const Drag ended = std::exchange(drag_, Drag::None);
    bubble_->hide();
    if (ended == Drag::None)
        return;
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
    if (drag_ != Drag::None)
        return;
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
        if (drag_ != Drag::None)
            return cancelDrag();
        break;
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
    // Arrows and Escape are this canvas's own while it has the focus.
    if (event->type() == QEvent::ShortcutOverride && drag_ != Drag::None &&
        dynamic_cast<QKeyEvent&>(*event).key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::PaletteChange)
        update();
    return QWidget::event(event);
}

} // namespace corvane
