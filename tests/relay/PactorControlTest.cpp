#include "relay/PactorControl.h"

#include "support/ControlBench.h"

#include <gmock/gmock.h>

#include <random>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr int SimulatorTab = 2;

class Relay : public testing::Test, public ControlBench<PactorControl> {
  protected:
    PactorDocument& document = control.document;
    PactorRelay& relay = control.SimulatorRelay;

    void setTripPoint(int percent) {
        control.tripPoint.TripPointValue.type(std::to_string(percent));
        control.tripPoint.TripPointValue.leave();
    }
    void setHysteresis(const char* text) {
        control.Hysteresis.type(text);
        control.Hysteresis.leave();
    }
    /// What the indicator and the relay do, such as "10".
    std::string outputs() const {
        return std::string(relay.IndicatorOn() ? "1" : "0") + (relay.RelayOn() ? "1" : "0");
    }
    std::string outputsAt(int stick) {
        control.tripPoint.TripPointSlider.move(100 - stick);
        return outputs();
    }
};

TEST_F(Relay, ASettingIsARecordedChangeThatIsAFileLine) {
    control.optRelay[2].choose(); // below: on
    control.optRelay[2].choose(); // again: no change
    control.optIndicator[1].choose();
    setTripPoint(30);
    setHysteresis("7.6 percent");
    EXPECT_EQ(control.Hysteresis.Text(), "8");
    setHysteresis("250");
    EXPECT_EQ(lines(), "PactorText\t1\tRelay\t\tON\nPactorText\t0\tIndicator\tON\t\n"
                       "PactorText\t0\tTrip Point\t50\t30\nPactorText\t0\tHysteresis\t0\t8\n"
                       "PactorText\t0\tHysteresis\t8\t100\n");
    while (history.CanUndo())
        history.Undo();
    EXPECT_EQ(document.settings(), PactorSettings());
    EXPECT_TRUE(control.optIndicator[0].Value());
    for (const auto& [typed, shown] : {std::pair("12a", "12"), {"250", "100"}, {"", "0"}}) {
        control.tripPoint.TripPointValue.type(typed);
        EXPECT_EQ(control.tripPoint.TripPointValue.Text(), shown);
        EXPECT_EQ(control.tripPoint.TripPointSlider.ToolTipText(), std::string(shown) + "%");
    }
    setHysteresis("none"); // is 0, as it was
    EXPECT_EQ(control.Hysteresis.Text(), "none");
    EXPECT_TRUE(history.CanRedo());
}

TEST_F(Relay, FilesWithUnknownPlacesAreRefused) {
    setTripPoint(33);
    const std::string refused = "Error: Can't understand the file format (deserialization error).";
    for (const char* line : {"PactorText\t2\tIndicator\t\tON\n", "PactorText\t3\tRelay\t\tON\n",
                             "PactorText\t-1\tRelay\t\tON\n", "PactorText\t0\tRelay\t\n"}) {
        EXPECT_EQ(open("Pactor\t1\t1\t0\t1\n" + std::string(line)), refused);
        EXPECT_EQ(document.settings().tripPoint, 33);
    }
    EXPECT_EQ(open("Pactor\t3\t3\t0\t1\nPactorText\t9\tTrip Point\t50\t500\n"
                   "PactorText\t0\tVolume\t1\t2\nPactorText\t0\tIndicator\tON\ton\n"),
              "");
    EXPECT_EQ(document.settings().tripPoint, 100);
    EXPECT_FALSE(document.settings().indicator[0]); // only "ON" is on
}

TEST(PactorImage, HoldsEveryPercentAndOnlyOnesAreOn) {
    PactorSettings settings;
    for (int percent = 0; percent <= 100; ++percent) {
        settings.tripPoint = percent;
        settings.hysteresis = 100 - percent;
        EXPECT_EQ(PactorSettings::fromImage(settings.toImage()), settings);
    }
    KOBuffer image;
    for (const std::uint8_t byte : {255, 127, 2, 1, 0, 255, 1})
        image.Append(byte);
    EXPECT_EQ(PactorSettings::fromImage(image),
              (PactorSettings{100, 50, {false, true}, {false, false, true}}));
    // The side of half a byte is that of single precision.
    for (const auto& [percent, byte] :
         {std::pair(10, 25), {30, 76}, {50, 127}, {70, 178}, {90, 229}}) {
        settings.tripPoint = percent;
        EXPECT_EQ(settings.toImage().Data(1), byte) << percent;
    }
}

TEST_F(Relay, TheSimulatorHoldsItsOutputsWithinTheBand) {
    setHysteresis("10");
    control.optRelay[4].choose(); // on at loss of signal
    control.tabs.select(SimulatorTab);
    EXPECT_EQ(control.tripPoint.TripPointLabel.Caption(), "Stick At:");
    EXPECT_TRUE(control.SimulatorTab.Visible());
    EXPECT_EQ(outputs(), "11"); // at 50, within the band, without one to begin with
    for (const auto& [stick, shown] : {std::pair(70, "11"),
                                       {40, "11"},
                                       {39, "00"},
                                       {59, "00"},
                                       {60, "11"},
                                       {39, "00"},
                                       {45, "00"}})
        EXPECT_EQ(outputsAt(stick), shown) << stick;
    EXPECT_EQ(document.settings().tripPoint, 50);
    control.SimulateLossOfSignalCheck.toggle();
    EXPECT_TRUE(relay.IndicatorBlinking());
    EXPECT_EQ(outputs(), "01");
    relay.TimerBlink.Fired.raise();
    EXPECT_EQ(outputs(), "11");
    control.SimulateLossOfSignalCheck.toggle();
    EXPECT_FALSE(relay.IndicatorBlinking());
    EXPECT_EQ(outputs(), "11"); // as they last were

    const int changes = history.Length();
    history.Undo(); // shows in the simulator at once, without a band
    EXPECT_EQ(outputs(), "00");
    control.tabs.select(1);
    EXPECT_EQ(outputs(), "00");
    EXPECT_EQ(history.Length(), changes);
}

