#pragma once

#include "history/History.h"
#include "relay/PactorSettings.h"

namespace corvane {

/// The relay product's settings as a document. Only changes write it, and its history is its file.
class PactorDocument final : public HistoryHost {
  public:
    static constexpr std::string_view TextPrefix = "PactorText";
    static constexpr std::string_view TripPoint = "Trip Point";
    static constexpr std::string_view Hysteresis = "Hysteresis";
    static constexpr std::string_view Indicator = "Indicator";
    static constexpr std::string_view Relay = "Relay";
    /// Of all settings.
    static constexpr std::array Names{TripPoint, Hysteresis, Indicator, Relay};
    static constexpr std::string_view On = "ON"; ///< What is off is empty text.

    explicit PactorDocument(const History::Surroundings& surroundings);

    /// A setting was written: its name in `Data`.
    Event<std::string_view> SettingChanged;

    [[nodiscard]] History& HistoryObject() { return history_; }
    [[nodiscard]] const PactorSettings& settings() const { return settings_; }

    /// A setting by its name, as text. Percentages ignore the index; a name that is none, and an
    /// index that there is not, give empty text.
    [[nodiscard]] std::string Data(int index, std::string_view propertyName) const;
    /// Reads percentages leniently and limits them to 0 to 100; a name or index that there is not
    /// changes nothing.
    void setData(WriteAccess, int index, std::string_view propertyName, std::string_view text);
    /// Whether a change in a file may carry this index with this name.
    [[nodiscard]] static bool takesData(int index, std::string_view propertyName);

    /// Records a setting's new value, if it is one.
    void record(std::string_view propertyName, int index, std::string_view newValue,
                bool dontCountAsDirty = false);
    /// Records all that differs from these settings as changes that do not count as dirty.
    void recordAll(const PactorSettings& settings);

  private:
    PactorSettings settings_;
    History history_;
    Connection onReset_;
};

} // namespace corvane
