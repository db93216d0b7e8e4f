#include "relay/PactorDocument.h"

#include "history/TextChange.h"

#include <algorithm>

namespace corvane {

namespace {

using PactorUndoableTextChange = TextChange<PactorDocument>;

class PactorHistoryLoader final : public HistoryLoader {
  public:
    [[nodiscard]] std::unique_ptr<UndoableChange> Load(std::string_view prefix) const override {
        return prefix == PactorDocument::TextPrefix ? std::make_unique<PactorUndoableTextChange>()
                                                    : nullptr;
    }
};

constexpr std::array percentages{
    std::pair{PactorDocument::TripPoint, &PactorSettings::tripPoint},
    std::pair{PactorDocument::Hysteresis, &PactorSettings::hysteresis},
};

/// The place of a percentage or a flag; nothing where there is none.
template<class Settings>
auto percentage(Settings& settings, std::string_view name) -> decltype(&settings.tripPoint) {
    for (const auto& [known, member] : percentages)
        if (name == known)
            return &(settings.*member);
    return nullptr;
}

template<class Settings>
auto flag(Settings& settings, int index, std::string_view name) -> decltype(&settings.relay[0]) {
    const auto in = [index](auto& flags) {
        return index >= 0 && index < static_cast<int>(flags.size())
                   ? &flags[static_cast<std::size_t>(index)]
                   : nullptr;
    };
    if (name == PactorDocument::Indicator)
        return in(settings.indicator);
    return name == PactorDocument::Relay ? in(settings.relay) : nullptr;
}

std::string_view flagText(bool on) {
    return on ? PactorDocument::On : std::string_view();
}

} // namespace

PactorDocument::PactorDocument(const History::Surroundings& surroundings)
    : history_(*this, surroundings) {
    onReset_ = history_.ResettingToDefaults.connect([this] {
        settings_ = {};
        for (const std::string_view name : Names)
            SettingChanged.raise(name);
    });
    history_.setFilter("Relay Settings Files (*.relay)|*.relay");
    history_.setTypeCode("Pactor");
    history_.setVersionCode(1);
    history_.setLoader(std::make_unique<PactorHistoryLoader>());
}

std::string PactorDocument::Data(int index, std::string_view propertyName) const {
    if (const int* percent = percentage(settings_, propertyName))
        return std::to_string(*percent);
    const bool* on = flag(settings_, index, propertyName);
    return std::string(flagText(on != nullptr && *on));
}

void PactorDocument::setData(WriteAccess, int index, std::string_view propertyName,
                             std::string_view text) {
    if (int* percent = percentage(settings_, propertyName))
        *percent = std::clamp(ReadInteger(text), 0, 100);
    else if (bool* on = flag(settings_, index, propertyName))
        *on = text == On;
    else
        return;
    SettingChanged.raise(propertyName);
}

bool PactorDocument::takesData(int index, std::string_view propertyName) {
    const PactorSettings settings;
    const bool ofFlags = propertyName == Indicator || propertyName == Relay;
    return !ofFlags || flag(settings, index, propertyName) != nullptr;
}

void PactorDocument::record(std::string_view propertyName, int index, std::string_view newValue,
                            bool dontCountAsDirty) {
    if (newValue == Data(index, propertyName))
        return;
    auto change = std::make_unique<PactorUndoableTextChange>();
    change->Initialize(*this, index, std::string(propertyName), std::string(newValue));
    history_.Record(std::move(change), dontCountAsDirty);
}

void PactorDocument::recordAll(const PactorSettings& settings) {
    for (const auto& [name, member] : percentages)
        record(name, 0, std::to_string(settings.*member), true);
    const auto recordFlags = [this](std::string_view name, const auto& flags) {
        int index = 0;
        for (const bool on : flags)
            record(name, index++, flagText(on), true);
    };
    recordFlags(Indicator, settings.indicator);
    recordFlags(Relay, settings.relay);
}

} // namespace corvane
