#include "light/LumoraSimulator.h"

#include "bench/LightPlayer.h"
#include "support/LightBench.h"
#include "support/RandomProgram.h"

extern "C" {
#include "firmware/products/light_player.h"
}

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;

class Simulator : public testing::Test, public LightBench {
  protected:
    ManualClock clock{1000};
    LumoraSimulator simulator{document, clock};
    std::vector<int> changed;
    Connection onBrightness =
        simulator.BrightnessChanged.connect([this](int channel) { changed.push_back(channel); });

    void set(const char* name, int value, int channel = 1) {
        setData(document, channel, name, std::to_string(value));
        simulator.takeSettings(channel);
    }
    /// 1 for the top track, 2 for the bottom one, 3 for off.
    int trackAt(int slider) {
        simulator.setSlider(slider);
        const LumoraTrack* track = simulator.SelectedTrack(1);
        return track == nullptr ? 3 : track->topTrack() ? 1 : 2;
    }
    int pass(int milliseconds) {
        clock.advance(static_cast<std::uint64_t>(milliseconds));
        simulator.Update();
        return simulator.brightness(1);
    }
};

TEST_F(Simulator, WalksThroughATrackAndBeginsAgain) {
    simulator.takeAllSettings();
    add(1, false, 80, 0.2);
    add(1, false, 10, 0.1);
    simulator.setSlider(50); // at the trip point the top track plays
    simulator.Reset();
    EXPECT_EQ(pass(199), 80);
    clock.goWrong(-3600000);
    EXPECT_EQ(pass(0), 80);
    EXPECT_EQ(pass(2), 10);
    simulator.setTime(1, 0.7);
    EXPECT_NEAR(simulator.time(1), 0.1, 1e-6);
    simulator.setTime(1, 0.2); // on the border the later one plays
    EXPECT_EQ(simulator.brightness(1), 10);
    simulator.setMotionMultiplier(0.25);
    simulator.Reset();
    EXPECT_EQ(pass(400), 80);
    EXPECT_NEAR(simulator.time(1), 0.1, 1e-9);
    writable(document, 1).RemoveTrack(2); // edits count at once
    writable(document, 1).RemoveTrack(1);
    EXPECT_EQ(pass(40), 0);
    EXPECT_EQ(simulator.time(1), 0);
}

TEST_F(Simulator, ChoosesTheTrackWithAndWithoutHysteresis) {
    set("Hysteresis", 10);
    EXPECT_EQ(trackAt(49), 2);
    EXPECT_EQ(trackAt(50), 1);
    EXPECT_EQ(trackAt(49), 2);
    simulator.setSimulateHysteresis(true);
    EXPECT_EQ(trackAt(59), 2);
    EXPECT_EQ(trackAt(60), 1);
    EXPECT_EQ(trackAt(40), 1);
    EXPECT_EQ(trackAt(39), 2);
    set("Turn Off Point", 30);
    EXPECT_EQ(trackAt(29), 3);
    EXPECT_EQ(trackAt(30), 2);
    set("Turn Off Point", 55); // within the band the top track does not fall to off
    trackAt(100);
    EXPECT_EQ(trackAt(41), 1);
    EXPECT_EQ(trackAt(39), 3);
}

TEST_F(Simulator, TellsOfChangesOnly) {
    simulator.takeAllSettings();
    add(1, true, 60, 1);
    simulator.setSlider(10);
    simulator.Reset();
    changed.clear();
    simulator.setSlider(10);
    pass(100);
    setData(document, 1, "Light Color", "FF");
    simulator.takeSettings(1);
    EXPECT_TRUE(changed.empty());
    EXPECT_EQ(simulator.Colorization(1), KORgbValue(153, 0, 0));
    simulator.setSlider(90);
    EXPECT_THAT(changed, ElementsAre(1));
    EXPECT_EQ(simulator.Colorization(1), KORgbValue());
}

TEST_F(Simulator, MeasuresItsFramesAcrossTheWrapOfTheClock) {
    ManualClock wrapping(0xFFFFFFF0ULL);
    KOFrameTimer timer(wrapping);
    const KOStopWatch watch(wrapping);
    wrapping.advance(40);
    timer.Update();
    EXPECT_EQ(timer.TimeStep(), 40);
    EXPECT_EQ(watch.TimeElapsed(), 40);
    EXPECT_EQ(Elapsed(wrapping.now(), 0xFFFFFFF0U), 40);
    wrapping.goWrong(-50);
    EXPECT_EQ(watch.TimeElapsed(), -10);
    EXPECT_GT(Elapsed(wrapping.now(), 0xFFFFFFF0U), 1 << 30);
    timer.Reset();
    EXPECT_EQ(timer.TimeStep(), 0);
}

/// The currents of the virtual controller and of the firmware kit's beside the simulator's
/// brightness, for one program.
class SideBySide {
  public:
    SideBySide(const LumoraDocument& document, const std::string& name)
        : document_(document), name_(name), simulator_(document, clock_) {
        const auto bytes = imageOf(document);
        std::copy(bytes.begin(), bytes.end(), image_.begin());
        simulator_.takeAllSettings();
        simulator_.setSimulateHysteresis(true);
        player_.setStick(0, now());
        player_.start(bench::readImage(image_), now());
        light_player_begin(image_.data());
        light_player_stick(0);
        simulator_.Reset();
    }

