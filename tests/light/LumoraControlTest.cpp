#include "support/LightBench.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;

class LumoraControlTest : public testing::Test, public LightBench {};

constexpr int AllChannels = 7;
constexpr int Transmitter = 8;
constexpr int Simulator = 9;

TEST_F(LumoraControlTest, BeginsWithItsDefaults) {
    EXPECT_EQ(control.ProductName(), "Lumora");
    EXPECT_EQ(history.Filter(), "Lumora Programs (*.lumora)|*.lumora");
    EXPECT_EQ(lines(), "");
    EXPECT_EQ(desk.folder.content("lines.lumora"), "Lumora\t0\t0\t0\t2\n");
    EXPECT_EQ(control.BlockCountLabel.Caption(), "12/106 blocks used");
    for (int channel = 1; channel <= 6; ++channel) {
        EXPECT_EQ(document.Data(channel, "Max Current"), "100");
        EXPECT_EQ(document.Data(channel, "Light Color"), "FFFFFF");
        EXPECT_EQ(document.Data(channel, "Hysteresis"), "2");
        EXPECT_EQ(document.Data(channel, "Turn Off Point"), "0");
        EXPECT_EQ(document.Data(channel, "Trip Point"), "50");
        EXPECT_EQ(document.Data(channel, "No Signal"), "Top");
        EXPECT_EQ(document.Channel(channel, false).Binary(), channel >= 5);
    }
    EXPECT_EQ(document.Data(0, "XMit Min") + document.Data(3, "XMit Max"), "12001800");
    EXPECT_EQ(document.Data(1, "Nonsense"), "");
    std::vector<std::string> captions;
    for (const TabStrip::Tab& tab : control.TabStrip1.Tabs())
        captions.push_back(tab.Caption);
    EXPECT_THAT(captions,
                ElementsAre("Channel 1", "Channel 2", "Channel 3", "Channel 4", "Channel 5",
                            "Channel 6", "All Channels", "Transmitter", "Simulator"));
}

TEST_F(LumoraControlTest, DataTakesTextLenientlyAndWithinLimits) {
    struct Case {
        const char* name;
        const char* given;
        const char* kept;
    };
    for (const Case& c : std::initializer_list<Case>{{"Max Current", "5", "10"},
                                                     {"Max Current", "300", "250"},
                                                     {"Max Current", "99.5 mA", "100"},
                                                     {"Turn Off Point", "-1", "0"},
                                                     {"Trip Point", "101", "100"},
                                                     {"Hysteresis", "", "0"},
                                                     {"Light Color", "ff", "FF"},
                                                     {"Light Color", "FF0000", "FF0000"},
                                                     {"No Signal", "top", "Bottom"},
                                                     {"No Signal", "Top", "Top"},
                                                     {"XMit Min", "2500", "2200"},
                                                     {"XMit Max", "x", "800"},
                                                     {"Sim Light Position", "3,4", "3,4"}}) {
        setData(document, 2, c.name, c.given);
        EXPECT_EQ(document.Data(2, c.name), c.kept) << c.name << ' ' << c.given;
    }
    EXPECT_EQ(document.Channel(2, true).LightColor(), 0xFF0000); // blue
    EXPECT_EQ(document.Channel(3, true).LightColor(), 0xFFFFFF);
}

