#include "history/FreezeScope.h"
#include "support/Instrumented.h"
#include "support/LightBench.h"

#include <gmock/gmock.h>

#include <random>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TracksTest : public testing::Test, public LightBench {
  protected:
    using Pairs = std::vector<std::pair<int, int>>;
    /// The lines of the last few changes.
    std::string lastLine() {
        const std::string all = lines();
        const std::size_t end = all.rfind('\n', all.size() - 2);
        return all.substr(end == std::string::npos ? 0 : end + 1);
    }
};

TEST_F(TracksTest, LieSideBySideOnOneTimeAxis) {
    fill(1, {10, 20});
    insert(1, false, {2, {5, 0.25}});
    LumoraTrackEditor& editor = track(1);
    EXPECT_EQ(editor.GetTrackLeft(1), 0);
    EXPECT_EQ(editor.GetTrackWidth(1), 2400);
    EXPECT_EQ(editor.GetTrackLeft(2), 2400);
    EXPECT_EQ(editor.GetTrackWidth(2), 600);
    EXPECT_EQ(editor.ContentWidth(), 5400);
    for (const auto& [x, index] : Pairs{{2399, 1}, {2400, 2}, {5399, 3}, {5400, 0}, {-1, 0}})
        EXPECT_EQ(editor.indexAt(x), index);
    EXPECT_EQ(tracks.HScroll.Max(), 0); // all of it fits
    history.Undo();
    EXPECT_EQ(editor.ContentWidth(), 4800);
}

TEST_F(TracksTest, ShareTheHeightAmongThoseThatShow) {
    EXPECT_TRUE(tracks.TrackVisible(1));
    EXPECT_TRUE(tracks.TrackVisible(2));
    EXPECT_FALSE(tracks.TrackVisible(3));
    EXPECT_EQ(tracks.TrackTop(2), 1500);
    EXPECT_EQ(tracks.TrackHeight(1), 1500 - 15); // a pixel lies between
    tracks.Resize(9000, 20);
    EXPECT_EQ(tracks.TrackHeight(1), 10);
    tracks.Resize(9000, -5);
    EXPECT_EQ(tracks.TrackHeight(1), 0);
}

TEST_F(TracksTest, ScrollNoFartherThanTheirContent) {
    fill(1, std::vector<int>(8, 50)); // 8 s: 19200 twips in 9000
    EXPECT_EQ(tracks.HScroll.Max(), 4250);
    EXPECT_EQ(tracks.HScroll.SmallChange(), 375);
    EXPECT_EQ(tracks.HScroll.LargeChange(), 1875);
    tracks.HScroll.setValue(999999);
    EXPECT_EQ(tracks.scrollOffset(), 10200);
    tracks.setTimeScale(2401); // the overflow is no whole number of steps any more
    tracks.HScroll.setValue(tracks.HScroll.Max());
    EXPECT_EQ(tracks.scrollOffset(), track(1).ContentWidth() - 9000);
    tracks.setTrackVisible(1, false); // what does not show does not count
    EXPECT_EQ(tracks.HScroll.Max(), 0);
    EXPECT_EQ(tracks.scrollOffset(), 0);
}

TEST_F(TracksTest, ZoomWithinTheirLimits) {
    using Tracks = LumoraScrollableTracks;
    const auto zoom = [this](float from, void (Tracks::*step)()) {
        tracks.setTimeScale(from);
        (tracks.*step)();
        return tracks.TimeScale();
    };
    EXPECT_EQ(zoom(307200, &Tracks::ZoomIn), 307200);
    EXPECT_EQ(zoom(18.75, &Tracks::ZoomOut), 18.75);
    EXPECT_EQ(zoom(18.75, &Tracks::ZoomToDefault), 2400);
    EXPECT_EQ(zoom(2400, &Tracks::ZoomIn), 4800);
    EXPECT_EQ(zoom(4800, &Tracks::ZoomToFit), 4800); // nothing to fit
    insert(1, false, {1, {50, 0.01}});
    tracks.ZoomToFit();
    EXPECT_EQ(tracks.TimeScale(), 307200);
    for (int i = 2; i <= 20; ++i)
        insert(1, false, {i, {50, 2.5}});
    EXPECT_LE(track(1).ContentWidth(), 15 * 16383 * 130); // until the scale is next set
    tracks.setTimeScale(300000);
    EXPECT_LE(track(1).ContentWidth(), 15 * 16383 + 20);
    tracks.ZoomToFit();
    EXPECT_LE(track(1).ContentWidth(), 9000);
    EXPECT_GT(track(1).ContentWidth(), 8500);
    EXPECT_EQ(LumoraScrollableTracks::ClampZoom(1e30F), 307200);
    EXPECT_EQ(LumoraScrollableTracks::ClampZoom(-1), 18.75);
}

