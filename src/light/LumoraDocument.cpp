#include "light/LumoraDocument.h"

#include "base/Assert.h"
#include "base/KOMath.h"
#include "base/Numbers.h"
#include "light/LumoraHistoryLoader.h"

#include <algorithm>

namespace corvane {

namespace {

/// A setting that is a number: where it is kept and what it is limited to.
struct NumberSetting {
    std::string_view name;
    int LumoraChannelSettings::*member;
    int lowest;
    int highest;
};

constexpr std::array numberSettings{
    NumberSetting{LumoraDocument::MaxCurrent, &LumoraChannelSettings::maxCurrent,
                  LumoraDocument::LowestCurrent, LumoraDocument::HighestCurrent},
    NumberSetting{LumoraDocument::TurnOffPoint, &LumoraChannelSettings::turnOffPoint, 0, 100},
    NumberSetting{LumoraDocument::TripPoint, &LumoraChannelSettings::tripPoint, 0, 100},
    NumberSetting{LumoraDocument::Hysteresis, &LumoraChannelSettings::hysteresis, 0, 100},
};

const NumberSetting* numberSetting(std::string_view name) {
    const auto* found =
        std::find_if(numberSettings.begin(), numberSettings.end(),
                     [name](const NumberSetting& setting) { return setting.name == name; });
    return found == numberSettings.end() ? nullptr : found;
}

bool isChannel(int channel) {
    return channel >= 1 && channel <= LumoraDocument::ChannelCount;
}

} // namespace

LumoraDocument::LumoraDocument(const History::Surroundings& surroundings)
    : history_(*this, surroundings) {
    for (int index = 1; index <= TrackCount; ++index) {
        auto& place = tracks_[static_cast<std::size_t>(index) - 1];
        place = std::make_unique<LumoraTrack>(!onStateOf(index));
        place->setBinary(channelOf(index) >= FirstBinaryChannel);
    }
    onReset_ = history_.ResettingToDefaults.connect([this] { resetToDefaults(); });
    history_.setFilter("Lumora Programs (*.lumora)|*.lumora");
    history_.setTypeCode("Lumora");
    history_.setVersionCode(2);
    history_.setLoader(std::make_unique<LumoraHistoryLoader>());
}

LumoraTrack& LumoraDocument::at(int index) const {
    Assert(index >= 1 && index <= TrackCount);
    return *tracks_[static_cast<std::size_t>(index) - 1];
}

int LumoraDocument::BlockCount() const {
    int count = 0;
    for (const auto& track : tracks_)
        count += track->BlockCount();
    return count;
}

const LumoraChannelSettings& LumoraDocument::settings(int channel) const {
    Assert(isChannel(channel));
    return settings_[static_cast<std::size_t>(channel) - 1];
}

LumoraChannelSettings& LumoraDocument::settingsOf(int channel) {
    Assert(isChannel(channel));
    return settings_[static_cast<std::size_t>(channel) - 1];
}

std::string LumoraDocument::Data(int channel, std::string_view propertyName) const {
    if (propertyName == RangeMin)
        return std::to_string(transmitterMin_);
    if (propertyName == RangeMax)
        return std::to_string(transmitterMax_);
    if (propertyName.starts_with(SimulatorStart))
        return simulator_.Changes(channel, propertyName);
    if (const NumberSetting* setting = numberSetting(propertyName))
        return std::to_string(settings(channel).*setting->member);
    if (propertyName == LightColor)
        return WriteHexadecimal(static_cast<std::uint32_t>(settings(channel).lightColor));
    if (propertyName == NoSignal)
        return settings(channel).noSignal == 0 ? "Top" : "Bottom";
    return {};
}

int LumoraDocument::Limited(std::string_view propertyName, std::string_view text) {
    const NumberSetting* setting = numberSetting(propertyName);
    return RoundToInteger(std::clamp<double>(ReadNumber(text),
                                             setting == nullptr ? ShortestPulse : setting->lowest,
                                             setting == nullptr ? LongestPulse : setting->highest));
}

void LumoraDocument::setData(WriteAccess, int channel, std::string_view propertyName,
                             std::string_view text) {
    if (propertyName == RangeMin)
        transmitterMin_ = Limited(propertyName, text);
    else if (propertyName == RangeMax)
        transmitterMax_ = Limited(propertyName, text);
    else if (propertyName.starts_with(SimulatorStart)) {
        if (!simulator_.setChanges(channel, propertyName, text))
            return;
    } else if (const NumberSetting* setting = numberSetting(propertyName))
        settingsOf(channel).*setting->member = Limited(propertyName, text);
    else if (propertyName == NoSignal)
        settingsOf(channel).noSignal = text == "Top" ? 0 : 1;
    else if (propertyName == LightColor) {
        const auto color = static_cast<int>(ReadHexadecimal(text));
        settingsOf(channel).lightColor = color;
        for (const bool onState : {false, true})
            at(trackIndex(channel, onState)).setLightColor(color);
    } else {
        return;
    }
    SettingChanged.raise(propertyName, channel);
}

bool LumoraDocument::takesData(int channel, std::string_view propertyName) {
    const bool ofAChannel = numberSetting(propertyName) != nullptr || propertyName == LightColor ||
                            propertyName == NoSignal ||
                            propertyName == LumoraSimulatorSettings::LightImageName ||
                            propertyName == LumoraSimulatorSettings::LightPositionName;
    return isChannel(channel) || !ofAChannel; // the others ignore their channel
}

void LumoraDocument::setButtonFace(KORgbValue color) {
    const bool untouched = history_.Length() == 0;
    simulator_.setButtonFace(color);
    if (untouched)
        simulator_.ResetToDefaults();
}

void LumoraDocument::resetToDefaults() {
    // The transmitter's range has come back already, by the undoing of every change.
    settings_ = {};
    simulator_.ResetToDefaults();
    std::exception_ptr failure; // which keeps none of the others back
    for (const auto& track : tracks_) {
        try {
            track->setLightColor(LumoraChannelSettings().lightColor);
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (failure != nullptr)
        std::rethrow_exception(failure);
}

} // namespace corvane