TEST_F(Relay, IsProgrammedAndReadBack) {
    setTripPoint(30);
    control.optIndicator[2].choose();
    LinkBench::Plugged& product = plugIn("pactor-2.1");
    control.ProgramButton.press();
    EXPECT_EQ(status(), "Programmed.");
    EXPECT_THAT(memory(0, 7), ElementsAre(76, 0, 1, 1, 1, 0, 0));
    EXPECT_TRUE(history.SaveDirty());
    control.ReadSettingsButton.press(); // which the person thinks better of
    EXPECT_EQ(status(), "");
    EXPECT_EQ(history.Length(), 2);
    desk.person.answers = {Answer::No};
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "Settings read.");
    EXPECT_EQ(desk.person.beeps, "rr");
    EXPECT_FALSE(history.SaveDirty());
    EXPECT_TRUE(idle());
    EXPECT_EQ(lines(), "PactorText\t0\tTrip Point\t50\t30\nPactorText\t1\tIndicator\t\tON\n");
    history.Undo();
    EXPECT_EQ(status(), "");
    // One with nothing but the defaults gives a document without changes.
    desk.bench.unplug(product);
    const KOBuffer image = PactorSettings().toImage();
    setMemory({image.bytes().begin(), image.bytes().end()});
    plugIn("pactor-3.1");
    desk.person.answers = {Answer::No};
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "Settings read.");
    EXPECT_FALSE(history.CanUndo());
}

TEST_F(Relay, TellsWhatWentWrongAndKeepsTheDocument) {
    setTripPoint(30);
    LinkBench::Plugged* plugged = nullptr;
    const auto replace = [&](const char* product, const char* faults) {
        if (plugged != nullptr)
            desk.bench.unplug(*plugged);
        desk.bench.run(3000);
        plugged = &plugIn(product, faults);
    };
    const auto expect = [&](Button& button, const char* message, const char* statusText) {
        button.press();
        EXPECT_THAT(desk.person.takeMessage(), HasSubstr(message));
        EXPECT_EQ(status(), statusText);
        EXPECT_TRUE(idle());
    };
    expect(control.ReadSettingsButton, "Error: No Corvane is connected.", "");
    // An answer of another length leaves a new document.
    plugged = &desk.bench.plugIn(scripted(
        [](std::uint8_t, bench::ByteView, bench::Reply& reply) {
            reply.send(80, bench::Bytes{1, 2, 3});
        },
        {2, 1, 1, 0}));
    desk.bench.run(100);
    desk.person.answers = {Answer::No};
    expect(control.ReadSettingsButton, "Error: Buffer is 3 bytes.", "");
    EXPECT_EQ(history.Length(), 0);
    setTripPoint(30);
    replace("lumora-1.2", "");
    expect(control.ProgramButton,
           "Error: Unable to connect to the relay.\r\n\r\nThe product behind the link is a Lumora "
           "1.2. ",
           "");
    replace("pactor-2.1", "mute-after=5");
    expect(control.ReadSettingsButton, "Error: Read timed out.", "! Read failed!");
    replace("pactor-2.1", "unplug-after=20");
    expect(control.ProgramButton, "Write timed out.", "! Programming failed!");
    EXPECT_EQ(desk.person.beeps, "EE");
    EXPECT_EQ(document.settings().tripPoint, 30);
    EXPECT_EQ(history.Length(), 1);
}

/// The virtual product does with the stick what the simulator shows, wherever percent and level
/// agree.
TEST_F(Relay, TheProductDoesWhatTheSimulatorShows) {
    std::mt19937 random(7);
    LinkBench::Plugged& product = plugIn("pactor-3.1");
    bench::Outputs& outputsOfProduct = *product.link->outputs();
    for (int round = 0; round < 20; ++round) {
        control.tabs.select(1);
        setTripPoint(static_cast<int>(random() % 101));
        for (std::size_t n = random() % 2; n < 6; n += 2)
            control.optRelay[n].choose();
        for (std::size_t n = random() % 2; n < 4; n += 2)
            control.optIndicator[n].choose();
        control.ProgramButton.press();
        ASSERT_EQ(status(), "Programmed.");
        control.tabs.select(SimulatorTab);
        for (int step = 0; step < 30; ++step) {
            const int stick = static_cast<int>(random() % 101);
            outputsOfProduct.setStick(stick, {});
            std::string real;
            for (const bench::Output& output : outputsOfProduct.at({}))
                real += output.level != 0 ? "1" : "0";
            EXPECT_EQ(outputsAt(stick), real) << stick;
        }
    }
}

} // namespace
} // namespace corvane