TEST_F(LumoraControlTest, BoxesRecordWhatChanged) {
    LumoraOptions& options = control.options;
    control.TabStrip1.select(2);
    const auto enter = [](TextBox& box, const char* text) {
        box.type(text);
        box.leave();
    };
    enter(options.ChannelMaxCurrent, "5");
    enter(options.ChannelMaxCurrent, "300");
    enter(options.ChannelMaxCurrent, "999"); // 250 again: records nothing, the box keeps it
    EXPECT_EQ(options.ChannelMaxCurrent.Text(), "999");
    enter(options.ChannelHysteresis, "");
    enter(options.ChannelTurnOffPoint, "12%");
    options.ChannelNoSignalBottomTrack.choose();
    options.ChannelNoSignalBottomTrack.choose();
    options.ChannelNoSignalTopTrack.choose();
    desk.person.colors = {std::nullopt, 0xFFFFFF, 0x0000FF};
    for (int i = 0; i < 3; ++i)
        options.ChangeLightColorButton.press();
    EXPECT_EQ(options.ChannelLightColorSample.ForeColor(), 0x0000FF);
    enter(options.TransmitterRangeMin, "1000");
    enter(options.TransmitterRangeMax, "900"); // nothing orders the two
    EXPECT_EQ(lines(), "LumoraText\t2\tMax Current\t100\t10\n"
                       "LumoraText\t2\tMax Current\t10\t250\n"
                       "LumoraText\t2\tHysteresis\t2\t0\n"
                       "LumoraText\t2\tTurn Off Point\t0\t12\n"
                       "LumoraText\t2\tNo Signal\tTop\tBottom\n"
                       "LumoraText\t2\tNo Signal\tBottom\tTop\n"
                       "LumoraText\t2\tLight Color\tFFFFFF\tFF\n"
                       "LumoraText\t0\tXMit Min\t1200\t1000\n"
                       "LumoraText\t0\tXMit Max\t1800\t900\n");
    EXPECT_TRUE(options.TransmitterRangeResetButton.Enabled());
    options.TransmitterRangeResetButton.press();
    EXPECT_EQ(document.transmitterMax(), 1800);
    EXPECT_FALSE(options.TransmitterRangeResetButton.Enabled());
    EXPECT_EQ(history.Length(), 11);
    while (history.CanUndo())
        history.Undo(true);
    EXPECT_EQ(options.ChannelMaxCurrent.Text(), "100");
    EXPECT_EQ(options.TransmitterRangeMin.Text(), "1200");
}

TEST_F(LumoraControlTest, EachTabShowsWhatBelongsToIt) {
    LumoraOptions& options = control.options;
    EXPECT_TRUE(options.OptionsFrame.Visible());
    EXPECT_FALSE(options.AdvancedOptionsFrame.Visible());
    EXPECT_EQ(control.tripPoint.TripPointLabel.Caption(), "Trip Point:");
    control.AdvancedButton.press();
    EXPECT_TRUE(options.AdvancedOptionsFrame.Visible());
    EXPECT_EQ(control.AdvancedButton.Caption(), "<< Advanced");
    control.TabStrip1.select(5);
    EXPECT_FALSE(options.ChannelMaxCurrent.Visible()); // only dimmable channels have it
    control.TabStrip1.select(AllChannels);
    EXPECT_FALSE(options.OptionsFrame.Visible());
    EXPECT_FALSE(options.AdvancedOptionsFrame.Visible());
    EXPECT_FALSE(control.AdvancedButton.Visible());
    EXPECT_EQ(control.tripPoint.TripPointLabel.Caption(), "Stick At:");
    EXPECT_TRUE(control.AddButton.Enabled());
    control.TabStrip1.select(Transmitter);
    EXPECT_TRUE(control.IsEditingTransmitter());
    EXPECT_TRUE(options.TransmitterFrame.Visible());
    EXPECT_FALSE(control.tripPoint.TripPointFrame.Visible());
    EXPECT_FALSE(control.TracksFrame.Visible());
    for (const Button* button : {&control.AddButton, &control.ZoomInButton, &control.ZoomOutButton,
                                 &control.ZoomToFitButton}) {
        EXPECT_FALSE(button->Enabled());
        EXPECT_FALSE(button->ToolTipText().empty());
    }
    control.TabStrip1.select(Simulator);
    EXPECT_TRUE(control.tripPoint.TripPointFrame.Visible());
    EXPECT_FALSE(control.TracksFrame.Visible());
    EXPECT_EQ(control.ActiveChannel(), 0);
}

