#include "apps/support/PlayCommand.h"

#include "apps/support/AnsweringDialogs.h"
#include "apps/support/ExitStatus.h"
#include "apps/support/LightCommands.h"
#include "base/NumberWithin.h"
#include "light/LumoraSimulator.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace corvane {

namespace {

/// A clock that moves from line to line.
struct StepClock final : Clock {
    std::uint32_t milliseconds = 0;
    [[nodiscard]] std::uint32_t now() const override { return milliseconds; }
};

/// The channels one below another, time to the right: each in its colour as bright as it plays,
/// with a curve of its brightness over it.
class PlayChart {
  public:
    PlayChart(int columns, const LumoraSimulator& simulator)
        : simulator_(simulator),
          width_(std::clamp(columns, 1, KOImages::MaxSize)),
          picture_{
              width_, Height,
              std::vector<std::uint32_t>(static_cast<std::size_t>(width_) * Height, 0xFF202024)} {}

    void draw(int column) {
        if (column >= width_)
            return;
        for (int channel = 1; channel <= simulator_.ChannelCount(); ++channel) {
            const KORgbValue color = simulator_.Colorization(channel);
            const auto light = 0xFF000000U | (static_cast<std::uint32_t>(color.R) << 16) |
                               (static_cast<std::uint32_t>(color.G) << 8) |
                               static_cast<std::uint32_t>(color.B);
            const int top = (channel - 1) * (StripHeight + Gap);
            for (int y = 0; y < StripHeight; ++y)
                at(column, top + y) = light;
            const int curve = (StripHeight - 1) * (100 - simulator_.brightness(channel)) / 100;
            at(column, top + curve) = 0xFFFFC400;
        }
    }
    [[nodiscard]] const Picture& picture() const { return picture_; }

  private:
    static constexpr int StripHeight = 60; // pixels
    static constexpr int Gap = 6;
    static constexpr int Height = 6 * (StripHeight + Gap) - Gap;

    std::uint32_t& at(int x, int y) {
        return picture_.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                               static_cast<std::size_t>(x)];
    }

    const LumoraSimulator& simulator_;
    int width_;
    Picture picture_;
};

/// A light program over whole milliseconds. What plays at one of them does not depend on which
/// others are looked at.
class Playing {
  public:
    Playing(const LumoraDocument& document, const PlaySetup& setup)
        : simulator_(document, clock_), move_(setup.stick.begin()), end_(setup.stick.end()) {
        onTrack_ = simulator_.SelectedTrackChanged.connect(
            [this](int channel) { startOf(channel) = clock_.milliseconds; });
        for (int index = 1; index <= LumoraDocument::TrackCount; ++index)
            lengths_[static_cast<std::size_t>(index) - 1] = lengthOf(document.track(index));
        simulator_.takeAllSettings();
        simulator_.setSlider(move_->stick); // before there is anything that holds a track
        simulator_.setSimulateHysteresis(setup.hysteresis);
        simulator_.setSimulateLossOfSignal(setup.noSignal);
    }

    void goTo(int milliseconds) {
        for (; move_ != end_ && move_->time <= milliseconds; ++move_) {
            clock_.milliseconds = static_cast<std::uint32_t>(move_->time);
            simulator_.setSlider(move_->stick);
        }
        clock_.milliseconds = static_cast<std::uint32_t>(milliseconds);
        for (int channel = 1; channel <= simulator_.ChannelCount(); ++channel)
            show(channel);
    }
    [[nodiscard]] const LumoraSimulator& simulator() const { return simulator_; }

  private:
    /// A hair behind the millisecond, so that one on a border is in the later segment, whatever the
    /// fractions of a second come to.
    static constexpr double Hair = 1e-6; // seconds

    static std::uint32_t lengthOf(const LumoraTrack& track) {
        long length = 0;
        for (int i = 1; i <= track.GetTrackCount(); ++i)
            length += std::lround(track.GetTrack(i).time() * 1000);
        return static_cast<std::uint32_t>(length);
    }
    void show(int channel) {
        const LumoraTrack* track = simulator_.SelectedTrack(channel);
        const int index =
            track == nullptr ? 0 : LumoraDocument::trackIndex(channel, !track->topTrack());
        const std::uint32_t length = index == 0 ? 0 : lengths_[static_cast<std::size_t>(index) - 1];
        const std::uint32_t played = clock_.milliseconds - startOf(channel);
        simulator_.setTime(channel, length == 0 ? 0 : played % length / 1000.0 + Hair);
    }
    std::uint32_t& startOf(int channel) { return starts_[static_cast<std::size_t>(channel) - 1]; }

    StepClock clock_;
    LumoraSimulator simulator_;
    Connection onTrack_;
    std::array<std::uint32_t, LumoraDocument::ChannelCount> starts_{};
    std::array<std::uint32_t, LumoraDocument::TrackCount> lengths_{}; // ms
    std::vector<PlaySetup::Move>::const_iterator move_;
    std::vector<PlaySetup::Move>::const_iterator end_;
};

} // namespace

std::optional<std::vector<PlaySetup::Move>> ParseStick(const std::string& text) {
    constexpr double longest = 1e6; // seconds
    std::vector<PlaySetup::Move> moves;
    std::string_view rest = text;
    for (bool more = true; more;) {
        const std::size_t comma = rest.find(',');
        more = comma != std::string_view::npos;
        std::string_view part = rest.substr(0, comma);
        rest.remove_prefix(more ? comma + 1 : rest.size());
        const std::size_t colon = part.find(':');
        if (moves.empty() != (colon == std::string_view::npos))
            return std::nullopt; // only the first one has no time
        PlaySetup::Move move;
        if (!moves.empty()) {
            const auto time = NumberWithin<double>(part.substr(0, colon), 0, longest);
            if (!time)
                return std::nullopt;
            move.time = static_cast<int>(*time * 1000 + 0.5);
            part.remove_prefix(colon + 1);
        }
        const auto stick = NumberWithin<int>(part, 0, 100);
        if (!stick || (!moves.empty() && move.time < moves.back().time))
            return std::nullopt;
        move.stick = *stick;
        moves.push_back(move);
    }
    return moves;
}

int PlayLight(Program& program, const std::string& file, const PlaySetup& setup) {
    AnsweringDialogs dialogs(std::nullopt);
    LumoraDocument document({dialogs, dialogs, program.files});
    if (!OpenLight(program, document, file))
        return ExitStatus::Failed;
    Playing playing(document, setup);
    const LumoraSimulator& simulator = playing.simulator();
    const int end = static_cast<int>(std::lround(setup.seconds * 1000));
    PlayChart chart((end + setup.step - 1) / setup.step, simulator);
    std::cout << "seconds,1,2,3,4,5,6\n";
    for (int time = 0; time < end; time += setup.step) {
        playing.goTo(time);
        std::printf("%d.%03d", time / 1000, time % 1000);
        for (int channel = 1; channel <= simulator.ChannelCount(); ++channel)
            std::printf(",%d", simulator.brightness(channel));
        std::printf("\n");
        chart.draw(time / setup.step);
    }
    std::fflush(stdout);
    if (setup.png.empty())
        return ExitStatus::Done;
    program.images->SetImage(chart.picture());
    const std::string png = program.images->SavePng();
    if (png.empty())
        return Fail("This corvanectl was built without pictures.");
    return program.files.ReplaceWhole(setup.png, png) ? ExitStatus::Done
                                                      : Fail("Can't save the picture.");
}

} // namespace corvane
