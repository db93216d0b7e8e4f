#pragma once

#include "base/KOFrameTimer.h"
#include "base/KORgbValue.h"
#include "light/LumoraDocument.h"

namespace corvane {

/// Plays a light program on the computer: decides for each channel which track runs at the stick's
/// position, walks a clock through it, and gives the brightness. The clock moves only in `Update`.
/// Channels count from 1; levels are percent.
class LumoraSimulator {
  public:
    /// The document must outlive it.
    LumoraSimulator(const LumoraDocument& document, const Clock& clock);

    Event<int> BrightnessChanged;
    Event<int> SelectedTrackChanged;

    [[nodiscard]] int ChannelCount() const { return LumoraDocument::ChannelCount; }
    [[nodiscard]] int brightness(int Channel) const { return state(Channel).brightness; }
    /// The light's colour at its present brightness.
    [[nodiscard]] KORgbValue Colorization(int Channel) const;
    /// The track that runs; nothing while the channel is off.
    [[nodiscard]] const LumoraTrack* SelectedTrack(int Channel) const;
    /// Seconds from the beginning of the track.
    [[nodiscard]] double time(int Channel) const { return state(Channel).time; }
    void setTime(int Channel, double seconds);
    /// Seconds that the track takes; 0 while there is none.
    [[nodiscard]] double TimeLimit(int Channel) const;

    /// Takes a channel's settings from the document.
    void takeSettings(int Channel);
    void takeAllSettings();

    [[nodiscard]] int Slider() const { return slider_; }
    void setSlider(int level) { change(slider_, level); }
    [[nodiscard]] bool SimulateHysteresis() const { return simulateHysteresis_; }
    void setSimulateHysteresis(bool simulate) { change(simulateHysteresis_, simulate); }
    [[nodiscard]] bool SimulateLossOfSignal() const { return simulateLossOfSignal_; }
    void setSimulateLossOfSignal(bool simulate) { change(simulateLossOfSignal_, simulate); }
    /// Factor on the passing of time.
    [[nodiscard]] double MotionMultiplier() const { return motionMultiplier_; }
    void setMotionMultiplier(double factor) { motionMultiplier_ = factor; }

    /// One frame, as long as the clock says.
    void Update();
    /// All tracks from their beginning.
    void Reset();

  private:
    enum class Selected { None, Top, Bottom, Off };
    struct State {
        int brightness = 0;
        Selected selected = Selected::None;
        double time = 0;
        LumoraChannelSettings settings;
    };

    [[nodiscard]] const State& state(int Channel) const;
    [[nodiscard]] State& state(int Channel);
    template<class T>
    void change(T& field, T value) {
        if (field == value)
            return;
        field = value;
        UpdateSelectedTracks();
    }
    void UpdateSelectedTracks();
    void UpdateSelectedTrack(int Channel);
    [[nodiscard]] Selected wanted(const State& state) const;
    [[nodiscard]] bool mayChange(const State& state) const;
    void setBrightness(int Channel, int level);

    const LumoraDocument& document_;
    KOFrameTimer frameTimer_;
    std::array<State, LumoraDocument::ChannelCount> states_;
    int slider_ = 0;
    bool simulateHysteresis_ = false;
    bool simulateLossOfSignal_ = false;
    double motionMultiplier_ = 1;
};

} // namespace corvane