TEST_F(LumoraControlTest, TheTripPointIsTheChannelsOrTheSimulatedLevel) {
    TripPointControl& tripPoint = control.tripPoint;
    control.TabStrip1.select(3);
    tripPoint.TripPointSlider.move(30);              // upside down
    EXPECT_EQ(document.Data(3, "Trip Point"), "50"); // not before it is let go
    tripPoint.TripPointSlider.leave();
    EXPECT_EQ(lines(), "LumoraText\t3\tTrip Point\t50\t70\n");
    control.TabStrip1.select(AllChannels);
    EXPECT_EQ(tripPoint.Value(), 50);
    EXPECT_TRUE(tracks.TrackVisible(2)); // at the trip point the bottom track is in force
    EXPECT_FALSE(tracks.TrackVisible(1));
    tripPoint.TripPointValue.type("60");
    tripPoint.TripPointValue.leave();
    EXPECT_TRUE(tracks.TrackVisible(1));
    EXPECT_TRUE(tracks.TrackVisible(6)); // channel 3 trips at 70
    EXPECT_EQ(history.Length(), 1);
    control.TabStrip1.select(3);
    EXPECT_EQ(tripPoint.Value(), 70);
}

TEST_F(LumoraControlTest, AddAndInsertTakeTheSelectedSegmentForAnExample) {
    control.AddButton.press();
    EXPECT_EQ(lines(), "LumoraTrackInsert\t1\t0\t1\t50\t1\n");
    EXPECT_EQ(track(1).SelectedIndex(), 1);
    EXPECT_EQ(track(1).FocusedIndex(), 1);
    track(1).block()->txtBrightness.type("80");
    control.InsertButton.press(); // what was typed counts first
    control.AddButton.press();
    EXPECT_EQ(levels(1), "80 80 80");
    EXPECT_EQ(track(1).SelectedIndex(), 3);
    track(1).setSelectedIndex(0);
    EXPECT_FALSE(control.InsertButton.Enabled());
    control.tracks.SegmentInsertRequested.raise(1, 0); // none selected: at the beginning
    EXPECT_EQ(levels(1), "50 80 80 80");
    control.TabStrip1.select(5);
    control.AddButton.press();
    EXPECT_EQ(levels(5), "0");
    control.TabStrip1.select(Transmitter);
    const int length = history.Length();
    control.AddButton.press();
    EXPECT_EQ(history.Length(), length);
}

TEST_F(LumoraControlTest, DeletingIsOneStepAndSelectsWhatMovedUp) {
    fill(1, {1, 2, 3, 4, 5});
    track(1).press(4);
    desk.keys.shift = true;
    track(1).press(5);
    desk.keys.shift = false;
    control.DeleteButton.press();
    EXPECT_EQ(levels(1), "1 2 3");
    EXPECT_EQ(track(1).SelectedIndex(), 3);
    history.Undo();
    EXPECT_EQ(levels(1), "1 2 3 4 5");
    track(1).press(2);
    desk.keys.ctrl = true;
    track(1).press(4);
    desk.keys.ctrl = false;
    control.Clipboard_Delete();
    EXPECT_EQ(levels(1), "1 3 5");
    EXPECT_EQ(track(1).SelectedIndex(), 3);
    history.Undo();
    EXPECT_EQ(levels(1), "1 2 3 4 5");
    track(1).press(1);
    desk.keys.shift = true;
    track(1).press(5);
    control.DeleteButton.press();
    EXPECT_EQ(levels(1), "");
    EXPECT_FALSE(control.DeleteButton.Enabled());
    control.DeleteButton.press();
    EXPECT_EQ(history.Length(), 6);
}

TEST_F(LumoraControlTest, CopiesAndPastesInARow) {
    int updates = 0;
    const Connection onUpdate = control.Clipboard_Messenger().MessageReceived.connect(
        [&](std::string_view message, const void* sender, MessageValue&) {
            updates += message == "Update" && sender == &control ? 1 : 0;
        });
    fill(1, {10, 20});
    EXPECT_FALSE(control.Clipboard_CanCopy());
    EXPECT_FALSE(control.Clipboard_CanPaste());
    track(1).press(1);
    EXPECT_TRUE(control.Clipboard_CanCut());
    desk.keys.shift = true;
    track(1).press(2);
    desk.keys.shift = false;
    control.Clipboard_Copy();
    EXPECT_GE(updates, 2);
    track(1).press(2);
    control.Clipboard_Paste();
    EXPECT_EQ(levels(1), "10 10 20 20");
    EXPECT_EQ(track(1).SelectedIndex(), 4); // still the same segment
    history.Undo();
    EXPECT_EQ(levels(1), "10 20");
    control.TabStrip1.select(6);
    control.Clipboard_Paste(); // into an empty two-level track
    EXPECT_EQ(levels(6), "0 0");
    control.TabStrip1.select(Simulator);
    EXPECT_FALSE(control.Clipboard_CanPaste());
    EXPECT_FALSE(control.Clipboard_CanCopy());
    control.TabStrip1.select(1);
    track(1).press(1);
    control.Clipboard_Cut();
    EXPECT_EQ(levels(1), "20");
    control.Clipboard_Paste(2, 1);
    EXPECT_EQ(levels(1, true), "10");
}