TEST_F(TracksTest, NoLengthIsTooMuchToZoom) {
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
        for (const auto zoom :
             {&LumoraScrollableTracks::ZoomToFit, &LumoraScrollableTracks::ZoomIn,
              &LumoraScrollableTracks::ZoomToDefault, &LumoraScrollableTracks::ZoomToFit,
              &LumoraScrollableTracks::ZoomOut}) {
            (tracks.*zoom)();
            EXPECT_LE(this->track(1).ContentWidth(), 15 * 16383) << count << " of " << seconds;
            EXPECT_GT(tracks.TimeScale(), 0);
        }
        tracks.ZoomToFit();
        const float fitting = tracks.TimeScale();
        tracks.ZoomToFit();
        EXPECT_EQ(tracks.TimeScale(), fitting) << count << " of " << seconds;
    }
}

TEST_F(TracksTest, WhatNoLineOfAFileCouldHoldIsRefused) {
    std::vector<LumoraPlacedElement> segments;
    for (int index = 1; index <= 200000; ++index)
        segments.push_back({index, {50, 1, "P"}});
    auto change = std::make_unique<LumoraUndoableTrackChange>();
    change->InitializeGroup(document, true, 1, false, segments);
    EXPECT_FALSE(history.Record(std::move(change)));
    EXPECT_EQ(desk.person.takeMessage(), std::string("Error: ") + History::NotRecorded);
    EXPECT_EQ(history.Length(), 0);
    EXPECT_EQ(document.track(1).GetTrackCount(), 0);
    segments.pop_back();
    LumoraUndoableTrackChange fitting;
    fitting.InitializeGroup(document, true, 1, false, segments);
    EXPECT_TRUE(fitting.isApplicable());
}

TEST_F(TracksTest, FocusBringsASegmentIntoView) {
    fill(1, std::vector<int>(8, 50));
    tracks.FocusOn(1, 8);
    EXPECT_EQ(tracks.scrollOffset(), 10200);
    EXPECT_EQ(track(1).SelectedIndex(), 8);
    EXPECT_EQ(track(1).FocusedIndex(), 8);
    for (const int inView : {2, 3}) {
        tracks.FocusOn(1, inView);
        EXPECT_EQ(tracks.scrollOffset(), 2400);
    }
    tracks.Resize(1000, 3000);
    tracks.FocusOn(1, 5); // wider than the view: its left edge counts
    EXPECT_EQ(tracks.scrollOffset(), 9600);
    tracks.FocusOn(0, 5);
    tracks.FocusOn(1, 0);
    EXPECT_EQ(track(1).FocusedIndex(), 5);
}

TEST_F(TracksTest, AClickSelectsExtendsOrToggles) {
    fill(1, {1, 2, 3, 4, 5});
    LumoraTrackEditor& editor = track(1);
    editor.press(2);
    EXPECT_THAT(editor.SelectedIndices(), ElementsAre(2));
    desk.keys.shift = true;
    editor.press(4);
    EXPECT_THAT(editor.SelectedIndices(), ElementsAre(2, 3, 4));
    editor.press(3);
    EXPECT_THAT(editor.SelectedIndices(), ElementsAre(2, 3));
    desk.keys = {};
    desk.keys.ctrl = true;
    editor.press(5);
    editor.press(2);
    EXPECT_THAT(editor.SelectedIndices(), ElementsAre(3, 5));
    EXPECT_TRUE(editor.isMarked(5));
    desk.keys.ctrl = false;
    editor.press(5); // it has the focus already, and the click counts all the same
    EXPECT_THAT(editor.SelectedIndices(), ElementsAre(5));
}

