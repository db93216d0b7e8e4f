#include "bench/LightPlayer.h"

#include <algorithm>

namespace corvane::bench {

namespace {

constexpr std::int64_t MicrosecondsPerHundredth = 10000;
constexpr int FullLevel = 255;

int between(int low, int high, int part, int whole) {
    return low + (high - low) * part / whole;
}

int currentOfBlock(const LightBlock& block, bool top, int level, int tripLevel) {
    switch (block.kind) {
    case LightBlock::Kind::Plain:
        return block.current;
    case LightBlock::Kind::Proportional:
        return between(block.current2, block.current, level, FullLevel);
    case LightBlock::Kind::FromTrip: {
        const int lowest = top ? tripLevel : 0;
        const int highest = top ? FullLevel : tripLevel;
        if (highest == lowest || level < lowest || level > highest)
            return 0;
        return between(block.current2, block.current, level - lowest, highest - lowest);
    }
    }
    return 0;
}

} // namespace

void LightPlayer::setStick(int percent, Time now) {
    stick_ = std::clamp(percent, 0, 100);
    chooseTracks(now);
}

void LightPlayer::setSignal(bool present, Time now) {
    signal_ = present;
    chooseTracks(now);
}

void LightPlayer::start(LightProgram program, Time now) {
    program_ = std::move(program);
    states_ = {};
    chooseTracks(now);
}

void LightPlayer::chooseTracks(Time now) {
    const int stickLevel = level();
    for (std::size_t c = 0; c < program_.size(); ++c) {
        const LightChannel& channel = program_[c];
        State& state = states_[c];
        const bool off = stickLevel < channel.turnOffLevel;
        Track wanted = stickLevel < channel.tripLevel ? Track::Bottom : Track::Top;
        bool mayChange = true;
        if (!signal_) {
            wanted = channel.topWithoutSignal ? Track::Top : Track::Bottom;
        } else {
            if (off)
                wanted = Track::Off;
            if (state.track == Track::Top)
                mayChange = stickLevel < channel.tripLevel - channel.hysteresis;
            else if (state.track == Track::Bottom)
                mayChange = off || stickLevel >= channel.tripLevel + channel.hysteresis;
            else if (state.track == Track::Off)
                mayChange = !off;
        }
        // From its beginning, as often as the stick comes back to it.
        if (wanted != state.track && mayChange)
            state = {wanted, now};
    }
}

Currents LightPlayer::currents(Time now) const {
    Currents currents{};
    for (std::size_t c = 0; c < program_.size(); ++c)
        currents[c] = currentOf(program_[c], states_[c], now);
    return currents;
}

std::vector<Output> LightPlayer::at(Time now) const {
    constexpr int fullCurrent = 250; // mA
    std::vector<Output> outputs;
    int channel = 0;
    for (const int current : currents(now))
        outputs.push_back({"Channel " + std::to_string(++channel), current, fullCurrent,
                           std::to_string(current), " mA"});
    return outputs;
}

int LightPlayer::currentOf(const LightChannel& channel, const State& state, Time now) const {
    if (state.track != Track::Top && state.track != Track::Bottom)
        return 0;
    const bool top = state.track == Track::Top;
    const std::vector<LightBlock>& blocks = top ? channel.top : channel.bottom;
    std::int64_t whole = 0;
    for (const LightBlock& block : blocks)
        whole += block.hundredths * MicrosecondsPerHundredth;
    if (whole == 0)
        return 0;
    std::int64_t left = (now - state.since).count() % whole;
    for (const LightBlock& block : blocks) {
        left -= block.hundredths * MicrosecondsPerHundredth;
        if (left < 0)
            return currentOfBlock(block, top, level(), channel.tripLevel);
    }
    return 0;
}

} // namespace corvane::bench
