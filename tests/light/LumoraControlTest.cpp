#include "support/LightBench.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

class LumoraControlTest : public testing::Test, public LightBench {};

constexpr int AllChannels = 7;
constexpr int Transmitter = 8;
constexpr int Simulator = 9;

TEST_F(LumoraControlTest, BeginsWithItsDefaults) {
    EXPECT_EQ(lines(), "");
    EXPECT_EQ(desk.folder.content("lines"), "Lumora\t0\t0\t0\t2\n");
    for (int channel = 1; channel <= 6; ++channel) {
        std::string settings;
        for (const char* name : {"Max Current", "Light Color", "Hysteresis", "Turn Off Point",
                                 "Trip Point", "No Signal", "XMit Min", "XMit Max", "Nonsense"})
            settings += document.Data(channel, name) + " ";
        EXPECT_EQ(settings, "100 FFFFFF 2 0 50 Top 1200 1800  ");
        EXPECT_EQ(document.Channel(channel, false).Binary(), channel >= 5);
    }
    std::string captions;
    for (const TabStrip::Tab& tab : control.TabStrip1.Tabs())
        captions += tab.Caption + "|";
    EXPECT_EQ(captions, "Channel 1|Channel 2|Channel 3|Channel 4|Channel 5|Channel 6|"
                        "All Channels|Transmitter|Simulator|");
}

TEST_F(LumoraControlTest, DataTakesTextLenientlyAndWithinLimits) {
    using Row = std::array<const char*, 3>; // name, as given, as kept
    for (const auto& [name, given, kept] :
         std::initializer_list<Row>{{"Max Current", "5", "10"},
                                    {"Max Current", "300", "250"},
                                    {"Max Current", "99.5 mA", "100"},
                                    {"Turn Off Point", "-1", "0"},
                                    {"Trip Point", "101", "100"},
                                    {"Hysteresis", "", "0"},
                                    {"Light Color", "ff", "FF"},
                                    {"No Signal", "top", "Bottom"},
                                    {"XMit Min", "2500", "2200"},
                                    {"XMit Max", "x", "800"},
                                    {"Sim Light Position", "3", "3,0"}}) {
        setData(document, 2, name, given);
        EXPECT_EQ(document.Data(2, name), kept) << name << ' ' << given;
    }
}

TEST_F(LumoraControlTest, BoxesRecordWhatChanged) {
    LumoraOptions& options = control.options;
    control.TabStrip1.select(2);
    for (const char* text : {"300", "999"}) { // 250 both times: the box keeps the second
        options.ChannelMaxCurrent.type(text);
        options.ChannelMaxCurrent.leave();
    }
    EXPECT_EQ(options.ChannelMaxCurrent.Text(), "999");
    options.ChannelNoSignalBottomTrack.choose();
    options.ChannelNoSignalBottomTrack.choose();
    desk.person.colors = {std::nullopt, 0xFFFFFF, 0x0000FF};
    for (int i = 0; i < 3; ++i)
        options.ChangeLightColorButton.press();
    EXPECT_EQ(options.ChannelLightColorSample.ForeColor(), 0x0000FF);
    options.TransmitterRangeMax.type("900"); // nothing orders the two
    options.TransmitterRangeMax.leave();
    EXPECT_EQ(lines(), "LumoraText\t2\tMax Current\t100\t250\n"
                       "LumoraText\t2\tNo Signal\tTop\tBottom\n"
                       "LumoraText\t2\tLight Color\tFFFFFF\tFF\n"
                       "LumoraText\t0\tXMit Max\t1800\t900\n");
    options.TransmitterRangeResetButton.press();
    EXPECT_EQ(document.transmitterMax(), 1800);
    EXPECT_FALSE(options.TransmitterRangeResetButton.Enabled());
    while (history.CanUndo())
        history.Undo(true);
    EXPECT_EQ(options.ChannelMaxCurrent.Text(), "100");
    EXPECT_TRUE(options.ChannelNoSignalTopTrack.Value());
}