TEST_F(LumoraControlTest, FunctionsDoNotFitIntoTwoLevelTracks) {
    insert(1, false, {1, {90, 0.5, "P", 10}});
    track(1).press(1);
    control.Clipboard_Copy();
    EXPECT_TRUE(control.Clipboard_IsDataAdvanced());
    control.Clipboard_Paste();
    EXPECT_EQ(document.track(1).GetTrack(1).brightness2(), 10);
    control.TabStrip1.select(5);
    EXPECT_FALSE(control.Clipboard_CanPaste());
    control.Clipboard_Paste();
    EXPECT_EQ(levels(5), "");
}

TEST_F(LumoraControlTest, CountsBlocksAndWarnsWhenThereAreTooMany) {
    fill(1, std::vector<int>(95, 10));
    EXPECT_EQ(control.BlockCountLabel.Caption(), "106/106 blocks used");
    EXPECT_EQ(control.BlockCountLabel.ForeColor(), 0);
    track(1).press(1);
    ASSERT_TRUE(control.segmentPopup.prepare(tracks, 1, 1));
    control.segmentPopup.mnuPopupFunctionProportional.choose();
    EXPECT_EQ(control.BlockCountLabel.Caption(), "107/106 blocks used");
    EXPECT_EQ(control.BlockCountLabel.ForeColor(), 255);
    history.Undo();
    EXPECT_EQ(control.BlockCountLabel.ForeColor(), 0);
}

struct SwitchCase {
    int tab;
    int channel;
    const char* property;
    const char* rest; // of the question; nothing if none is asked
    int tabAfter;
};

class SwitchingChannels : public testing::TestWithParam<SwitchCase>, public LightBench {};

