#include "desktop/light/TracksCanvas.h"

#include "desktop/Accessibility.h"
#include "desktop/Binders.h"
#include "desktop/Theme.h"
#include "desktop/Twips.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace corvane {

namespace {

const QColor SelectedTrack(128, 0, 0);
const QColor OtherTrack(64, 0, 0);

/// Ctrl+Tab, or with Shift the other way.
bool isLeaving(const QKeyEvent& key) {
    return (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab) &&
           key.modifiers().testFlag(Qt::ControlModifier);
}

int toPixels(int twips) {
    return static_cast<int>(std::floor(static_cast<double>(twips) / TwipsPerPixel));
}

} // namespace

TracksCanvas::TracksCanvas(LumoraControl& control, QWidget* parent)
    : QWidget(parent),
      control_(control),
      tracks_(control.tracks),
      bubble_(new QLabel(this)),
      pointer_(this, {.move = [this](QPoint point) { continueDrag(point); },
                      .drop = [this] { endDrag(); },
                      .giveUp = [this] { cancelDrag(); }}) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumSize(120, 80);
    setAttribute(Qt::WA_OpaquePaintEvent);
    TellAsCanvas(this);
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

    on_(tracks_.TrackLookChanged, [this](int track) {
        if (tracks_.TrackVisible(track))
            update(trackRect(track));
        placeBoxes();
    });
    on_(tracks_.LayoutChanged, [this] {
        update();
        placeBoxes();
    });
    on_(tracks_.FocusMoved, [this] { followFocus(); });
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
                         .arg(top ? "top track: plays at the trip point and above"
                                  : "bottom track: plays below the trip point"));
}

BlockLook TracksCanvas::lookOf(const LumoraTrackEditor& track, int elementIndex) const {
    const LumoraTrackElement& element = track.track().GetTrack(elementIndex);
    BlockLook look;
    look.element = &element;
    look.lightColor = track.track().LightColor();
    look.marked = track.isMarked(elementIndex);
    if (const SegmentBlock* worked = track.block(); elementIndex == track.FocusedIndex()) {
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

void TracksCanvas::showTip(const QHelpEvent& help) {
    const Hit hit = hitAt(help.pos());
    if (hit.element == 0)
        return QToolTip::hideText();
    const LumoraTrackElement& element = tracks_.track(hit.track).track().GetTrack(hit.element);
    QString text;
    QRect part = hit.geometry.block & rect();
    if (hit.geometry.handle.contains(help.pos())) {
        text = "Drag to change the time";
        part = hit.geometry.handle;
    } else if (hit.geometry.gradient.contains(help.pos())) {
        text = "Drag to change the brightness";
        part = hit.geometry.gradient;
    } else if (hit.geometry.function.contains(help.pos())) {
        text = "Click to choose a function";
        part = hit.geometry.function;
    } else {
        const std::string_view function = FunctionLabel(element.functionCode());
        text = QString("Segment %1: %2 %, %3 s")
                   .arg(hit.element)
                   .arg(element.brightness())
                   .arg(QString::fromStdString(LumoraTrackElement::FormatTime(element.time())));
        if (!function.empty())
            text += QString("\n%1, from %2 %")
                        .arg(QString::fromUtf8(function.data(),
                                               static_cast<qsizetype>(function.size())))
                        .arg(element.brightness2());
    }
    QToolTip::showText(help.globalPos(), text, this, part);
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
    atTheEnd_ = false;
    if (tracks_.focusedTrack() != 0 && !hasFocusInside())
        setFocus(Qt::OtherFocusReason);
    placeBoxes();
    describe();
    update();
}

void TracksCanvas::placeBoxes() {
    SegmentBlock* present = block();
    if (present != shown_) {
        if (present == nullptr || shown_ == nullptr)
            update(); // the frame round all tracks comes or goes
        shown_ = present;
        const bool typing = !hasFocus() && hasFocusInside();
        brightness_.bindTo(present == nullptr ? nullptr : &present->txtBrightness);
        brightness2_.bindTo(present == nullptr ? nullptr : &present->txtBrightness2);
        time_.bindTo(present == nullptr ? nullptr : &present->txtTime);
        // What is typed next was not meant for another segment's box.
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
        if (box.isVisibleTo(this) == shows)
            return;
        if (!shows && box.hasFocus())
            setFocus(Qt::OtherFocusReason); // or it would walk on by itself
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
    atTheEnd_ = false;
    const bool forAWhile = event->reason() == Qt::PopupFocusReason ||
                           event->reason() == Qt::ActiveWindowFocusReason ||
                           event->reason() == Qt::MenuBarFocusReason;
    if (!forAWhile && !hasFocusInside())
        tracks_.loseFocus();
    update();
}

bool TracksCanvas::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& key = dynamic_cast<QKeyEvent&>(*event);
        if (isLeaving(key)) {
            leave(key.key() == Qt::Key_Tab);
            return true;
        }
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

bool TracksCanvas::focusNextPrevChild(bool next) {
    return walk(next) || QWidget::focusNextPrevChild(next);
}

/// The boxes of the segment that is worked on, in their order.
std::vector<Box*> TracksCanvas::boxesInUse() {
    placeBoxes();
    std::vector<Box*> boxes;
    for (Box* box : {&brightness_, &brightness2_, &time_})
        if (box->isVisibleTo(this))
            boxes.push_back(box);
    return boxes;
}

/// Tab: through the boxes of a segment, then on to the next one. False if there is none to walk on.
bool TracksCanvas::walk(bool next) {
    if (block() == nullptr)
        return false;
    std::vector<Box*> boxes = boxesInUse();
    const auto at = std::find(boxes.begin(), boxes.end(), QApplication::focusWidget());
    const auto focus = [next](Box& box) {
        box.setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        box.selectAll();
    };
    if (!next && std::exchange(atTheEnd_, false) && !boxes.empty()) {
        focus(*boxes.back());
        return true;
    }
    if (next && at == boxes.end() && !boxes.empty() && !atTheEnd_) {
        focus(*boxes.front());
        return true;
    }
    if (at != boxes.end() && (next ? at + 1 != boxes.end() : at != boxes.begin())) {
        focus(next ? **(at + 1) : **(at - 1));
        return true;
    }
    const bool moved = tracks_.walkFocus(next ? 1 : -1);
    boxes = boxesInUse();
    atTheEnd_ = !moved && next;
    if (moved && !boxes.empty())
        focus(next ? *boxes.front() : *boxes.back());
    else
        setFocus(Qt::OtherFocusReason); // what is typed now changes nothing
    return true;
}

/// To what comes behind the tracks, or before them.
void TracksCanvas::leave(bool next) {
    QWidget* to = this;
    do {
        to = next ? to->nextInFocusChain() : to->previousInFocusChain();
    } while (to != this && (isAncestorOf(to) || !to->isVisible() || !to->isEnabled() ||
                            (to->focusPolicy() & Qt::TabFocus) == 0));
    if (to != this)
        to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
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

} // namespace corvane