    /// Moves the stick near to this position, but not to where percents and bytes may choose
    /// different tracks: the percent bytes of trip point and hysteresis are rounded before they are
    /// added.
    void stick(int percent) {
        while (percent < 100 && onAnEdge(percent))
            ++percent;
        simulator_.setSlider(percent);
        player_.setStick(percent, now());
        light_player_stick(static_cast<std::uint8_t>(percent * 255 / 100));
        stick_ = percent;
    }
    void signal(bool present) {
        simulator_.setSimulateLossOfSignal(!present);
        player_.setSignal(present, now());
        if (present)
            light_player_stick(static_cast<std::uint8_t>(stick_ * 255 / 100));
        else
            light_player_no_signal();
    }
    /// A few hundredths of a second; compares between two of them, at which segments end.
    void pass() {
        advance(5);
        compare();
        advance(35);
    }
    int compared = 0;

  private:
    [[nodiscard]] bench::Time now() const { return clock_.sinceStart(); }
    [[nodiscard]] bool onAnEdge(int stick) const {
        for (int channel = 1; channel <= 6; ++channel) {
            const LumoraChannelSettings& settings = document_.settings(channel);
            for (const int edge : {settings.tripPoint - settings.hysteresis,
                                   settings.tripPoint + settings.hysteresis})
                if (std::abs(stick - edge) <= 1)
                    return true;
        }
        return false;
    }
    /// The image narrows a band that would reach beyond the ends of the stick's way.
    [[nodiscard]] static bool isNarrowed(const LumoraChannelSettings& settings) {
        return settings.hysteresis > settings.tripPoint ||
               settings.hysteresis + settings.tripPoint > 100;
    }
    void advance(int milliseconds) {
        clock_.advance(static_cast<std::uint64_t>(milliseconds));
        simulator_.Update();
        light_player_pass(static_cast<std::uint16_t>(milliseconds));
    }
    void compare() {
        const bench::Currents currents = player_.currents(now());
        for (int channel = 1; channel <= 6; ++channel) {
            ASSERT_EQ(light_player_current(static_cast<std::uint8_t>(channel - 1)),
                      currents[static_cast<std::size_t>(channel) - 1])
                << name_ << " channel " << channel << " stick " << stick_;
            const LumoraChannelSettings& settings = document_.settings(channel);
            const LumoraTrack* track = simulator_.SelectedTrack(channel);
            const int segment = track == nullptr ? 0 : track->SegmentAt(simulator_.time(channel));
            const bool fromTrip = segment != 0 && track->GetTrack(segment).functionCode() == "PT";
            // With the stick right there the level may, by the simulator's fractions, just lie
            // outside the range of such a segment.
            if (isNarrowed(settings) || (fromTrip && stick_ == settings.tripPoint))
                continue;
            // Two currents and the way between them are cut to whole mA, the brightness to a
            // percent, and the level to a byte, which moves a steep segment far.
            int rounding = 200 + settings.maxCurrent;
            if (fromTrip)
                rounding +=
                    settings.maxCurrent * 100 /
                    std::max(1, track->topTrack() ? 100 - settings.tripPoint : settings.tripPoint);
            ASSERT_NEAR(simulator_.brightness(channel) * settings.maxCurrent,
                        currents[static_cast<std::size_t>(channel) - 1] * 100, rounding)
                << name_ << " channel " << channel << " stick " << stick_ << " at "
                << simulator_.time(channel);
            ++compared;
        }
    }

    const LumoraDocument& document_;
    std::string name_;
    ManualClock clock_{1000};
    LumoraSimulator simulator_;
    bench::LightPlayer player_;
    std::array<std::uint8_t, LIGHT_IMAGE> image_{};
    int stick_ = 0;
};

TEST_F(Simulator, ShowsWhatTheControllerPlays) {
    int compared = 0;
    const auto run = [&compared](const LumoraDocument& program, const std::string& name) {
        SideBySide both(program, name);
        for (const int stick : {3, 25, 47, 52, 78, 97, 73, 51, 44, 22, 8}) {
            both.stick(stick);
            for (int frame = 0; frame < 20 && !testing::Test::HasFatalFailure(); ++frame)
                both.pass();
        }
        for (const bool present : {false, true}) {
            both.signal(present);
            both.pass();
        }
        compared += both.compared;
    };
    for (const auto& entry : std::filesystem::directory_iterator(CORVANE_EXAMPLES)) {
        if (entry.path().extension() != ".lumora")
            continue;
        ASSERT_TRUE(history.OpenHistory(entry.path()));
        run(document, entry.path());
    }
    for (unsigned seed = 1; seed <= 200; ++seed) {
        LumoraDocument program({desk.person, desk.person, desk.files});
        fillAtRandom(program, seed, LumoraDocument::BlockLimit);
        run(program, "seed " + std::to_string(seed));
    }
    EXPECT_GT(compared, 100000);
}

} // namespace
} // namespace corvane
