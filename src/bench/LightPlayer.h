#pragma once

#include "bench/Firmware.h"
#include "bench/LumoraMemory.h"

namespace corvane::bench {

/// Currents of the six channels, in mA.
using Currents = std::array<int, 6>;

/// Plays a light program as the controller does: chooses each channel's track by stick and signal,
/// walks through it, and works out the currents in integers.
class LightPlayer final : public Outputs {
  public:
    void setStick(int percent, Time now) override;
    void setSignal(bool present, Time now) override;
    [[nodiscard]] int stick() const override { return stick_; }
    [[nodiscard]] bool signal() const override { return signal_; }
    [[nodiscard]] std::vector<Output> at(Time now) const override;
    /// Begins this program from its start, as after the power has come.
    void start(LightProgram program, Time now);
    [[nodiscard]] Currents currents(Time now) const;

  private:
    enum class Track { None, Top, Bottom, Off };
    struct State {
        Track track = Track::None;
        Time since{0};
    };

    void chooseTracks(Time now);
    [[nodiscard]] int level() const { return stick_ * 255 / 100; }
    [[nodiscard]] int currentOf(const LightChannel& channel, const State& state, Time now) const;

    LightProgram program_;
    std::array<State, 6> states_;
    int stick_ = 50;
    bool signal_ = true;
};

} // namespace corvane::bench
