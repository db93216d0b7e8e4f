#include "light/LumoraSimulator.h"

#include "base/Assert.h"

#include <algorithm>
#include <cmath>

namespace corvane {

LumoraSimulator::LumoraSimulator(const LumoraDocument& document, const Clock& clock)
    : document_(document), frameTimer_(clock) {
    UpdateSelectedTracks();
    Reset();
}

const LumoraSimulator::State& LumoraSimulator::state(int Channel) const {
    Assert(Channel >= 1 && Channel <= ChannelCount());
    return states_[static_cast<std::size_t>(Channel) - 1];
}

LumoraSimulator::State& LumoraSimulator::state(int Channel) {
    Assert(Channel >= 1 && Channel <= ChannelCount());
    return states_[static_cast<std::size_t>(Channel) - 1];
}

KORgbValue LumoraSimulator::Colorization(int Channel) const {
    return KORgbValue::FromColor(LightPart(state(Channel).settings.lightColor))
        .Attenuate(state(Channel).brightness);
}

const LumoraTrack* LumoraSimulator::SelectedTrack(int Channel) const {
    switch (state(Channel).selected) {
    case Selected::Top:
        return &document_.Channel(Channel, false);
    case Selected::Bottom:
        return &document_.Channel(Channel, true);
    default:
        return nullptr;
    }
}

double LumoraSimulator::TimeLimit(int Channel) const {
    const LumoraTrack* track = SelectedTrack(Channel);
    return track == nullptr ? 0 : static_cast<double>(track->TimeLimit());
}

void LumoraSimulator::setTime(int Channel, double seconds) {
    State& channel = state(Channel);
    // The track may have become shorter, or empty, since the last step.
    const double limit = TimeLimit(Channel);
    if (limit == 0) {
        channel.time = 0;
    } else {
        const double rounds = seconds / limit;
        channel.time = std::min((rounds - std::trunc(rounds)) * limit, limit);
    }
    const LumoraTrack* track = SelectedTrack(Channel);
    const int segment = track == nullptr ? 0 : track->SegmentAt(channel.time);
    setBrightness(Channel, segment == 0 ? 0
                                        : track->GetTrack(segment).EvaluateBrightness(
                                              slider_, channel.settings.tripPoint));
}

void LumoraSimulator::setBrightness(int Channel, int level) {
    if (std::exchange(state(Channel).brightness, level) != level)
        BrightnessChanged.raise(Channel);
}

void LumoraSimulator::takeSettings(int Channel) {
    state(Channel).settings = document_.settings(Channel);
    UpdateSelectedTrack(Channel);
}

void LumoraSimulator::takeAllSettings() {
    for (int channel = 1; channel <= ChannelCount(); ++channel)
        takeSettings(channel);
}

void LumoraSimulator::Update() {
    frameTimer_.Update();
    const int sinceLast = std::max(0, frameTimer_.TimeStep()); // of a clock that was set back too
    const double step = motionMultiplier_ * sinceLast / 1000.0;
    for (int channel = 1; channel <= ChannelCount(); ++channel)
        setTime(channel, step + time(channel));
}

void LumoraSimulator::Reset() {
    frameTimer_.Reset();
    for (int channel = 1; channel <= ChannelCount(); ++channel)
        setTime(channel, 0);
}

void LumoraSimulator::UpdateSelectedTracks() {
    for (int channel = 1; channel <= ChannelCount(); ++channel)
        UpdateSelectedTrack(channel);
}

LumoraSimulator::Selected LumoraSimulator::wanted(const State& channel) const {
    // Without a signal there is no stick, and so neither a level to be off at nor a trip point.
    if (simulateLossOfSignal_)
        return channel.settings.noSignal == 0 ? Selected::Top : Selected::Bottom;
    if (slider_ < channel.settings.turnOffPoint)
        return Selected::Off;
    return slider_ < channel.settings.tripPoint ? Selected::Bottom : Selected::Top;
}

bool LumoraSimulator::mayChange(const State& channel) const {
    if (simulateLossOfSignal_)
        return true;
    const int band = simulateHysteresis_ ? channel.settings.hysteresis : 0;
    switch (channel.selected) {
    case Selected::Top:
        return slider_ < channel.settings.tripPoint - band;
    case Selected::Bottom:
        return slider_ >= channel.settings.tripPoint + band ||
               slider_ < channel.settings.turnOffPoint;
    case Selected::Off:
        return slider_ >= channel.settings.turnOffPoint;
    case Selected::None:
        return true;
    }
    return true;
}

void LumoraSimulator::UpdateSelectedTrack(int Channel) {
    State& channel = state(Channel);
    const Selected next = wanted(channel);
    // Where it would like to be is one question, whether it may leave where it is another: between
    // the two ends of the band it stays.
    if (next == channel.selected || !mayChange(channel))
        return;
    channel.selected = next;
    channel.time = 0; // a track is played from its beginning each time
    SelectedTrackChanged.raise(Channel);
    setTime(Channel, 0);
}

} // namespace corvane
