#pragma once

#include "controls/JobButtons.h"
#include "controls/StatusLine.h"
#include "controls/TripPointControl.h"
#include "link/JobOutcome.h"
#include "link/ProductControl.h"
#include "link/Workplace.h"
#include "relay/PactorDocument.h"
#include "relay/PactorRelay.h"

namespace corvane {

/// The editor of the relay product: its settings on one tab, what it does with them on another.
class PactorControl final : public ProductControl {
  public:
    explicit PactorControl(const Workplace& place);

    void UpdateReadyState(bool) override {}
    [[nodiscard]] History* HistoryObject() override { return &document.HistoryObject(); }
    [[nodiscard]] std::optional<std::string> ProductName() const override {
        return "Dervan/Maltrex";
    }
    [[nodiscard]] std::optional<TwipSize> GetSuggestedClientSize() const override {
        return TwipSize{4590, 5175};
    }

    /// Opens what is in the relay as a new document. What the buttons do, as the next one.
    JobOutcome ReadSettings();
    /// Puts the document into the relay.
    JobOutcome Program();

    PactorDocument document;

    TabStrip tabs{{{"Settings", {}}, {"Simulator", "Sim"}}};
    Frame SettingsTab;
    std::array<Frame, 3> OptionFrame{Frame("Above Trip Point"), Frame("Below Trip Point"),
                                     Frame("At Loss of Signal")};
    /// Two for each of the first two frames: on, off.
    std::array<OptionButton, 4> optIndicator{OptionButton("On"), OptionButton("Off"),
                                             OptionButton("On"), OptionButton("Off")};
    /// Two for each frame: on, off.
    std::array<OptionButton, 6> optRelay{OptionButton("On"), OptionButton("Off"),
                                         OptionButton("On"), OptionButton("Off"),
                                         OptionButton("On"), OptionButton("Off")};
    TextBox Hysteresis;
    Frame SimulatorTab;
    CheckBox SimulateLossOfSignalCheck{"Simulate Loss of Signal"};
    PactorRelay SimulatorRelay;
    TripPointControl tripPoint; ///< The trip point, or the stick's position on the other tab.
    Button ReadSettingsButton{"Read Settings"};
    Button ProgramButton{"Program"};
    Label ProgrammingLabel;

    /// Where the simulated stick stands, 0 to 100 percent.
    [[nodiscard]] int stickPosition() const { return stickPosition_; }

  private:
    void setToolTips();
    void connectSettings();
    void showSetting(std::string_view name);
    void showTripPoint();
    void resetToDefaults();
    void changeTab();
    void refreshSimulator(bool ignoreHysteresis);
    template<std::size_t N>
    void connectOptions(std::array<OptionButton, N>& options, std::string_view propertyName);
    [[nodiscard]] JobOutcome apply(const KOBuffer& image);

    Workplace place_;
    StatusLine status_{ProgrammingLabel, place_.dialogs, place_.pointer};
    JobButtons jobs_{place_.pointer};
    bool running_ = false;    // a job
    bool simulating_ = false; // the "Simulator" tab is on show
    int stickPosition_ = 50;  // percent
    Connections on_;
};

} // namespace corvane