TEST_F(LumoraControlTest, EachTabShowsWhatBelongsToIt) {
    LumoraOptions& options = control.options;
    EXPECT_FALSE(options.AdvancedOptionsFrame.Visible());
    control.AdvancedButton.press();
    EXPECT_EQ(control.AdvancedButton.Caption(), "<< Advanced");
    for (const auto& [tab, parts] : {std::pair(1, "options current advanced trip tracks add "),
                                     {5, "options advanced trip tracks add "},
                                     {AllChannels, "stick tracks add "},
                                     {Transmitter, "transmitter "},
                                     {Simulator, "stick "}}) {
        control.TabStrip1.select(tab);
        std::string shown;
        const auto note = [&shown](const char* part, bool shows) {
            shown += shows ? std::string(part) + " " : std::string();
        };
        const bool onChannel = options.OptionsFrame.Visible();
        note("options", onChannel);
        note("current", onChannel && options.ChannelMaxCurrent.Visible());
        note("advanced",
             options.AdvancedOptionsFrame.Visible() && control.AdvancedButton.Visible());
        note("transmitter", options.TransmitterFrame.Visible());
        if (control.tripPoint.TripPointFrame.Visible())
            note(control.tripPoint.TripPointLabel.Caption() == "Trip Point:" ? "trip" : "stick",
                 true);
        note("tracks", control.TracksFrame.Visible());
        note("add", control.AddButton.Enabled() && control.ZoomInButton.Enabled());
        EXPECT_EQ(shown, parts) << tab;
    }
}

TEST_F(LumoraControlTest, TheTripPointIsTheChannelsOrTheSimulatedLevel) {
    TripPointControl& tripPoint = control.tripPoint;
    control.TabStrip1.select(3);
    tripPoint.TripPointSlider.move(30); // upside down
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
}

TEST_F(LumoraControlTest, AddAndInsertTakeTheSelectedSegmentForAnExample) {
    control.AddButton.press();
    EXPECT_EQ(lines(), "LumoraTrackInsert\t1\t0\t1\t50\t1\n");
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
}

TEST_F(LumoraControlTest, DeletingIsOneStepAndSelectsWhatMovedUp) {
    fill(1, {1, 2, 3, 4, 5});
    for (const auto& [from, to, held, left, selected] : {std::tuple(4, 5, Held::Shift, "1 2 3", 3),
                                                         {2, 4, Held::Ctrl, "1 3 5", 3},
                                                         {1, 5, Held::Shift, "", 0}}) {
        press(1, from);
        press(1, to, held);
        control.DeleteButton.press();
        EXPECT_EQ(levels(1), left);
        EXPECT_EQ(track(1).SelectedIndex(), selected);
        EXPECT_EQ(control.DeleteButton.Enabled(), selected != 0);
        history.Undo();
        EXPECT_EQ(levels(1), "1 2 3 4 5");
    }
}

TEST_F(LumoraControlTest, CopiesAndPastesInARow) {
    fill(1, {10, 20});
    EXPECT_FALSE(control.Clipboard_CanCopy());
    EXPECT_FALSE(control.Clipboard_CanPaste());
    press(1, 1);
    press(1, 2, Held::Shift);
    int updates = 0;
    const Connection onUpdate = control.Clipboard_Messenger().MessageReceived.connect(
        [&](std::string_view message, const void*, MessageValue&) {
            updates += message == "Update";
        });
    control.Clipboard_Copy();
    EXPECT_EQ(updates, 1);
    press(1, 2);
    control.Clipboard_Paste();
    EXPECT_EQ(levels(1), "10 10 20 20");
    EXPECT_EQ(track(1).SelectedIndex(), 4); // still the same segment
    control.TabStrip1.select(6);
    control.Clipboard_Paste(); // into an empty two-level track
    EXPECT_EQ(levels(6), "0 0");
    control.TabStrip1.select(Simulator);
    EXPECT_FALSE(control.Clipboard_CanPaste() || control.Clipboard_CanCopy());
    control.TabStrip1.select(1);
    press(1, 1);
    control.Clipboard_Cut();
    control.Clipboard_Paste(2, 1);
    EXPECT_EQ(levels(1) + "/" + levels(1, true), "10 20 20/10");
}

