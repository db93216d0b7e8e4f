#pragma once

#include "history/History.h"
#include "light/LumoraSimulatorSettings.h"
#include "light/LumoraTrack.h"

#include <array>
#include <string>
#include <string_view>

namespace corvane {

/// A channel's settings. Levels in percent.
struct LumoraChannelSettings {
    int noSignal = 0; ///< Track in force without a signal: 0 top, 1 bottom.
    int lightColor = 0xFFFFFF;
    int hysteresis = 2;
    int maxCurrent = 100; ///< mA
    int turnOffPoint = 0;
    int tripPoint = 50;
};

/// A light program: six channels, each with a top and a bottom track and its settings, and the
/// transmitter's range. Only changes write it, and its history is its file.
class LumoraDocument final : public HistoryHost {
  public:
    static constexpr std::string_view TextPrefix = "LumoraText";
    // Names of settings in `Data`; those of the simulator and of the transmitter begin alike.
    static constexpr std::string_view MaxCurrent = "Max Current";
    static constexpr std::string_view TurnOffPoint = "Turn Off Point";
    static constexpr std::string_view TripPoint = "Trip Point";
    static constexpr std::string_view Hysteresis = "Hysteresis";
    static constexpr std::string_view LightColor = "Light Color";
    static constexpr std::string_view NoSignal = "No Signal";
    static constexpr std::string_view RangeMin = "XMit Min";
    static constexpr std::string_view RangeMax = "XMit Max";
    static constexpr std::string_view TransmitterStart = "XMit ";
    static constexpr std::string_view SimulatorStart = "Sim ";
    static constexpr int ChannelCount = 6;
    static constexpr int TrackCount = 2 * ChannelCount;
    static constexpr int FirstBinaryChannel = 5; ///< This one and those behind are two-level.
    static constexpr int BlockLimit = 106;       ///< What the controller has room for.
    static constexpr int DefaultRangeMin = 1200; // microseconds
    static constexpr int DefaultRangeMax = 1800;
    static constexpr int ShortestPulse = 800;
    static constexpr int LongestPulse = 2200;
    static constexpr int LowestCurrent = 10; // mA
    static constexpr int HighestCurrent = 250;

    explicit LumoraDocument(const History::Surroundings& surroundings);

    /// A setting has another value: its name in `Data`, and its channel, 0 for the whole document.
    Event<std::string_view, int> SettingChanged;

    [[nodiscard]] History& HistoryObject() { return history_; }
    [[nodiscard]] const History& HistoryObject() const { return history_; }

    /// A channel's bottom track (`onState`), which the controller plays below the trip point, or
    /// its top track, which it plays from there on. Channels count from 1.
    [[nodiscard]] const LumoraTrack& Channel(int channel, bool onState) const {
        return track(trackIndex(channel, onState));
    }
    /// Tracks count from 1: track 2c - 1 is channel c's top track, 2c its bottom track.
    [[nodiscard]] const LumoraTrack& track(int index) const { return at(index); }
    [[nodiscard]] LumoraTrack& track(WriteAccess, int index) { return at(index); }
    [[nodiscard]] static int trackIndex(int channel, bool onState) {
        return 2 * channel - (onState ? 0 : 1);
    }
    [[nodiscard]] static int channelOf(int trackIndex) { return (trackIndex + 1) / 2; }
    [[nodiscard]] static bool onStateOf(int trackIndex) { return trackIndex % 2 == 0; }
    /// Program blocks of all tracks.
    [[nodiscard]] int BlockCount() const;

    [[nodiscard]] const LumoraChannelSettings& settings(int channel) const;
    [[nodiscard]] int transmitterMin() const { return transmitterMin_; } ///< microseconds
    [[nodiscard]] int transmitterMax() const { return transmitterMax_; }

    [[nodiscard]] const LumoraSimulatorSettings& simulator() const { return simulator_; }
    /// The colour that an untouched canvas has; for a document that has not been begun.
    void setButtonFace(KORgbValue color);

    /// A setting by its name, as text. `RangeMin` and `RangeMax` ignore the channel; a
    /// name that is none gives empty text.
    [[nodiscard]] std::string Data(int channel, std::string_view propertyName) const;
    /// Reads the text leniently and limits the value; a name that is none changes nothing.
    void setData(WriteAccess, int channel, std::string_view propertyName, std::string_view text);

    /// A number as the setting of this name keeps it: whole, and within its limits.
    [[nodiscard]] static int Limited(std::string_view propertyName, std::string_view text);
    /// Whether a change in a file may carry this channel with this name.
    [[nodiscard]] static bool takesData(int channel, std::string_view propertyName);

  private:
    void resetToDefaults();
    [[nodiscard]] LumoraTrack& at(int index) const;
    [[nodiscard]] LumoraChannelSettings& settingsOf(int channel);

    std::array<std::unique_ptr<LumoraTrack>, TrackCount> tracks_;
    std::array<LumoraChannelSettings, ChannelCount> settings_;
    int transmitterMin_ = DefaultRangeMin;
    int transmitterMax_ = DefaultRangeMax;
    LumoraSimulatorSettings simulator_;
    History history_;
    Connection onReset_;
};

} // namespace corvane
