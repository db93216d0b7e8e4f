#include "light/LumoraScrollableTracks.h"

#include "base/Assert.h"
#include "history/FreezeScope.h"

#include <algorithm>
#include <cmath>

namespace corvane {

namespace {

constexpr int MostPixels = 16383;     // that a track may be wide
constexpr float MostSteps = 30000;    // of the scroll bar
constexpr int MostChange = 32767;     // of its steps
constexpr float StepSeconds = 0.001F; // of one step

} // namespace

LumoraScrollableTracks::LumoraScrollableTracks(LumoraDocument& document, Dialogs& dialogs,
                                               const KOKeyboard& keyboard)
    : document_(document),
      history_(document.HistoryObject()),
      dialogs_(dialogs),
      keyboard_(keyboard),
      tracks_(LumoraDocument::TrackCount) {
    for (int index = 1; index <= TrackCount(); ++index)
        place(index).editor =
            std::make_unique<LumoraTrackEditor>(*this, index, document_.track(index));
    on_(HScroll.Moved, [this] { takeOffset(); });
    on_(history_.Freezing, [this] { ++frozen_; });
    on_(history_.Unfreezing, [this](bool) {
        if (--frozen_ == 0)
            catchUp();
    });
}

LumoraTrackEditor& LumoraScrollableTracks::track(int index) const {
    return *place(index).editor;
}

const LumoraScrollableTracks::Place& LumoraScrollableTracks::place(int index) const {
    Assert(index >= 1 && index <= TrackCount());
    return tracks_[static_cast<std::size_t>(index) - 1];
}

LumoraScrollableTracks::Place& LumoraScrollableTracks::place(int index) {
    Assert(index >= 1 && index <= TrackCount());
    return tracks_[static_cast<std::size_t>(index) - 1];
}

void LumoraScrollableTracks::setTrackVisible(int index, bool visible) {
    if (place(index).visible == visible)
        return;
    place(index).visible = visible;
    if (!visible && focusedTrack_ == index)
        loseFocus();
    if (visible && selectedIndex_ == 0) {
        setSelectedIndex(index);
    } else if (!visible && selectedIndex_ == index) {
        setSelectedIndex(0);
        for (int i = 1; i <= TrackCount() && selectedIndex_ == 0; ++i) {
            const int candidate = (index + i - 1) % TrackCount() + 1;
            if (TrackVisible(candidate))
                setSelectedIndex(candidate);
        }
    }
    stack();
    updateScroll();
}

void LumoraScrollableTracks::setSelectedIndex(int index) {
    if (index == selectedIndex_)
        return;
    const int old = std::exchange(selectedIndex_, index);
    if (old != 0)
        track(old).setSelected(false);
    if (index != 0)
        track(index).setSelected(true);
}

void LumoraScrollableTracks::Resize(int width, int height) {
    if (width == width_ && height == height_)
        return;
    width_ = width;
    height_ = std::max(0, height);
    stack();
    updateScroll();
    if (fitWhenSized_)
        ZoomToFit();
}

void LumoraScrollableTracks::stack() {
    const auto visible = static_cast<int>(
        std::count_if(tracks_.begin(), tracks_.end(), [](const Place& p) { return p.visible; }));
    const int slot = visible == 0 ? 0 : RoundToInteger(static_cast<double>(height_) / visible);
    int top = 0;
    for (Place& p : tracks_) {
        p.top = top;
        p.height = TwipsPerPixel <= slot ? slot - TwipsPerPixel : slot;
        if (p.visible)
            top += slot;
    }
    LayoutChanged.raise();
}

int LumoraScrollableTracks::widestTrack() const {
    int widest = 0;
    for (const Place& p : tracks_)
        if (p.visible)
            widest = std::max(widest, p.editor->ContentWidth());
    return widest;
}

void LumoraScrollableTracks::updateScrollUnit(int contentWidth) {
    unit_ = timeScale_ * StepSeconds;
    if (static_cast<float>(contentWidth) / unit_ > MostSteps)
        unit_ = static_cast<float>(contentWidth) / MostSteps;
    const auto steps = [this](float part) {
        const float change = std::ceil(static_cast<float>(width_) / (unit_ * part));
        return static_cast<int>(std::min(change, static_cast<float>(MostChange)));
    };
    HScroll.setSteps(steps(10), steps(2));
}

void LumoraScrollableTracks::updateScroll() {
    scrollStale_ = false;
    const int contentWidth = widestTrack();
    updateScrollUnit(contentWidth);
    overflow_ = std::max(0, contentWidth - width_);
    HScroll.setMax(static_cast<int>(std::ceil(static_cast<float>(overflow_) / unit_)));
    takeOffset();
}

void LumoraScrollableTracks::takeOffset() {
    const int offset =
        std::min(RoundToInteger(static_cast<double>(HScroll.Value()) * static_cast<double>(unit_)),
                 overflow_);
    if (std::exchange(offset_, offset) != offset)
        LayoutChanged.raise();
}

void LumoraScrollableTracks::contentChanged(int trackIndex) {
    // While much changes at once the scrolling waits for the end of it.
    if (frozen_ > 0)
        scrollStale_ = true;
    else
        updateScroll();
    lookChanged(trackIndex);
}

void LumoraScrollableTracks::lookChanged(int trackIndex) {
    place(trackIndex).lookStale = frozen_ > 0;
    if (frozen_ == 0)
        TrackLookChanged.raise(trackIndex);
}

void LumoraScrollableTracks::catchUp() {
    if (scrollStale_)
        updateScroll();
    for (int index = 1; index <= TrackCount(); ++index)
        if (std::exchange(place(index).lookStale, false))
            TrackLookChanged.raise(index);
}

void LumoraScrollableTracks::setTimeScale(float scale) {
    timeScale_ = withinWidth(scale);
    for (const Place& p : tracks_)
        p.editor->rearrange();
    updateScroll();
    LayoutChanged.raise();
}

double LumoraScrollableTracks::widestAt(float scale) const {
    double widest = 0;
    for (const Place& p : tracks_)
        if (p.visible)
            widest = std::max(widest, p.editor->ContentWidthAt(scale));
    return widest;
}

/// The scale, or one at which the widest track is just not too wide.
float LumoraScrollableTracks::withinWidth(float scale) const {
    constexpr double most = TwipsPerPixel * MostPixels;
    constexpr int mostSteps = 8; // a few are enough, unless roundings make up most of the width
    for (int step = 0; step < mostSteps; ++step) {
        const double widest = widestAt(scale);
        if (widest <= most)
            return scale;
        const float narrower = static_cast<float>(scale * most / widest);
        if (narrower == scale)
            return scale;
        scale = narrower;
    }
    // A segment is rounded up by half a twip at most, and one of less than that has no width.
    constexpr double noWidth = 0.49 / LumoraTrackElement::MaxTime;
    for (const Place& p : tracks_) {
        const double seconds =
            p.visible ? p.editor->ContentWidthAt(HighestScale) / HighestScale : 0;
        const double roundings = p.editor->track().GetTrackCount() / 2.0 + 1;
        if (seconds > 0)
            scale = std::min(scale,
                             static_cast<float>(std::max((most - roundings) / seconds, noWidth)));
    }
    return scale;
}

float LumoraScrollableTracks::ClampZoom(float value) {
    return std::clamp(value, LowestScale, HighestScale);
}

void LumoraScrollableTracks::ZoomIn() {
    const FreezeScope frozen(history_);
    setTimeScale(ClampZoom(2 * timeScale_));
    FocusOnSelection();
}

void LumoraScrollableTracks::ZoomOut() {
    const FreezeScope frozen(history_);
    setTimeScale(ClampZoom(timeScale_ / 2));
    FocusOnSelection();
}

void LumoraScrollableTracks::ZoomToDefault() {
    if (timeScale_ != DefaultScale)
        setTimeScale(DefaultScale);
}

void LumoraScrollableTracks::ZoomToFit() {
    fitWhenSized_ = width_ == 0;
    if (widestAt(timeScale_) <= 0 || fitWhenSized_)
        return;
    const float fitting = fittingScale();
    if (fitting == timeScale_)
        return;
    const FreezeScope frozen(history_);
    setTimeScale(fitting);
}

/// The scale at which the widest track fills the room, or as near to it as the limits allow. Widths
/// are rounded segment by segment, so that the first one worked out may be a little too wide.
float LumoraScrollableTracks::fittingScale() const {
    float scale = timeScale_;
    for (bool first = true;; first = false) {
        const double widest = widestAt(scale);
        if (widest <= 0 || (!first && widest <= width_))
            return scale;
        const float fitting = withinWidth(std::floor(
            ClampZoom(static_cast<float>(width_ * static_cast<double>(scale) / widest))));
        if (first ? fitting == scale : fitting >= scale)
            return scale;
        scale = fitting;
    }
}

void LumoraScrollableTracks::ZoomAbout(float factor, int x) {
    const float before = timeScale_;
    const int at = offset_ + x;
    setTimeScale(ClampZoom(before * factor));
    scrollTo(RoundToInteger(static_cast<double>(at) * timeScale_ / before) - x);
}

void LumoraScrollableTracks::scrollTo(int offset) {
    HScroll.setValue(RoundToInteger(static_cast<double>(offset) / static_cast<double>(unit_)));
}

void LumoraScrollableTracks::Show(int trackIndex, int elementIndex) {
    if (scrollStale_)
        updateScroll();
    const LumoraTrackEditor& target = track(trackIndex);
    const auto left = static_cast<float>(target.GetTrackLeft(elementIndex));
    const float right = left + static_cast<float>(target.GetTrackWidth(elementIndex));
    float position = static_cast<float>(HScroll.Value()) * unit_;
    if (static_cast<float>(width_) + position < right)
        position = right - static_cast<float>(width_);
    position = std::min(position, left);
    HScroll.setValue(static_cast<int>(
        std::ceil(std::clamp(position / unit_, 0.0F, static_cast<float>(HScroll.Max())))));
}

void LumoraScrollableTracks::FocusOn(int trackIndex, int elementIndex, Moved moved) {
    if (trackIndex == 0 || elementIndex == 0)
        return;
    const FreezeScope frozen(history_);
    Show(trackIndex, elementIndex);
    const ThawScope shown(history_);
    takeFocus(trackIndex);
    track(trackIndex).FocusOn(elementIndex, moved);
}

void LumoraScrollableTracks::FocusOnSelection() {
    if (selectedIndex_ != 0)
        FocusOn(selectedIndex_, track(selectedIndex_).SelectedIndex());
}

void LumoraScrollableTracks::takeFocus(int trackIndex) {
    const int old = std::exchange(focusedTrack_, trackIndex);
    if (old != 0 && old != trackIndex)
        track(old).loseFocus();
    setSelectedIndex(trackIndex);
}

void LumoraScrollableTracks::loseFocus() {
    const int old = std::exchange(focusedTrack_, 0);
    if (old != 0)
        track(old).loseFocus();
}

void LumoraScrollableTracks::moveFocus(int segments, int tracks) {
    int target = selectedIndex_;
    if (target == 0)
        return;
    const LumoraTrackEditor& from = track(target);
    const int index = from.FocusedIndex() != 0 ? from.FocusedIndex() : from.SelectedIndex();
    if (tracks != 0) {
        for (int next = target + tracks; next >= 1 && next <= TrackCount(); next += tracks) {
            if (!TrackVisible(next))
                continue;
            target = next;
            break;
        }
        if (target == selectedIndex_)
            return;
        // To the segment that begins at the same time, or to the last one.
        const LumoraTrackEditor& to = track(target);
        const int count = to.track().GetTrackCount();
        if (count == 0)
            return takeFocus(target);
        const int x = index == 0 ? 0 : from.GetTrackLeft(index);
        return FocusOn(target, std::min(to.firstRightOf(x), count), Moved::ByPerson);
    }
    const int count = from.track().GetTrackCount();
    if (count > 0)
        FocusOn(target, index == 0 ? 1 : std::clamp(index + segments, 1, count), Moved::ByPerson);
}

bool LumoraScrollableTracks::walkFocus(int step) {
    int target = focusedTrack_;
    if (target == 0)
        return false;
    int index = track(target).FocusedIndex() + step;
    while (index < 1 || index > track(target).track().GetTrackCount()) {
        do
            target += step;
        while (target >= 1 && target <= TrackCount() && !TrackVisible(target));
        if (target < 1 || target > TrackCount())
            return false;
        index = step > 0 ? 1 : track(target).track().GetTrackCount();
    }
    FocusOn(target, index);
    return true;
}

void LumoraScrollableTracks::Commit() {
    if (focusedTrack_ != 0)
        track(focusedTrack_).Commit();
}

} // namespace corvane
