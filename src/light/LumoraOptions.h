#pragma once

#include "controls/Inputs.h"
#include "controls/TripPointControl.h"
#include "light/LumoraDocument.h"

namespace corvane {

/// The boxes for a channel's settings and the transmitter's range. Each records a change when the
/// person leaves it with another value; what has been recorded shows again.
class LumoraOptions {
  public:
    LumoraOptions(LumoraDocument& document, Dialogs& dialogs);
    LumoraOptions(const LumoraOptions&) = delete;
    LumoraOptions& operator=(const LumoraOptions&) = delete;

    /// The channel whose settings show; 0 for none.
    [[nodiscard]] int channel() const { return channel_; }
    void setChannel(int channel) { channel_ = channel; }

    void UpdateLightColor();
    void UpdateMaxCurrent();
    void UpdateTurnOffPoint();
    void UpdateNoSignal();
    void UpdateHysteresis();
    void UpdateXMit();
    /// All of them.
    void Update();

    Frame OptionsFrame;
    Label ChannelLightColorSample; ///< Its fore colour is the light's.
    Button ChangeLightColorButton{"Change"};
    Label MaxCurrentLabel{"Max Current:"};
    TextBox ChannelMaxCurrent;
    Label MaxCurrentUnit{"mA"};

    Frame AdvancedOptionsFrame;
    TextBox ChannelTurnOffPoint;
    TextBox ChannelHysteresis;
    OptionButton ChannelNoSignalTopTrack{"top track"};
    OptionButton ChannelNoSignalBottomTrack{"bottom track"};

    Frame TransmitterFrame;
    TextBox TransmitterRangeMin;
    TextBox TransmitterRangeMax;
    Button TransmitterRangeResetButton{"Reset to Default"};

    /// Records a setting's new value, given as text, unless it is the stored one.
    void record(int channel, std::string_view propertyName, const std::string& newValue);

  private:
    void bindNumber(TextBox& box, std::string_view propertyName);
    void bindRange(TextBox& box, std::string_view propertyName);
    void recordNumber(const TextBox& box, int channel, std::string_view propertyName);
    void changeLightColor();
    void show(TextBox& box, std::string_view propertyName) const;

    LumoraDocument& document_;
    Dialogs& dialogs_;
    int channel_ = 0;
    Connections on_;
};

} // namespace corvane