TEST(TrackSelection, IsWhatAFlagForEachSegmentWouldBe) {
    TrackSelection selection;
    std::vector<bool> flags;
    std::mt19937 random(5);
    const auto below = [&random](std::size_t limit) { return static_cast<int>(random() % limit); };
    for (int i = 0; i < 4000; ++i) {
        const int size = static_cast<int>(flags.size());
        const int index = below(flags.size() + 1) + 1;
        const auto at = flags.begin() + (index - 1);
        switch (below(size < 12 ? 4 : 8)) {
        case 0:
        case 1:
            selection.inserted(index);
            flags.insert(at, false);
            break;
        case 2:
            selection.selectOnly(index);
            std::fill(flags.begin(), flags.end(), false);
            if (index <= size)
                flags[static_cast<std::size_t>(index) - 1] = true;
            break;
        case 3:
        case 4:
        case 5:
            if (index <= size)
                *at = !*at;
            selection.set(index, index <= size && *at);
            break;
        case 6:
            if (index <= size) {
                selection.removed(index);
                flags.erase(at);
            }
            break;
        default:
            if (index <= size && selection.count() > 0) {
                const auto first = std::find(flags.begin(), flags.end(), true);
                const auto end = at < first   ? std::find(first, flags.end(), false)
                                 : at > first ? at + 1
                                              : std::find(first, flags.end(), false);
                const auto begin = std::min(first, at);
                std::fill(flags.begin(), begin, false);
                std::fill(begin, end, true);
                std::fill(end, flags.end(), false);
                selection.extendTo(index);
            }
        }
        std::vector<int> expected;
        for (std::size_t n = 0; n < flags.size(); ++n) {
            ASSERT_EQ(selection.isSelected(static_cast<int>(n) + 1), flags[n]);
            if (flags[n])
                expected.push_back(static_cast<int>(n) + 1);
        }
        ASSERT_EQ(selection.indices(), expected);
        ASSERT_EQ(selection.count(), static_cast<int>(expected.size()));
        ASSERT_EQ(selection.first(), expected.empty() ? 0 : expected.front());
    }
}

TEST_F(TracksTest, ASelectionLivesInOneTrack) {
    fill(1, {1, 2, 3});
    fill(1, {4, 5}, true);
    track(1).press(1);
    desk.keys.shift = true;
    track(1).press(3);
    desk.keys.shift = false;
    track(1, true).press(2);
    EXPECT_EQ(tracks.SelectedIndex(), 2);
    EXPECT_THAT(track(1).SelectedIndices(), ElementsAre(1)); // collapsed to the first
    EXPECT_FALSE(track(1).isMarked(1));
    EXPECT_TRUE(track(1, true).isMarked(2));
    tracks.setTrackVisible(2, false);
    EXPECT_EQ(tracks.SelectedIndex(), 1);
    tracks.setTrackVisible(1, false);
    EXPECT_EQ(tracks.SelectedIndex(), 0);
    tracks.setTrackVisible(3, true);
    EXPECT_EQ(tracks.SelectedIndex(), 3);
}

TEST_F(TracksTest, HidingTheLastSelectsTheNextAroundTheEnd) {
    for (const int index : {5, 12})
        tracks.setTrackVisible(index, true);
    tracks.setSelectedIndex(12);
    tracks.setTrackVisible(1, false);
    tracks.setTrackVisible(12, false);
    EXPECT_EQ(tracks.SelectedIndex(), 2);
}

