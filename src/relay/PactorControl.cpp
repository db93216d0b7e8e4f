#include "relay/PactorControl.h"

#include "base/Numbers.h"
#include "base/Raised.h"
#include "eeprom/GenericEEPROMProgrammer.h"

namespace corvane {

namespace {
constexpr const char* FriendlyName = "relay";
constexpr int MiddleOfTheStick = 50; // percent

/// Shows a flag in a pair of options: on, off.
template<std::size_t Options, std::size_t Flags>
void showFlags(std::array<OptionButton, Options>& options, const std::array<bool, Flags>& flags) {
    static_assert(Options == 2 * Flags);
    for (std::size_t slot = 0; slot < Flags; ++slot) {
        options[2 * slot].setValue(flags[slot]);
        options[2 * slot + 1].setValue(!flags[slot]);
    }
}

} // namespace

PactorControl::PactorControl(const Workplace& place)
    : document({place.dialogs, place.pointer, place.files, place.journals}), place_(place) {
    place.link.setMaintainConnection(false);
    setToolTips();
    connectSettings();
    on_(tabs.Click, [this] { changeTab(); });
    on_(SimulateLossOfSignalCheck.Click, [this] { refreshSimulator(false); });
    jobs_.add(ReadSettingsButton, [this] { ReadSettings(); });
    jobs_.add(ProgramButton, [this] { Program(); });
    on_(document.SettingChanged, [this](std::string_view name) { showSetting(name); });
    History& history = document.HistoryObject();
    on_(history.Changed, [this] {
        refreshSimulator(true);
        status_.clear();
    });
    on_(history.FileOpened, [this](const std::string&) { refreshSimulator(true); });
    on_(history.ResettingToDefaults, [this] { resetToDefaults(); });
    SimulatorTab.setVisible(false);
    resetToDefaults();
}

void PactorControl::setToolTips() {
    for (OptionButton& option : optIndicator)
        option.setToolTipText("What the indicator does there");
    for (OptionButton& option : optRelay)
        option.setToolTipText("What the relay does there");
    Hysteresis.setToolTipText(
        "How far the stick has to pass the trip point before anything switches, 0 to 100 percent");
    SimulateLossOfSignalCheck.setToolTipText("As if the transmitter were switched off");
    ReadSettingsButton.setToolTipText("Open what is in the relay on the link as a new document");
    ProgramButton.setToolTipText("Put these settings into the relay on the link");
}

void PactorControl::connectSettings() {
    connectOptions(optIndicator, PactorDocument::Indicator);
    connectOptions(optRelay, PactorDocument::Relay);
    on_(Hysteresis.Validate, [this] {
        const int percent = std::clamp(ReadInteger(Hysteresis.Text()), 0, 100);
        document.record(PactorDocument::Hysteresis, 0, std::to_string(percent));
    });
    on_(tripPoint.Commit, [this] {
        if (!simulating_)
            document.record(PactorDocument::TripPoint, 0, std::to_string(tripPoint.Value()));
    });
    on_(tripPoint.Change, [this] {
        if (!simulating_)
            return;
        stickPosition_ = tripPoint.Value();
        refreshSimulator(false);
    });
}

template<std::size_t N>
void PactorControl::connectOptions(std::array<OptionButton, N>& options,
                                   std::string_view propertyName) {
    for (std::size_t n = 0; n < N; ++n)
        on_(options[n].Click, [this, &options, n, propertyName] {
            options[n ^ 1U].setValue(false); // the other one of the pair
            const bool on = options[n & ~std::size_t{1}].Value();
            document.record(propertyName, static_cast<int>(n / 2),
                            on ? PactorDocument::On : std::string_view());
        });
}

// Display

void PactorControl::showSetting(std::string_view name) {
    if (name == PactorDocument::TripPoint)
        showTripPoint();
    else if (name == PactorDocument::Hysteresis)
        Hysteresis.setText(std::to_string(document.settings().hysteresis));
    else if (name == PactorDocument::Indicator)
        showFlags(optIndicator, document.settings().indicator);
    else if (name == PactorDocument::Relay)
        showFlags(optRelay, document.settings().relay);
}

void PactorControl::showTripPoint() {
    tripPoint.setValue(simulating_ ? stickPosition_ : document.settings().tripPoint);
}

void PactorControl::resetToDefaults() {
    stickPosition_ = MiddleOfTheStick;
    status_.clear();
    for (const std::string_view name : PactorDocument::Names)
        showSetting(name);
    refreshSimulator(true);
}

void PactorControl::changeTab() {
    const bool simulating = tabs.SelectedItem().Tag == "Sim";
    if (simulating == simulating_)
        return;
    simulating_ = simulating;
    SimulatorTab.setVisible(simulating);
    SettingsTab.setVisible(!simulating);
    tripPoint.setSimulating(simulating);
    showTripPoint();
    // A tab begins on one side of the band, not where another stick has left it.
    refreshSimulator(true);
}

void PactorControl::refreshSimulator(bool ignoreHysteresis) {
    PactorRelay& relay = SimulatorRelay;
    if (!simulating_) {
        relay.setIndicatorBlinking(false);
        relay.setIndicatorOn(false);
        relay.setRelayOn(false);
        return;
    }
    const PactorSettings& settings = document.settings();
    if (SimulateLossOfSignalCheck.Value()) {
        relay.setIndicatorBlinking(true);
        relay.setRelayOn(settings.relay[2]);
        return;
    }
    relay.setIndicatorBlinking(false);
    const int band = ignoreHysteresis ? 0 : settings.hysteresis;
    const bool below = stickPosition_ < settings.tripPoint - band;
    if (!below && stickPosition_ < settings.tripPoint + band)
        return; // within the band all stays as it is
    relay.setIndicatorOn(settings.indicator[below ? 1 : 0]);
    relay.setRelayOn(settings.relay[below ? 1 : 0]);
}

// The product on the link

JobOutcome PactorControl::ReadSettings() {
    if (running_)
        return AnotherJobRuns();
    const Raised running(running_);
    BusyScope busy(place_.pointer);
    GenericEEPROMProgrammer reader(place_);
    KOBuffer image;
    JobOutcome outcome;
    if (!reader.Connect(ControlClass::Pactor, FriendlyName, false)) {
        outcome = reader.outcome();
    } else if (!reader.ReadEEPROM(0, PactorSettings::ImageLength, image)) {
        outcome = {JobOutcome::Reason::Failed, "Read failed!", {}};
        status_.error(outcome.text);
    } else {
        busy.end();
        outcome = apply(image);
        if (outcome.done())
            status_.report(outcome.text);
    }
    reader.Disconnect(false); // also from a product that is no relay
    return outcome;
}

JobOutcome PactorControl::apply(const KOBuffer& image) {
    // The person is asked for the old document before anything of the new one is looked at.
    if (!document.HistoryObject().NewHistory())
        return {JobOutcome::Reason::Canceled, "The document was kept.", {}};
    if (image.Length() != PactorSettings::ImageLength) {
        const std::string text = "Buffer is " + std::to_string(image.Length()) + " bytes.";
        place_.dialogs.Message({"Error", text, MessageBox::Icon::Warning, MessageBox::Buttons::Ok});
        return {JobOutcome::Reason::Failed, text, {}, true};
    }
    document.recordAll(PactorSettings::fromImage(image));
    return {JobOutcome::Reason::Done, "Settings read.", {}};
}

JobOutcome PactorControl::Program() {
    if (running_)
        return AnotherJobRuns();
    const Raised running(running_);
    const BusyScope busy(place_.pointer);
    GenericEEPROMProgrammer writer(place_);
    JobOutcome outcome{JobOutcome::Reason::Done, "Programmed.", {}};
    if (!writer.Connect(ControlClass::Pactor, FriendlyName, false)) {
        outcome = writer.outcome();
    } else if (writer.WriteEEPROM(0, document.settings().toImage())) {
        status_.report(outcome.text);
    } else {
        outcome = {JobOutcome::Reason::Failed, "Programming failed!", {}};
        status_.error(outcome.text);
    }
    writer.Disconnect(false);
    return outcome;
}

} // namespace corvane
