#include "history/FreezeScope.h"
#include "support/Instrumented.h"
#include "support/LightBench.h"

#include <gmock/gmock.h>

#include <random>

namespace corvane {
namespace {

using testing::ElementsAre;

class TracksTest : public testing::Test, public LightBench {
  protected:
    using Pairs = std::vector<std::pair<int, int>>;
    /// The lines of the changes behind the first few.
    std::string linesBehind(int changes) {
        std::string all = lines();
        while (changes-- > 0)
            all.erase(0, all.find('\n') + 1);
        return all;
    }
};

TEST_F(TracksTest, LieSideBySideOnOneTimeAxis) {
    fill(1, {10, 20});
    insert(1, false, {2, {5, 0.25}});
    LumoraTrackEditor& editor = track(1);
    EXPECT_EQ(editor.GetTrackLeft(2), 2400);
    EXPECT_EQ(editor.GetTrackWidth(2), 600);
    EXPECT_EQ(editor.ContentWidth(), 5400);
    for (const auto& [x, index] : Pairs{{2399, 1}, {2400, 2}, {5399, 3}, {5400, 0}, {-1, 0}})
        EXPECT_EQ(editor.indexAt(x), index);
    history.Undo();
    EXPECT_EQ(editor.ContentWidth(), 4800);
}

TEST_F(TracksTest, ShareTheHeightAmongThoseThatShow) {
    EXPECT_EQ(tracks.TrackTop(2), 1500);
    for (const auto& [height, ofEach] : Pairs{{3000, 1485}, {20, 10}, {-5, 0}}) {
        tracks.Resize(9000, height); // a pixel lies between, if there is room
        EXPECT_EQ(tracks.TrackHeight(1), ofEach);
    }
}

TEST_F(TracksTest, ScrollNoFartherThanTheirContent) {
    fill(1, std::vector<int>(8, 50)); // 8 s: 19200 twips in 9000
    EXPECT_EQ(tracks.HScroll.Max(), 4250);
    EXPECT_EQ(tracks.HScroll.SmallChange(), 375);
    EXPECT_EQ(tracks.HScroll.LargeChange(), 1875);
    for (const float scale : {2400.0F, 2401.0F}) { // a whole number of steps, and none
        tracks.setTimeScale(scale);
        tracks.HScroll.setValue(999999);
        EXPECT_EQ(tracks.scrollOffset(), track(1).ContentWidth() - 9000);
    }
    tracks.setTrackVisible(1, false); // what does not show does not count
    EXPECT_EQ(tracks.HScroll.Max(), 0);
    EXPECT_EQ(tracks.scrollOffset(), 0);
}

TEST_F(TracksTest, ZoomWithinTheirLimits) {
    using Tracks = LumoraScrollableTracks;
    for (const auto& [from, step, to] :
         {std::tuple(307200.0F, &Tracks::ZoomIn, 307200.0F),
          {18.75F, &Tracks::ZoomOut, 18.75F},
          {18.75F, &Tracks::ZoomToDefault, 2400.0F},
          {2400.0F, &Tracks::ZoomIn, 4800.0F},
          {4800.0F, &Tracks::ZoomToFit, 4800.0F}}) { // nothing to fit
        tracks.setTimeScale(from);
        (tracks.*step)();
        EXPECT_EQ(tracks.TimeScale(), to) << from;
    }
    insert(1, false, {1, {50, 0.01}});
    tracks.ZoomToFit();
    EXPECT_EQ(tracks.TimeScale(), 307200);
    for (int i = 2; i <= 20; ++i)
        insert(1, false, {i, {50, 2.5}});
    tracks.ZoomToFit();
    EXPECT_LE(track(1).ContentWidth(), 9000);
    EXPECT_GT(track(1).ContentWidth(), 8500);
}

TEST_F(TracksTest, NoLengthIsTooMuchToZoom) {
    using Tracks = LumoraScrollableTracks;
    // Where roundings up and down make up little and much of the width, and beyond all limits.
    for (const auto& [count, seconds] : {std::pair(5500, 2.5), std::pair(13000, 1.3),
                                         std::pair(30000, 0.03), std::pair(600000, 2.5)}) {
        if (Instrumented && count > 100000)
            continue; // takes a minute
        {
            const FreezeScope frozen(history);
            LumoraTrack& track = writable(document, 1);
            while (track.GetTrackCount() > 0)
                track.RemoveTrack(track.GetTrackCount());
            for (int i = 0; i < count; ++i)
                track.AddTrack(seconds, 50);
        }
        for (const auto zoom : {&Tracks::ZoomToFit, &Tracks::ZoomIn, &Tracks::ZoomToDefault,
                                &Tracks::ZoomOut, &Tracks::ZoomToFit}) {
            (tracks.*zoom)();
            EXPECT_LE(track(1).ContentWidth(), 15 * 16383) << count << " of " << seconds;
            EXPECT_GT(tracks.TimeScale(), 0);
        }
        const float fitting = tracks.TimeScale();
        tracks.ZoomToFit();
        EXPECT_EQ(tracks.TimeScale(), fitting) << count << " of " << seconds;
    }
}

TEST_F(TracksTest, WhatNoLineOfAFileCouldHoldIsRefused) {
    std::vector<LumoraPlacedElement> segments;
    for (int index = 1; index <= 200000; ++index)
        segments.push_back({index, {50, 1, "P"}});
    for (const bool fits : {false, true}) {
        LumoraUndoableTrackChange change;
        change.InitializeGroup(document, true, 1, false, segments);
        EXPECT_EQ(change.isApplicable(), fits);
        segments.pop_back();
    }
}

TEST_F(TracksTest, FocusBringsASegmentIntoView) {
    fill(1, std::vector<int>(8, 50));
    for (const auto& [segment, offset] : Pairs{{8, 10200}, {2, 2400}, {3, 2400}}) {
        tracks.FocusOn(1, segment);
        EXPECT_EQ(tracks.scrollOffset(), offset);
        EXPECT_EQ(track(1).SelectedIndex(), segment);
    }
    tracks.Resize(1000, 3000);
    tracks.FocusOn(1, 5); // wider than the view: its left edge counts
    EXPECT_EQ(tracks.scrollOffset(), 9600);
    tracks.FocusOn(0, 5);
    tracks.FocusOn(1, 0);
    EXPECT_EQ(track(1).FocusedIndex(), 5);
}

TEST(TrackSelection, IsWhatAFlagForEachSegmentWouldBe) {
    TrackSelection selection;
    std::vector<bool> flags;
    std::mt19937 random(5);
    for (int i = 0; i < 4000; ++i) {
        const int size = static_cast<int>(flags.size());
        const int index = static_cast<int>(random() % (flags.size() + 1)) + 1;
        const auto at = flags.begin() + (index - 1);
        const auto act = random() % (size < 12 ? 3 : 6);
        if (act < 2) {
            selection.inserted(index);
            flags.insert(at, false);
        } else if (index > size) {
            selection.selectOnly(index);
            std::fill(flags.begin(), flags.end(), false);
        } else if (act < 4) {
            *at = !*at;
            selection.set(index, *at);
        } else if (act == 4) {
            selection.removed(index);
            flags.erase(at);
        } else if (selection.count() > 0) {
            const auto first = std::find(flags.begin(), flags.end(), true);
            const auto end = at > first ? at + 1 : std::find(first, flags.end(), false);
            const auto begin = std::min(first, at);
            std::fill(flags.begin(), begin, false);
            std::fill(begin, end, true);
            std::fill(end, flags.end(), false);
            selection.extendTo(index);
        }
        std::vector<int> expected;
        for (int n = 1; n <= static_cast<int>(flags.size()); ++n) {
            ASSERT_EQ(selection.isSelected(n), flags[static_cast<std::size_t>(n) - 1]);
            if (selection.isSelected(n))
                expected.push_back(n);
        }
        ASSERT_EQ(selection.indices(), expected);
        ASSERT_EQ(selection.count(), static_cast<int>(expected.size()));
        ASSERT_EQ(selection.first(), expected.empty() ? 0 : expected.front());
    }
}

TEST_F(TracksTest, ASelectionLivesInOneTrack) {
    fill(1, {1, 2, 3});
    fill(1, {4, 5}, true);
    press(1, 1);
    press(1, 3, Held::Shift);
    track(1, true).press(2);
    EXPECT_EQ(tracks.SelectedIndex(), 2);
    EXPECT_THAT(track(1).SelectedIndices(), ElementsAre(1)); // collapsed to the first
    EXPECT_FALSE(track(1).isMarked(1));
    EXPECT_TRUE(track(1, true).isMarked(2));
}

TEST_F(TracksTest, HidingTheSelectedOneSelectsTheNextAroundTheEnd) {
    for (const auto& [index, shows, selected] : {std::tuple(12, true, 1),
                                                 {5, true, 1},
                                                 {1, false, 2},
                                                 {2, false, 5},
                                                 {1, true, 5},
                                                 {5, false, 12},
                                                 {12, false, 1},
                                                 {1, false, 0},
                                                 {3, true, 3}}) {
        tracks.setTrackVisible(index, shows);
        EXPECT_EQ(tracks.SelectedIndex(), selected) << index;
    }
}

TEST_F(TracksTest, RemovalMovesTheSelectionAtTheEndOnly) {
    fill(1, {1, 2, 3});
    press(1, 3);
    insert(1, false, {2, {9, 1}}); // what is worked on is the same at another place
    track(1).block()->txtBrightness.type("7");
    writable(document, 1).RemoveTrack(2);
    track(1).Commit();
    EXPECT_EQ(levels(1), "1 2 7");
    for (const auto& [removed, selected] : Pairs{{3, 2}, {1, 1}, {1, 0}}) {
        writable(document, 1).RemoveTrack(removed);
        EXPECT_EQ(track(1).SelectedIndex(), selected);
    }
    EXPECT_EQ(track(1).FocusedIndex(), 0);
}

TEST_F(TracksTest, KeysMoveBetweenSegmentsAndTracks) {
    fill(1, {1, 2, 3});
    insert(1, true, {1, {9, 2.5}});
    press(1, 1);
    for (const auto& [step, to] : Pairs{{1, 2}, {9, 3}}) {
        tracks.moveFocus(step, 0);
        EXPECT_EQ(track(1).SelectedIndex(), to);
    }
    // Below a long one still lasts where the third begins, and then there is no other track.
    for (const auto& [step, to] : Pairs{{1, 2}, {1, 2}, {-1, 1}}) {
        tracks.moveFocus(0, step);
        EXPECT_EQ(tracks.SelectedIndex(), to);
        EXPECT_EQ(tracks.track(to).SelectedIndex(), 1);
    }
    desk.keys.shift = true;
    tracks.moveFocus(1, 0);
    EXPECT_THAT(track(1).SelectedIndices(), ElementsAre(1, 2));
}

TEST_F(TracksTest, WhatIsTypedIsCommittedOnceWithinLimits) {
    fill(1, {50});
    press(1, 1);
    SegmentBlock& block = *track(1).block();
    block.txtBrightness.type("250");
    EXPECT_EQ(block.level1(), 100); // shows at once
    EXPECT_EQ(levels(1), "50");     // and counts later
    block.txtBrightness.leave();
    block.txtBrightness.type("100.4"); // the same
    block.txtBrightness.leave();
    EXPECT_EQ(block.txtBrightness.Text(), "100");
    block.txtTime.type(".05x");
    block.txtBrightness.type("7");
    tracks.loseFocus(); // commits both
    EXPECT_EQ(track(1).block(), nullptr);
    EXPECT_EQ(linesBehind(1), "LumoraBrightness\t1\t0\t1\t50\t100\n"
                              "LumoraBrightness\t1\t0\t1\t100\t7\n"
                              "LumoraTime\t1\t0\t1\t1\t.05\n");
}

TEST_F(TracksTest, AWidthDragIsOneChangeAndNoneIfNothingMoved) {
    fill(1, {50, 60});
    press(1, 1);
    SegmentBlock& block = *track(1).block();
    block.startWidthDrag(2400, tracks.TimeScale(), 60);
    block.moveWidthDrag(60);
    block.endWidthDrag();
    block.startWidthDrag(2400, tracks.TimeScale(), 60);
    // 1.504 s, and both limits, to which the width is pulled back.
    for (const auto& [x, time] :
         {std::pair(60 + 1210, "1.50"), {-99999, "0.01"}, {99999, "2.50"}, {60 - 10, "2.49"}}) {
        block.moveWidthDrag(x);
        EXPECT_EQ(block.txtTime.Text(), time);
        EXPECT_EQ(track(1).GetTrackLeft(2), track(1).GetTrackWidth(1));
        EXPECT_EQ(document.track(1).GetTrack(1).time(), 1);
    }
    block.endWidthDrag();
    EXPECT_EQ(linesBehind(2), "LumoraTime\t1\t0\t1\t1\t2.49\n");
}

TEST_F(TracksTest, ABrightnessDragFollowsThePointerAndCommitsAtTheEnd) {
    fill(1, {50});
    press(1, 1);
    SegmentBlock& block = *track(1).block();
    for (const auto& [y, level] : {std::pair(0, "100"),
                                   {8, "100"},
                                   {9, "99"},
                                   {58, "50"},
                                   {108, "0"},
                                   {200, "0"},
                                   {78, "30"}}) {
        block.dragBrightness(y, 116);
        EXPECT_EQ(block.txtBrightness.Text(), level) << y;
    }
    block.endBrightnessDrag();
    EXPECT_EQ(linesBehind(1), "LumoraBrightness\t1\t0\t1\t50\t30\n");
}

TEST_F(TracksTest, ThePopupKnowsWhatFits) {
    fill(1, {50, 60, 70});
    fill(5, {0});
    SegmentPopup& popup = control.segmentPopup;
    const auto opensOn = [&](int segment, const std::vector<int>& selected) {
        EXPECT_TRUE(popup.prepare(tracks, 1, segment));
        EXPECT_EQ(track(1).SelectedIndices(), selected);
    };
    opensOn(2, {2});
    EXPECT_FALSE(popup.mnuPopupPaste.Enabled());
    EXPECT_TRUE(popup.mnuPopupFunctionNormal.Checked());
    popup.mnuPopupFunctionFromTrip.choose();
    popup.mnuPopupFunctionFromTrip.choose(); // it has it already
    EXPECT_EQ(linesBehind(4), "LumoraFunction\t1\t0\t2\t\tPT\n");
    opensOn(2, {2});
    EXPECT_TRUE(popup.mnuPopupFunctionFromTrip.Checked());
    popup.mnuPopupCopy.choose();
    // Two selected: a right click on the one with the focus keeps both, on another takes it alone.
    press(1, 1);
    press(1, 2, Held::Shift);
    opensOn(2, {1, 2});
    EXPECT_TRUE(popup.mnuPopupPaste.Enabled());
    opensOn(3, {3});
    track(1).block()->startWidthDrag(100, 2400, 0);
    EXPECT_FALSE(popup.prepare(tracks, 1, 3)); // not in the middle of a drag
    track(1).block()->endWidthDrag();

    control.TabStrip1.select(5);
    ASSERT_TRUE(popup.prepare(tracks, 9, 1));
    EXPECT_FALSE(popup.mnuPopupFunction.Visible());
    EXPECT_FALSE(popup.mnuPopupPaste.Enabled()); // a function does not fit here
}

TEST_F(TracksTest, ThePopupAsksInBoxes) {
    fill(1, {50});
    ASSERT_TRUE(control.segmentPopup.prepare(tracks, 1, 1));
    desk.person.inputs = {std::nullopt, "50", "75", "", "1.23"};
    for (int i = 0; i < 3; ++i)
        control.segmentPopup.mnuPopupChangeBrightness.choose();
    for (int i = 0; i < 2; ++i)
        control.segmentPopup.mnuPopupChangeTime.choose();
    EXPECT_EQ(desk.person.asked[0],
              "Change Brightness: What percent brightness should this segment be? 50");
    EXPECT_EQ(desk.person.asked[3],
              "Change Time: How many seconds should this segment take? (minimum 0.01, maximum "
              "2.50) 1.00");
    EXPECT_EQ(linesBehind(1), "LumoraBrightness\t1\t0\t1\t50\t75\nLumoraTime\t1\t0\t1\t1\t.01\n"
                              "LumoraTime\t1\t0\t1\t.01\t1.23\n");
}

TEST_F(TracksTest, TheTracksOwnMenuAddsAndPastesAtTheEnd) {
    fill(2, {10, 20});
    control.TabStrip1.select(2);
    control.trackPopup.prepare(tracks, 4);
    EXPECT_FALSE(control.trackPopup.mnuPopupPaste.Enabled());
    control.trackPopup.mnuPopupAdd.choose();
    control.Clipboard_Copy();
    control.trackPopup.prepare(tracks, 3);
    control.trackPopup.mnuPopupPaste.choose();
    EXPECT_EQ(levels(2, true) + "/" + levels(2), "50/10 20 50");
}

} // namespace
} // namespace corvane