TEST_F(TracksTest, RemovalMovesTheSelectionAtTheEndOnly) {
    fill(1, {1, 2, 3});
    track(1).press(3);
    insert(1, false, {2, {9, 1}}); // what is worked on is the same at another place
    track(1).block()->txtBrightness.type("7");
    writable(document, 1).RemoveTrack(2);
    track(1).Commit();
    EXPECT_EQ(levels(1), "1 2 7");
    writable(document, 1).RemoveTrack(3);
    EXPECT_EQ(track(1).SelectedIndex(), 2);
    writable(document, 1).RemoveTrack(1);
    EXPECT_EQ(track(1).SelectedIndex(), 1);
    writable(document, 1).RemoveTrack(1);
    EXPECT_EQ(track(1).SelectedIndex(), 0);
    EXPECT_EQ(track(1).FocusedIndex(), 0);
}

TEST_F(TracksTest, KeysMoveBetweenSegmentsAndTracks) {
    fill(1, {1, 2, 3});
    insert(1, true, {1, {9, 2.5}});
    track(1).press(1);
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
    track(1).press(1);
    SegmentBlock& block = *track(1).block();
    EXPECT_EQ(block.txtBrightness.Text(), "50");
    EXPECT_EQ(block.txtTime.Text(), "1.00");
    block.txtBrightness.type("250");
    EXPECT_EQ(block.level1(), 100); // shows at once
    EXPECT_EQ(levels(1), "50");     // and counts later
    block.txtBrightness.leave();
    EXPECT_EQ(block.txtBrightness.Text(), "100");
    EXPECT_EQ(lastLine(), "LumoraBrightness\t1\t0\t1\t50\t100\n");
    block.txtBrightness.type("100.4");
    const int length = history.Length();
    block.txtBrightness.leave();
    EXPECT_EQ(history.Length(), length);
    EXPECT_EQ(block.txtBrightness.Text(), "100");
    block.txtTime.type(".05x");
    block.txtBrightness.type("7");
    tracks.loseFocus(); // commits both
    EXPECT_EQ(lastLine(), "LumoraTime\t1\t0\t1\t1\t.05\n");
    EXPECT_EQ(levels(1), "7");
    EXPECT_EQ(track(1).block(), nullptr);
    history.Undo();
    history.Undo();
    EXPECT_EQ(document.track(1).GetTrack(1).time(), 1);
}

TEST_F(TracksTest, AWidthDragIsOneChangeAndNoneIfNothingMoved) {
    fill(1, {50, 60});
    track(1).press(1);
    SegmentBlock& block = *track(1).block();
    const int length = history.Length();
    block.startWidthDrag(track(1).GetTrackWidth(1), tracks.TimeScale(), 60);
    block.moveWidthDrag(60);
    block.endWidthDrag();
    EXPECT_EQ(history.Length(), length);

    block.startWidthDrag(2400, tracks.TimeScale(), 60);
    block.moveWidthDrag(60 + 1210); // 1.504 s
    EXPECT_EQ(block.txtTime.Text(), "1.50");
    EXPECT_EQ(track(1).GetTrackWidth(1), 3600);
    EXPECT_EQ(track(1).GetTrackLeft(2), 3600);
    EXPECT_EQ(document.track(1).GetTrack(1).time(), 1);
    block.moveWidthDrag(-99999);
    EXPECT_EQ(block.txtTime.Text(), "0.01");
    block.moveWidthDrag(99999);
    EXPECT_EQ(block.txtTime.Text(), "2.50");
    block.moveWidthDrag(60 - 10); // the width was pulled back to the limit
    EXPECT_EQ(block.txtTime.Text(), "2.49");
    block.endWidthDrag();
    EXPECT_EQ(history.Length(), length + 1);
    EXPECT_EQ(lastLine(), "LumoraTime\t1\t0\t1\t1\t2.49\n");
}

