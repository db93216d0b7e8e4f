#include "light/LumoraTrackEditor.h"

#include "base/Assert.h"
#include "light/LumoraScrollableTracks.h"

#include <algorithm>
#include <limits>

namespace corvane {

LumoraTrackEditor::LumoraTrackEditor(LumoraScrollableTracks& set, int trackIndex,
                                     const LumoraTrack& track)
    : set_(set), trackIndex_(trackIndex), track_(track) {
    on_(track.SegmentInserted, [this](int index) {
        if (index <= FocusedIndex())
            block_->setIndex(block_->index() + 1);
        selection_.inserted(index);
        rearrange(index);
        set_.contentChanged(trackIndex_);
    });
    on_(track.SegmentRemoving, [this](int index) {
        if (index == SelectedIndex() && index == track_.GetTrackCount())
            setSelectedIndex(index - 1);
        if (index == FocusedIndex()) {
            block_.reset();
            set_.repaint(trackIndex_); // at once: whoever shows it lets it go
        }
    });
    on_(track.SegmentRemoved, [this](int index) {
        if (index < FocusedIndex())
            block_->setIndex(block_->index() - 1);
        selection_.removed(index);
        rearrange(index);
        set_.contentChanged(trackIndex_);
        selectionChanged();
    });
    on_(track.SegmentChanged, [this](int index) {
        if (index == FocusedIndex())
            block_->follow();
        rearrange(index);
        set_.contentChanged(trackIndex_);
    });
    on_(track.ColorChanged, [this] { set_.repaint(trackIndex_); });
    for (int index = 1; index <= track.GetTrackCount(); ++index)
        selection_.inserted(index);
}

void LumoraTrackEditor::setSelected(bool selected) {
    selected_ = selected;
    selection_.selectOnly(selection_.first());
    set_.repaint(trackIndex_);
    set_.selectionChanged();
}

void LumoraTrackEditor::setSelectedIndex(int index) {
    selection_.selectOnly(index);
    selectionChanged();
}

bool LumoraTrackEditor::isMarked(int index) const {
    return selected_ && isSelected(index) && GetTrackWidth(index) >= SegmentBlock::HandleWidth;
}

void LumoraTrackEditor::rearrange(int fromIndex) const {
    const auto known = static_cast<std::size_t>(std::max(0, fromIndex - 1));
    if (rights_.size() > known)
        rights_.resize(known);
}

int LumoraTrackEditor::widthOf(int index, float scale) const {
    return RoundToInteger(static_cast<double>(scale) * (index == FocusedIndex()
                                                            ? block_->shownTime()
                                                            : track_.GetTrack(index).time()));
}

double LumoraTrackEditor::ContentWidthAt(float scale) const {
    double width = 0;
    for (int index = 1; index <= track_.GetTrackCount(); ++index)
        width += widthOf(index, scale);
    return width;
}

int LumoraTrackEditor::rightOf(int index) const {
    if (index < 1)
        return 0;
    while (static_cast<int>(rights_.size()) < index) {
        const int left = rights_.empty() ? 0 : rights_.back();
        const int width = widthOf(static_cast<int>(rights_.size()) + 1, set_.TimeScale());
        rights_.push_back(left + std::min(width, std::numeric_limits<int>::max() - left));
    }
    return rights_[static_cast<std::size_t>(index) - 1];
}

int LumoraTrackEditor::indexAt(int x) const {
    if (x < 0 || x >= ContentWidth())
        return 0;
    return firstRightOf(x);
}

int LumoraTrackEditor::firstRightOf(int x) const {
    static_cast<void>(ContentWidth()); // works out all right edges
    return static_cast<int>(std::upper_bound(rights_.begin(), rights_.end(), x) - rights_.begin()) +
           1;
}

void LumoraTrackEditor::FocusOn(int index, Moved moved) {
    const bool moves = index != FocusedIndex() || set_.focusedTrack() != trackIndex_;
    setFocus(index);
    if (moves)
        clickRule(index, moved);
    set_.focusMoved();
}

void LumoraTrackEditor::press(int index) {
    setFocus(index);
    clickRule(index, Moved::ByPerson);
    set_.focusMoved();
}

void LumoraTrackEditor::requestFocus(int index) {
    set_.takeFocus(trackIndex_);
    if (SelectedIndexCount() < 2)
        setSelectedIndex(index);
    FocusOn(index);
}

void LumoraTrackEditor::loseFocus() {
    Commit();
    block_.reset();
    set_.repaint(trackIndex_);
}

void LumoraTrackEditor::Commit() {
    if (block_ != nullptr)
        block_->Commit();
}

void LumoraTrackEditor::setFocus(int index) {
    set_.takeFocus(trackIndex_);
    if (index == FocusedIndex())
        return;
    if (block_ != nullptr)
        loseFocus();
    if (index < 1 || index > track_.GetTrackCount()) // committing may have changed the track
        return;
    block_ = std::make_unique<SegmentBlock>(
        SegmentBlock::Surroundings{set_, set_.dialogs(), trackIndex_, track_}, index);
    onBlock_ = {block_->LookChanged.connect([this] { set_.repaint(trackIndex_); }),
                block_->TrackResized.connect([this] {
                    rearrange(block_->index());
                    set_.contentChanged(trackIndex_);
                })};
}

void LumoraTrackEditor::clickRule(int index, Moved moved) {
    if (index < 1 || index > track_.GetTrackCount())
        return;
    const bool keysCount = moved == Moved::ByPerson;
    if (keysCount && set_.keyboard().ShiftHeld())
        selection_.extendTo(index);
    else if (keysCount && set_.keyboard().CtrlHeld())
        selection_.set(index, !selection_.isSelected(index));
    else
        selection_.selectOnly(index);
    selectionChanged();
}

void LumoraTrackEditor::selectionChanged() const {
    set_.lookChanged(trackIndex_);
    if (selected_)
        set_.selectionChanged();
}

} // namespace corvane