TEST_F(LumoraControlTest, CountsBlocksAndWarnsWhenThereAreTooMany) {
    EXPECT_EQ(control.BlockCountLabel.Caption(), "12/106 blocks used");
    fill(1, std::vector<int>(95, 10));
    EXPECT_EQ(control.BlockCountLabel.ForeColor(), 0);
    ASSERT_TRUE(control.segmentPopup.prepare(tracks, 1, 1));
    control.segmentPopup.mnuPopupFunctionProportional.choose();
    EXPECT_EQ(control.BlockCountLabel.Caption(), "107/106 blocks used");
    EXPECT_EQ(control.BlockCountLabel.ForeColor(), 255);
}

TEST_F(LumoraControlTest, AsksBeforeAnUndoOrRedoOutOfView) {
    struct Row {
        int tab;
        int channel;
        const char* property;
        const char* where; // of the question; nothing if none is asked
        const char* present;
        const char* goal;
        int tabAfter;
    };
    const char* onTwo = "You are presently editing channel 2.";
    const char* simulating = "You are presently in the simulator.";
    const char* sending = "You are presently in the transmitter.";
    for (const Row& row : std::initializer_list<Row>{
             {2, 1, "Sim Light Image", "in the simulator", onTwo, "go to the simulator", Simulator},
             {2, 0, "XMit Min", "in the transmitter", onTwo, "go to the transmitter", Transmitter},
             {2, 4, "Trip Point", "on channel 4", onTwo, "switch channels", 4},
             {2, 2, "Trip Point", nullptr, "", "", 2},
             {AllChannels, 1, "Sim Light Image", "in the simulator", "", "go to the simulator",
              Simulator},
             {AllChannels, 0, "XMit Max", "in the transmitter", "", "go to the transmitter",
              Transmitter},
             {AllChannels, 3, "Hysteresis", nullptr, "", "", AllChannels},
             {Simulator, 1, "Sim Light Image", nullptr, "", "", Simulator},
             {Simulator, 0, "XMit Min", "in the transmiter", simulating, "go to the transmitter",
              Transmitter},
             {Simulator, 3, "Hysteresis", "on channel 3", simulating, "go to channel 3", 3},
             {Transmitter, 0, "XMit Min", nullptr, "", "", Transmitter},
             {Transmitter, 1, "Sim Background Color", "in the simulator", sending,
              "go to the simulator", Simulator},
             {Transmitter, 6, "No Signal", "on channel 6", sending, "go to channel 6", 6}}) {
        control.options.record(row.channel, row.property, "1");
        const int position = history.position();
        for (const char* act : {"undo", "redo"}) {
            const bool undoing = act == std::string("undo");
            const auto move = [&] { undoing ? history.Undo() : history.Redo(); };
            SCOPED_TRACE(std::to_string(row.tab) + " " + act + " " + row.property);
            control.TabStrip1.select(row.tab);
            if (row.where != nullptr) {
                desk.person.answers = {Answer::No, Answer::Yes};
                move();
                EXPECT_EQ(desk.person.messages.back().buttons, MessageBox::Buttons::YesNo);
                EXPECT_EQ(desk.person.takeMessage(),
                          std::string("Switch Channels: The change you are about to ") + act +
                              " occurs " + row.where + ". " + row.present +
                              "\r\n\r\nWould you like to " + row.goal + " and make the change?");
                EXPECT_EQ(control.TabStrip1.SelectedIndex(), row.tab);
                EXPECT_EQ(history.position(), undoing ? position : position - 1);
            }
            move();
            EXPECT_EQ(history.position(), undoing ? position - 1 : position);
            EXPECT_EQ(control.TabStrip1.SelectedIndex(), row.tabAfter);
            desk.person.messages.clear();
        }
        history.Undo(true);
    }
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
    static_cast<void>(lines());
    const std::string path = desk.folder.path() / "lines";
    EXPECT_TRUE(history.OpenHistory(path));
    EXPECT_NEAR(track(1).ContentWidth(), 9000, 30);
    EXPECT_TRUE(history.NewHistory());
    EXPECT_EQ(tracks.TimeScale(), 2400);
    // Asked for before there is any room, it waits for it.
    LumoraControl early(desk.place, desk.keys);
    EXPECT_TRUE(early.HistoryObject()->OpenHistory(path));
    early.tracks.Resize(9000, 3000);
    EXPECT_NEAR(early.tracks.track(1).ContentWidth(), 9000, 30);
}

} // namespace
} // namespace corvane