TEST_P(SwitchingChannels, AsksBeforeAChangeOutOfView) {
    const SwitchCase& c = GetParam();
    auto change = std::make_unique<LumoraUndoableTextChange>();
    change->Initialize(document, c.channel, c.property, "1");
    history.Record(std::move(change));
    control.TabStrip1.select(c.tab);
    if (c.rest != nullptr) {
        desk.person.answers = {Answer::No, Answer::Yes};
        history.Undo();
        EXPECT_EQ(desk.person.messages.size(), 1U);
        EXPECT_EQ(desk.person.messages.back().buttons, MessageBox::Buttons::YesNo);
        EXPECT_EQ(desk.person.takeMessage(),
                  std::string("Switch Channels: The change you are about to undo") + c.rest);
        EXPECT_EQ(control.TabStrip1.SelectedIndex(), c.tab);
        EXPECT_EQ(history.position(), 1);
    }
    history.Undo();
    EXPECT_EQ(history.position(), 0);
    EXPECT_EQ(control.TabStrip1.SelectedIndex(), c.tabAfter);
    desk.person.messages.clear();
    history.Redo();
    EXPECT_TRUE(desk.person.messages.empty()); // it is in view by now
    EXPECT_EQ(history.position(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SwitchingChannels,
    testing::Values(
        SwitchCase{2, 1, "Sim Light Image",
                   " occurs in the simulator. You are presently editing channel 2.\r\n\r\nWould "
                   "you like to go to the simulator and make the change?",
                   Simulator},
        SwitchCase{2, 0, "XMit Min",
                   " occurs in the transmitter. You are presently editing channel 2.\r\n\r\nWould "
                   "you like to go to the transmitter and make the change?",
                   Transmitter},
        SwitchCase{2, 4, "Trip Point",
                   " occurs on channel 4. You are presently editing channel 2.\r\n\r\nWould you "
                   "like to switch channels and make the change?",
                   4},
        SwitchCase{2, 2, "Trip Point", nullptr, 2},
        SwitchCase{AllChannels, 1, "Sim Light Image",
                   " occurs in the simulator. \r\n\r\nWould you like to go to the simulator and "
                   "make the change?",
                   Simulator},
        SwitchCase{AllChannels, 0, "XMit Max",
                   " occurs in the transmitter. \r\n\r\nWould you like to go to the transmitter "
                   "and make the change?",
                   Transmitter},
        SwitchCase{AllChannels, 3, "Hysteresis", nullptr, AllChannels},
        SwitchCase{Simulator, 1, "Sim Light Image", nullptr, Simulator},
        SwitchCase{Simulator, 0, "XMit Min",
                   " occurs in the transmiter. You are presently in the simulator.\r\n\r\nWould "
                   "you like to go to the transmitter and make the change?",
                   Transmitter},
        SwitchCase{Simulator, 3, "Hysteresis",
                   " occurs on channel 3. You are presently in the simulator.\r\n\r\nWould you "
                   "like to go to channel 3 and make the change?",
                   3},
        SwitchCase{Transmitter, 0, "XMit Min", nullptr, Transmitter},
        SwitchCase{Transmitter, 1, "Sim Background Color",
                   " occurs in the simulator. You are presently in the transmitter.\r\n\r\nWould "
                   "you like to go to the simulator and make the change?",
                   Simulator},
        SwitchCase{Transmitter, 6, "No Signal",
                   " occurs on channel 6. You are presently in the transmitter.\r\n\r\nWould you "
                   "like to go to channel 6 and make the change?",
                   6}));

TEST_F(LumoraControlTest, SaysRedoWhenItRedoes) {
    fill(3, {10});
    control.TabStrip1.select(3);
    history.Undo();
    control.TabStrip1.select(Simulator);
    desk.person.answers = {Answer::Yes};
    history.Redo();
    EXPECT_EQ(desk.person.takeMessage(),
              "Switch Channels: The change you are about to redo occurs on channel 3. You are "
              "presently in the simulator.\r\n\r\nWould you like to go to channel 3 and make the "
              "change?");
    EXPECT_EQ(control.TabStrip1.SelectedIndex(), 3);
    EXPECT_EQ(levels(3), "10");
}

TEST_F(LumoraControlTest, AMarkInAFileNeitherAsksNorMoves) {
    EXPECT_TRUE(history.OpenHistory(desk.folder.file(
        "a.lumora", "Lumora\t2\t2\t0\t2\nLumoraText\t1\tTrip Point\t50\t20\nMarker\tNothing\n")));
    control.TabStrip1.select(4);
    history.Undo();
    history.Redo();
    EXPECT_TRUE(desk.person.messages.empty());
    EXPECT_EQ(control.TabStrip1.SelectedIndex(), 4);
}

TEST_F(LumoraControlTest, OpeningFitsTheTimeAxisAndANewDocumentTakesTheUsualOne) {
    fill(1, std::vector<int>(20, 50));
    const std::string path = desk.folder.path() / "lines.lumora";
    static_cast<void>(lines());
    EXPECT_TRUE(history.OpenHistory(path));
    EXPECT_NEAR(track(1).ContentWidth(), 9000, 30);
    EXPECT_TRUE(history.NewHistory());
    EXPECT_EQ(tracks.TimeScale(), 2400);
    EXPECT_EQ(control.BlockCountLabel.Caption(), "12/106 blocks used");
    // Asked for before there is any room, it waits for it.
    LumoraControl early(desk.place, desk.keys);
    EXPECT_TRUE(early.HistoryObject()->OpenHistory(path));
    early.tracks.Resize(9000, 3000);
    EXPECT_NEAR(early.tracks.track(1).ContentWidth(), 9000, 30);
}

} // namespace
} // namespace corvane
