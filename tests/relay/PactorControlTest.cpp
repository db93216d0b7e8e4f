#include "relay/PactorControl.h"

#include "support/ControlBench.h"

#include <gmock/gmock.h>

#include <random>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

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
    /// Moves the simulated stick: what the indicator and the relay do then, such as "10".
    std::string outputsAt(int stick) {
        control.tripPoint.TripPointSlider.move(100 - stick);
        return outputs();
    }
    std::string outputs() const {
        return std::string(relay.IndicatorOn() ? "1" : "0") + (relay.RelayOn() ? "1" : "0");
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
    EXPECT_FALSE(control.optIndicator[0].Value());
    while (history.CanUndo())
        history.Undo();
    EXPECT_EQ(document.settings(), PactorSettings());
    EXPECT_TRUE(control.optIndicator[0].Value());
    EXPECT_TRUE(control.optRelay[3].Value());
    EXPECT_EQ(control.tripPoint.Value(), 50);
    setHysteresis("none"); // is 0, as it was
    EXPECT_EQ(control.Hysteresis.Text(), "none");
    EXPECT_TRUE(history.CanRedo());
    EXPECT_EQ(document.Data(0, "Volume"), "");
    EXPECT_EQ(document.Data(3, "Relay"), "");
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
    settings.tripPoint = 30;
    EXPECT_EQ(settings.toImage().ToString(), "76 0 1 0 1 0 0");
    KOBuffer image;
    for (const std::uint8_t byte : {255, 127, 2, 1, 0, 255, 1})
        image.Append(byte);
    EXPECT_EQ(PactorSettings::fromImage(image),
              (PactorSettings{100, 50, {false, true}, {false, false, true}}));
}

TEST(PactorImage, HalfABytesSideIsThatOfSinglePrecision) {
    for (const auto& [percent, byte] :
         {std::pair(10, 25), {30, 76}, {50, 127}, {70, 178}, {90, 229}}) {
        PactorSettings settings;
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
    EXPECT_EQ(outputsAt(70), "11");
    EXPECT_EQ(outputsAt(45), "11");
    EXPECT_EQ(outputsAt(40), "11");
    EXPECT_EQ(outputsAt(39), "00");
    EXPECT_EQ(outputsAt(59), "00");
    EXPECT_EQ(outputsAt(60), "11");
    EXPECT_EQ(document.settings().tripPoint, 50);

    outputsAt(39);
    outputsAt(45);
    control.SimulateLossOfSignalCheck.toggle();
    EXPECT_TRUE(relay.IndicatorBlinking());
    EXPECT_EQ(outputs(), "01");
    relay.TimerBlink.Fired.raise();
    EXPECT_EQ(outputs(), "11");
    EXPECT_EQ(relay.IndicatorPicture.BackColor(), 65280);
    control.SimulateLossOfSignalCheck.toggle();
    EXPECT_FALSE(relay.IndicatorBlinking());
    EXPECT_EQ(outputs(), "11"); // as they last were
    EXPECT_EQ(relay.RelayLabel.Caption(), "RELAY ON");

    const int changes = history.Length();
    history.Undo(); // shows in the simulator at once, without a band
    EXPECT_EQ(outputs(), "00");
    control.tabs.select(1);
    EXPECT_EQ(outputs(), "00");
    EXPECT_EQ(control.tripPoint.Value(), 50);
    EXPECT_EQ(history.Length(), changes);
}

TEST_F(Relay, IsProgrammedAndReadBack) {
    setTripPoint(30);
    control.optRelay[5].choose(); // off already
    control.optIndicator[2].choose();
    plugIn("pactor-2.1");
    control.ProgramButton.press();
    EXPECT_EQ(status(), "Programmed.");
    EXPECT_THAT(memory(0, 7), ElementsAre(76, 0, 1, 1, 1, 0, 0));
    EXPECT_TRUE(history.SaveDirty());
    EXPECT_TRUE(idle());
    desk.person.answers = {Answer::Cancel};
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), ""); // no new report
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
    EXPECT_TRUE(control.optIndicator[3].Value());
}

TEST_F(Relay, AProductWithTheDefaultsGivesADocumentWithoutChanges) {
    const KOBuffer image = PactorSettings().toImage();
    setMemory({image.bytes().begin(), image.bytes().end()});
    plugIn("pactor-3.1");
    control.ReadSettingsButton.press();
    EXPECT_EQ(status(), "Settings read.");
    EXPECT_FALSE(history.CanUndo());
}

TEST_F(Relay, TellsWhatWentWrongAndKeepsTheDocument) {
    setTripPoint(30);
    const auto expect = [&](const char* message, const char* statusText) {
        for (Button* button : {&control.ReadSettingsButton, &control.ProgramButton}) {
            button->press();
            EXPECT_THAT(desk.person.takeMessage(), StartsWith(message));
            EXPECT_EQ(status(), statusText);
            EXPECT_TRUE(idle());
            desk.person.messages.clear();
        }
    };
    expect("Error: No Corvane is connected.", "");
    LinkBench::Plugged& wrong = plugIn("lumora-1.2");
    expect("Error: Unable to connect to the relay.\r\n\r\nThe product behind the link is a Lumora "
           "1.2. ",
           "");
    desk.bench.unplug(wrong);
    desk.bench.run(100);
    LinkBench::Plugged& mute = plugIn("pactor-2.1", "mute-after=5");
    control.ReadSettingsButton.press();
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Read timed out."));
    EXPECT_EQ(status(), "! Read failed!");
    desk.bench.unplug(mute);
    desk.bench.run(3000);
    plugIn("pactor-2.1", "unplug-after=20");
    control.ProgramButton.press();
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("Write timed out."));
    EXPECT_EQ(status(), "! Programming failed!");
    EXPECT_EQ(desk.person.beeps, "EE");
    EXPECT_TRUE(idle());
    EXPECT_EQ(document.settings().tripPoint, 30);
    EXPECT_EQ(history.Length(), 1);
}

TEST_F(Relay, AnAnswerOfAnotherLengthLeavesANewDocument) {
    setTripPoint(30);
    desk.person.answers = {Answer::No};
    desk.bench.plugIn(scripted(
        [](std::uint8_t, bench::ByteView, bench::Reply& reply) {
            reply.send(80, bench::Bytes{1, 2, 3});
        },
        {2, 1, 1, 0}));
    desk.bench.run(100);
    control.ReadSettingsButton.press();
    EXPECT_EQ(desk.person.takeMessage(), "Error: Buffer is 3 bytes.");
    EXPECT_EQ(status(), "");
    EXPECT_EQ(history.Length(), 0);
    EXPECT_EQ(control.tripPoint.Value(), 50);
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
