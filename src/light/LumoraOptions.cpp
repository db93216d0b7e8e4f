#include "light/LumoraOptions.h"

#include "base/Numbers.h"
#include "light/LumoraUndoableChange.h"

namespace corvane {

namespace {

std::string withRange(const std::string& text, int lowest, int highest, const char* unit) {
    return text + ", " + std::to_string(lowest) + " to " + std::to_string(highest) + " " + unit;
}

} // namespace

LumoraOptions::LumoraOptions(LumoraDocument& document, Dialogs& dialogs)
    : document_(document), dialogs_(dialogs) {
    bindNumber(ChannelMaxCurrent, LumoraDocument::MaxCurrent);
    bindNumber(ChannelHysteresis, LumoraDocument::Hysteresis);
    bindNumber(ChannelTurnOffPoint, LumoraDocument::TurnOffPoint);
    bindRange(TransmitterRangeMin, LumoraDocument::RangeMin);
    bindRange(TransmitterRangeMax, LumoraDocument::RangeMax);
    ChannelMaxCurrent.setToolTipText(withRange("Current at full brightness",
                                               LumoraDocument::LowestCurrent,
                                               LumoraDocument::HighestCurrent, "mA"));
    ChannelHysteresis.setToolTipText(
        "How far the stick has to pass the trip point before the track changes, 0 to 100 percent");
    ChannelTurnOffPoint.setToolTipText("The light is off below this level, 0 to 100 percent");
    for (const auto& [box, text] : {std::pair(&TransmitterRangeMin, "Shortest pulse of the stick"),
                                    std::pair(&TransmitterRangeMax, "Longest pulse of the stick")})
        box->setToolTipText(withRange(text, LumoraDocument::ShortestPulse,
                                      LumoraDocument::LongestPulse, "microseconds"));
    ChangeLightColorButton.setToolTipText("Choose the colour that this channel's light has");
    for (OptionButton* choice : {&ChannelNoSignalTopTrack, &ChannelNoSignalBottomTrack})
        choice->setToolTipText("Track that plays without a signal from the transmitter");
    on_(ChangeLightColorButton.Click, [this] { changeLightColor(); });
    on_(ChannelNoSignalTopTrack.Click,
        [this] { record(channel_, LumoraDocument::NoSignal, "Top"); });
    on_(ChannelNoSignalBottomTrack.Click,
        [this] { record(channel_, LumoraDocument::NoSignal, "Bottom"); });
    on_(TransmitterRangeResetButton.Click, [this] {
        // One after the other, since recording the one shows both as they are stored.
        TransmitterRangeMin.setText(std::to_string(LumoraDocument::DefaultRangeMin));
        TransmitterRangeMin.leave();
        TransmitterRangeMax.setText(std::to_string(LumoraDocument::DefaultRangeMax));
        TransmitterRangeMax.leave();
    });
}

void LumoraOptions::bindNumber(TextBox& box, std::string_view propertyName) {
    on_(box.Validate, [this, &box, propertyName] {
        if (channel_ != 0)
            recordNumber(box, channel_, propertyName);
    });
}

void LumoraOptions::bindRange(TextBox& box, std::string_view propertyName) {
    on_(box.Validate, [this, &box, propertyName] { recordNumber(box, 0, propertyName); });
}

void LumoraOptions::recordNumber(const TextBox& box, int channel, std::string_view propertyName) {
    record(channel, propertyName,
           std::to_string(LumoraDocument::Limited(propertyName, box.Text())));
}

void LumoraOptions::record(int channel, std::string_view propertyName,
                           const std::string& newValue) {
    if (newValue == document_.Data(channel, propertyName))
        return;
    auto change = std::make_unique<LumoraUndoableTextChange>();
    change->Initialize(document_, channel, std::string(propertyName), newValue);
    document_.HistoryObject().Record(std::move(change));
}

void LumoraOptions::changeLightColor() {
    if (channel_ == 0)
        return;
    if (const std::optional<int> color =
            dialogs_.PickColor(ChannelLightColorSample.ForeColor(), "Light Color"))
        record(channel_, LumoraDocument::LightColor,
               WriteHexadecimal(static_cast<std::uint32_t>(*color)));
}

void LumoraOptions::show(TextBox& box, std::string_view propertyName) const {
    box.setText(document_.Data(channel_, propertyName));
}

void LumoraOptions::UpdateLightColor() {
    if (channel_ != 0)
        ChannelLightColorSample.setForeColor(document_.settings(channel_).lightColor);
}

void LumoraOptions::UpdateMaxCurrent() {
    if (channel_ == 0)
        return;
    // Before the box goes, which is left by that: what is in it is this channel's by then.
    show(ChannelMaxCurrent, LumoraDocument::MaxCurrent);
    const bool dimmable = channel_ < LumoraDocument::FirstBinaryChannel;
    for (ChildControl* child : std::initializer_list<ChildControl*>{
             &MaxCurrentLabel, &ChannelMaxCurrent, &MaxCurrentUnit}) {
        child->setVisible(dimmable);
        child->setEnabled(dimmable);
    }
}

void LumoraOptions::UpdateTurnOffPoint() {
    if (channel_ != 0)
        show(ChannelTurnOffPoint, LumoraDocument::TurnOffPoint);
}

void LumoraOptions::UpdateNoSignal() {
    if (channel_ == 0)
        return;
    const bool top = document_.settings(channel_).noSignal == 0;
    ChannelNoSignalTopTrack.setValue(top);
    ChannelNoSignalBottomTrack.setValue(!top);
}

void LumoraOptions::UpdateHysteresis() {
    if (channel_ != 0)
        show(ChannelHysteresis, LumoraDocument::Hysteresis);
}

void LumoraOptions::UpdateXMit() {
    TransmitterRangeMin.setText(std::to_string(document_.transmitterMin()));
    TransmitterRangeMax.setText(std::to_string(document_.transmitterMax()));
    TransmitterRangeResetButton.setEnabled(
        document_.transmitterMin() != LumoraDocument::DefaultRangeMin ||
            document_.transmitterMax() != LumoraDocument::DefaultRangeMax,
        "The range is the default already.");
}

void LumoraOptions::Update() {
    UpdateLightColor();
    UpdateMaxCurrent();
    UpdateTurnOffPoint();
    UpdateNoSignal();
    UpdateHysteresis();
    UpdateXMit();
}

} // namespace corvane