TEST_F(TracksTest, ABrightnessDragFollowsThePointerAndCommitsAtTheEnd) {
    fill(1, {50});
    track(1).press(1);
    SegmentBlock& block = *track(1).block();
    const std::vector<std::pair<double, std::string>> places{{0, "100"}, {8, "100"}, {9, "99"},
                                                             {58, "50"}, {108, "0"}, {116, "0"},
                                                             {200, "0"}, {-9, "100"}};
    for (const auto& [y, level] : places) {
        block.dragBrightness(y, 116);
        EXPECT_EQ(block.txtBrightness.Text(), level) << y;
    }
    const int length = history.Length();
    block.dragBrightness(78, 116);
    block.endBrightnessDrag();
    EXPECT_EQ(history.Length(), length + 1);
    EXPECT_EQ(levels(1), "30");
}

TEST_F(TracksTest, ThePopupKnowsWhatFits) {
    fill(1, {50, 60, 70});
    fill(5, {0});
    SegmentPopup& popup = control.segmentPopup;
    ASSERT_TRUE(popup.prepare(tracks, 1, 2));
    EXPECT_THAT(track(1).SelectedIndices(), ElementsAre(2));
    EXPECT_FALSE(popup.mnuPopupPaste.Enabled());
    EXPECT_TRUE(popup.mnuPopupFunction.Visible());
    EXPECT_TRUE(popup.mnuPopupFunctionNormal.Checked());
    popup.mnuPopupFunctionFromTrip.choose();
    EXPECT_EQ(lastLine(), "LumoraFunction\t1\t0\t2\t\tPT\n");
    const int length = history.Length();
    popup.mnuPopupFunctionFromTrip.choose(); // it has it already
    EXPECT_EQ(history.Length(), length);
    ASSERT_TRUE(popup.prepare(tracks, 1, 2));
    EXPECT_TRUE(popup.mnuPopupFunctionFromTrip.Checked());
    popup.mnuPopupCopy.choose();
    ASSERT_TRUE(popup.prepare(tracks, 1, 1));
    EXPECT_TRUE(popup.mnuPopupPaste.Enabled());

    // Two selected: a right click on the one with the focus keeps both, on another takes it alone.
    track(1).press(1);
    desk.keys.shift = true;
    track(1).press(2);
    desk.keys.shift = false;
    ASSERT_TRUE(popup.prepare(tracks, 1, 2));
    EXPECT_THAT(track(1).SelectedIndices(), ElementsAre(1, 2));
    ASSERT_TRUE(popup.prepare(tracks, 1, 3));
    EXPECT_THAT(track(1).SelectedIndices(), ElementsAre(3));
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
    EXPECT_EQ(desk.person.asked.front(),
              "Change Brightness: What percent brightness should this segment be? 50");
    EXPECT_EQ(lastLine(), "LumoraBrightness\t1\t0\t1\t50\t75\n");
    control.segmentPopup.mnuPopupChangeTime.choose();
    EXPECT_EQ(desk.person.asked.back(),
              "Change Time: How many seconds should this segment take? (minimum 0.01, maximum "
              "2.50) 1.00");
    EXPECT_EQ(lastLine(), "LumoraTime\t1\t0\t1\t1\t.01\n");
    control.segmentPopup.mnuPopupChangeTime.choose();
    EXPECT_EQ(lastLine(), "LumoraTime\t1\t0\t1\t.01\t1.23\n");
}

TEST_F(TracksTest, TheTracksOwnMenuAddsAndPastesAtTheEnd) {
    fill(2, {10, 20});
    control.TabStrip1.select(2);
    control.trackPopup.prepare(tracks, 4);
    EXPECT_EQ(tracks.SelectedIndex(), 4);
    EXPECT_FALSE(control.trackPopup.mnuPopupPaste.Enabled());
    control.trackPopup.mnuPopupAdd.choose();
    EXPECT_EQ(levels(2, true), "50");
    control.Clipboard_Copy();
    control.trackPopup.prepare(tracks, 3);
    control.trackPopup.mnuPopupPaste.choose();
    EXPECT_EQ(levels(2), "10 20 50");
}

} // namespace
} // namespace corvane
