#pragma once

#include "light/LumoraTrack.h"
#include "light/SegmentBlock.h"
#include "light/TrackSelection.h"

#include <array>

namespace corvane {

class LumoraScrollableTracks;

/// One track as it is edited: where its segments lie, which are selected, and the one that is
/// worked on. Indices count from 1, 0 means none; sizes are twips.
class LumoraTrackEditor {
  public:
    LumoraTrackEditor(LumoraScrollableTracks& set, int trackIndex, const LumoraTrack& track);
    LumoraTrackEditor(const LumoraTrackEditor&) = delete;
    LumoraTrackEditor& operator=(const LumoraTrackEditor&) = delete;

    [[nodiscard]] const LumoraTrack& track() const { return track_; }
    [[nodiscard]] int trackIndex() const { return trackIndex_; }

    /// This is the selected track of the set. Every assignment leaves only the first segment
    /// selected.
    [[nodiscard]] bool Selected() const { return selected_; }
    void setSelected(bool selected);
    /// The first selected segment.
    [[nodiscard]] int SelectedIndex() const { return selection_.first(); }
    /// Selects this segment alone; an index that matches nothing clears the selection.
    void setSelectedIndex(int index);
    [[nodiscard]] int SelectedIndexCount() const { return selection_.count(); }
    [[nodiscard]] std::vector<int> SelectedIndices() const { return selection_.indices(); }
    [[nodiscard]] bool isSelected(int index) const { return selection_.isSelected(index); }
    /// The segment's selection is to be marked on the screen.
    [[nodiscard]] bool isMarked(int index) const;

    /// Limited to what an integer holds.
    [[nodiscard]] int ContentWidth() const { return rightOf(track_.GetTrackCount()); }
    /// What it would be, without that limit, at another scale.
    [[nodiscard]] double ContentWidthAt(float scale) const;
    [[nodiscard]] int GetTrackLeft(int index) const { return rightOf(index - 1); }
    [[nodiscard]] int GetTrackWidth(int index) const { return rightOf(index) - rightOf(index - 1); }
    /// The segment at a distance from the track's beginning; 0 outside.
    [[nodiscard]] int indexAt(int x) const;
    /// The first segment whose right edge lies beyond `x`; one more than there are if none does.
    [[nodiscard]] int firstRightOf(int x) const;
    /// Places have to be worked out anew, as when the scale has changed.
    void rearrange(int fromIndex = 1) const;

    /// The segment that has the input focus.
    [[nodiscard]] int FocusedIndex() const { return block_ == nullptr ? 0 : block_->index(); }
    /// Its block; nothing if none has the focus.
    [[nodiscard]] SegmentBlock* block() const { return block_.get(); }
    /// Who moves the focus. Shift and Ctrl count for a person's own move alone.
    enum class Moved { ByPerson, ByCommand };
    /// Gives a segment the input focus. If this moves the focus, it counts as a click.
    void FocusOn(int index, Moved moved = Moved::ByPerson);
    /// A press of the left button on a segment.
    void press(int index);
    /// What a press of the right button on a segment does first: gives it the input focus.
    void requestFocus(int index);
    /// The input focus has gone elsewhere.
    void loseFocus();
    /// Commits what has been typed.
    void Commit();

  private:
    [[nodiscard]] int rightOf(int index) const;
    [[nodiscard]] int widthOf(int index, float scale) const;
    void clickRule(int index, Moved moved);
    void setFocus(int index);
    void selectionChanged() const;

    LumoraScrollableTracks& set_;
    int trackIndex_;
    const LumoraTrack& track_;
    TrackSelection selection_;
    bool selected_ = false;
    std::unique_ptr<SegmentBlock> block_;
    std::array<Connection, 2> onBlock_;
    mutable std::vector<int> rights_; // right edges, as far as they are known
    Connections on_;
};

} // namespace corvane
