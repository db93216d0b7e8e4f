#pragma once

#include "base/KORgbValue.h"
#include "controls/Dialogs.h"
#include "controls/Inputs.h"
#include "light/LumoraRequests.h"
#include "light/LumoraTrack.h"

#include <optional>

namespace corvane {

/// What a person does with one segment: types, drags, chooses. Changes nothing of the segment
/// itself but requests it. Lives as long as its segment is the one that is worked on. Sizes in
/// twips.
class SegmentBlock {
  public:
    struct Surroundings {
        const LumoraRequests& requests;
        Dialogs& dialogs;
        int trackIndex;
        const LumoraTrack& track;
    };
    /// Width of the handle at the block's right edge.
    static constexpr int HandleWidth = 135;
    /// Room left of the handle from which the boxes can be used, and from which the panel shows.
    static constexpr int BoxesWidth = 1875;
    static constexpr int PanelWidth = 180;
    /// Height of the panel with one brightness box, and with two.
    static constexpr int PanelHeight = 795;
    static constexpr int TallPanelHeight = 1395;

    SegmentBlock(Surroundings surroundings, int index);
    SegmentBlock(const SegmentBlock&) = delete;
    SegmentBlock& operator=(const SegmentBlock&) = delete;

    Event<> LookChanged;  ///< The colour or a width that is not stored yet.
    Event<> TrackResized; ///< By a drag, or its end.

    TextBox txtBrightness;
    TextBox txtBrightness2;
    TextBox txtTime;

    /// The segment's present place in its track.
    [[nodiscard]] int index() const { return index_; }
    void setIndex(int index) { index_ = index; }
    [[nodiscard]] const LumoraTrackElement& element() const { return with_.track.GetTrack(index_); }
    /// Validates the three boxes in turn.
    void Commit();
    /// Takes those stored values into the boxes that have changed since it was last called.
    void follow();

    // The colour that the boxes' levels give, also before they are committed.
    [[nodiscard]] int level1() const;
    [[nodiscard]] int level2() const;
    /// The time that the width shows: the one being dragged to, or the stored one.
    [[nodiscard]] double shownTime() const;

    // Dragging the width, by the pointer's place relative to the handle.
    void startWidthDrag(int blockWidth, double timeScale, int x);
    void moveWidthDrag(int x);
    void endWidthDrag();
    [[nodiscard]] bool draggingWidth() const { return widthDrag_.has_value(); }
    // Dragging the brightness, by the pointer's place from the top of the gradient.
    void dragBrightness(double y, double height);
    void endBrightnessDrag() { commitBrightness(); }
    /// Puts back what is not committed yet, in the middle of a drag too.
    void cancel();

    // Popup entries.
    void changeBrightness();
    void changeTime();
    void chooseFunction(std::string_view code);

  private:
    struct WidthDrag {
        float width = 0;
        double timeScale = 0;
        int pressedX = 0;
    };

    void commitBrightness();
    void commitBrightness2();
    void commitTime();
    void ask(TextBox& box, const std::string& prompt, const std::string& title);
    [[nodiscard]] int levelIn(const TextBox& box) const;
    void showStored();

    Surroundings with_;
    int index_;
    int shownBrightness_ = 0; // stored values as the boxes last took them
    int shownBrightness2_ = 0;
    double shownTime_ = 0;
    std::optional<WidthDrag> widthDrag_;
    Connections on_;
};

/// The light's colour on the way from the first level (0) to the second (1); black before that way.
[[nodiscard]] KORgbValue SegmentColorAt(const LumoraTrackElement& element, int lightColor,
                                        int level1, int level2, float t);

/// What a segment's block says of its function; empty for none.
[[nodiscard]] std::string_view FunctionLabel(std::string_view functionCode);

} // namespace corvane
