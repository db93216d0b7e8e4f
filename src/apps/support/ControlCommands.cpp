#include "apps/support/ControlCommands.h"

#include "apps/support/AnsweringDialogs.h"
#include "apps/support/ExitStatus.h"
#include "eeprom/EEPROMEditorControl.h"
#include "relay/PactorControl.h"

#include <iostream>

namespace corvane {

namespace {

/// A product control at work, with nobody looking at it.
template<class Control>
class Unwatched {
  public:
    explicit Unwatched(Program& program, std::optional<bool> answer = {})
        : program_(program),
          dialogs_(answer),
          control(program.workplace(dialogs_, dialogs_)),
          onPacket_(program.link.PacketReceived.connect(
              [this](const KOPacket& packet) { control.ProcessPacket(packet); })) {}

    [[nodiscard]] bool open(const std::string& file) {
        return control.HistoryObject()->OpenHistory(file);
    }
    /// Presses a button, and tells what the control says in the end.
    [[nodiscard]] bool press(const Button& button, const char* report) {
        waitForLink();
        button.press();
        const std::string& status = control.ProgrammingLabel.Caption();
        if (status == report)
            return true;
        if (!status.empty())
            Fail(status);
        return false;
    }
    [[nodiscard]] bool saveAs(const std::string& file) {
        dialogs_.setSaveName(file);
        return control.HistoryObject()->SaveHistoryAs();
    }

  private:
    /// A window has found the link long before anybody presses a button.
    void waitForLink() const {
        constexpr std::int32_t longest = 1500; // ms
        const std::uint32_t start = program_.clock.now();
        while (!program_.link.IsConnected() && TimeDiff(program_.clock.now(), start) < longest) {
            program_.link.Update();
            program_.pause();
        }
    }

    Program& program_;
    AnsweringDialogs dialogs_;

  public:
    Control control;

  private:
    Connection onPacket_;
};

int reported(bool done, const char* report) {
    if (done)
        std::cout << report << '\n';
    return done ? ExitStatus::Done : ExitStatus::Failed;
}

} // namespace

int CompileRelay(Program& program, const std::string& file, const std::string& out) {
    Unwatched<PactorControl> relay(program);
    if (!relay.open(file))
        return ExitStatus::Failed;
    const KOBuffer image = relay.control.document.settings().toImage();
    if (out.empty()) {
        std::cout << image.ToString() << '\n';
        return ExitStatus::Done;
    }
    const auto bytes = image.bytes();
    return program.files.ReplaceWhole(out, std::string(bytes.begin(), bytes.end()))
               ? ExitStatus::Done
               : Fail("Can't save the file.");
}

int ProgramRelay(Program& program, const std::string& file) {
    Unwatched<PactorControl> relay(program);
    return reported(relay.open(file) &&
                        relay.press(relay.control.ProgramButton, PactorControl::ProgrammedReport),
                    PactorControl::ProgrammedReport);
}

int ProgramEEPROM(Program& program, const std::string& file, std::optional<bool> answer) {
    Unwatched<EEPROMEditorControl> eeprom(program, answer);
    return reported(eeprom.open(file) && eeprom.press(eeprom.control.ProgramButton,
                                                      EEPROMEditorControl::ProgrammedReport),
                    EEPROMEditorControl::ProgrammedReport);
}

int ReadRelay(Program& program, const std::string& out) {
    Unwatched<PactorControl> relay(program);
    return reported(relay.press(relay.control.ReadSettingsButton, PactorControl::ReadReport) &&
                        relay.saveAs(out),
                    PactorControl::ReadReport);
}

int ReadEEPROM(Program& program, const std::string& in, const std::string& out) {
    Unwatched<EEPROMEditorControl> eeprom(program);
    return reported(
        eeprom.open(in) &&
            eeprom.press(eeprom.control.ReadSettingsButton, EEPROMEditorControl::ReadReport) &&
            eeprom.saveAs(out),
        EEPROMEditorControl::ReadReport);
}

} // namespace corvane
