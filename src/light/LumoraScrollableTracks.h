#pragma once

#include "light/LumoraDocument.h"
#include "light/LumoraRequests.h"
#include "light/LumoraTrackEditor.h"

namespace corvane {

/// All tracks of a program as they are edited: which show, one above the other, on one time axis
/// that scrolls and zooms; which is selected; and which has the input focus. Sizes are twips;
/// indices count from 1, and 0 means none.
class LumoraScrollableTracks : public LumoraRequests {
  public:
    static constexpr int TwipsPerPixel = 15;
    static constexpr float DefaultScale = 2400; ///< Twips a second.
    static constexpr float LowestScale = DefaultScale / 128;
    static constexpr float HighestScale = DefaultScale * 128;

    LumoraScrollableTracks(LumoraDocument& document, Dialogs& dialogs, const KOKeyboard& keyboard);
    LumoraScrollableTracks(const LumoraScrollableTracks&) = delete;
    LumoraScrollableTracks& operator=(const LumoraScrollableTracks&) = delete;

    Event<> SelectionChanged;

    // For the view.
    Event<int> TrackLookChanged; ///< One track has to be painted.
    Event<> LayoutChanged;       ///< All of them have.
    Event<> FocusMoved;

    ScrollBar HScroll;

    [[nodiscard]] int TrackCount() const { return static_cast<int>(tracks_.size()); }
    [[nodiscard]] LumoraTrackEditor& track(int index) const;
    [[nodiscard]] bool TrackVisible(int index) const { return place(index).visible; }
    void setTrackVisible(int index, bool visible);
    /// Where a visible track stands from the top, and how high it is.
    [[nodiscard]] int TrackTop(int index) const { return place(index).top; }
    [[nodiscard]] int TrackHeight(int index) const { return place(index).height; }

    [[nodiscard]] int SelectedIndex() const { return selectedIndex_; }
    void setSelectedIndex(int index);

    /// The room for the tracks.
    void Resize(int width, int height);
    [[nodiscard]] float TimeScale() const { return timeScale_; }
    void setTimeScale(float scale);
    [[nodiscard]] static float ClampZoom(float value);
    void ZoomIn();
    void ZoomOut();
    void ZoomToDefault();
    /// Makes the longest track just fill the width, as far as the limits allow.
    void ZoomToFit();
    /// Zooms so that what lies at `x` from the left edge of the view stays there.
    void ZoomAbout(float factor, int x);
    /// How far the tracks are shifted to the left.
    [[nodiscard]] int scrollOffset() const { return offset_; }
    void scrollTo(int offset);

    using Moved = LumoraTrackEditor::Moved;
    /// Scrolls a segment into view and gives it the input focus.
    void FocusOn(int trackIndex, int elementIndex, Moved moved = Moved::ByCommand);
    void FocusOnSelection();
    /// Scrolls a segment into view.
    void Show(int trackIndex, int elementIndex);
    /// The track with the input focus.
    [[nodiscard]] int focusedTrack() const { return focusedTrack_; }
    /// The input focus has gone to something else.
    void loseFocus();
    /// Moves the focus by so many segments, and by so many visible tracks.
    void moveFocus(int segments, int tracks);
    /// Moves it to the next segment (1) or the one before (-1), at the end of a track to the next
    /// visible track that has some. False if there is none.
    [[nodiscard]] bool walkFocus(int step);
    void Commit();

    // For the tracks alone.
    void takeFocus(int trackIndex);
    void contentChanged(int trackIndex);
    /// Tells it, for a burst of changes once at its end.
    void lookChanged(int trackIndex);
    /// Tells it at once.
    void repaint(int trackIndex) const { TrackLookChanged.raise(trackIndex); }
    void selectionChanged() const { SelectionChanged.raise(); }
    void focusMoved() const { FocusMoved.raise(); }
    [[nodiscard]] Dialogs& dialogs() const { return dialogs_; }
    [[nodiscard]] const KOKeyboard& keyboard() const { return keyboard_; }

  private:
    struct Place {
        std::unique_ptr<LumoraTrackEditor> editor;
        bool visible = false;
        int top = 0;
        int height = 0;
        bool lookStale = false;
    };

    [[nodiscard]] const Place& place(int index) const;
    [[nodiscard]] Place& place(int index);
    [[nodiscard]] int widestTrack() const;
    [[nodiscard]] double widestAt(float scale) const;
    [[nodiscard]] float withinWidth(float scale) const;
    [[nodiscard]] float fittingScale() const;
    void stack();
    void updateScrollUnit(int contentWidth);
    void updateScroll();
    void catchUp();
    void takeOffset();

    LumoraDocument& document_;
    History& history_;
    Dialogs& dialogs_;
    const KOKeyboard& keyboard_;
    std::vector<Place> tracks_;
    int selectedIndex_ = 0;
    int focusedTrack_ = 0;
    float timeScale_ = DefaultScale;
    float unit_ = 1; // twips in one step of the scroll bar
    int width_ = 0;  // of the room
    int height_ = 0;
    int overflow_ = 0; // content beyond the width
    int offset_ = 0;
    int frozen_ = 0;
    bool scrollStale_ = false;
    bool fitWhenSized_ = false; // asked for before there was any room
    Connections on_;
};

} // namespace corvane
