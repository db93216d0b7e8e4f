#include "apps/support/ControlCommands.h"

#include "apps/support/AnsweringDialogs.h"
#include "apps/support/ExitStatus.h"
#include "eeprom/EEPROMEditorControl.h"
#include "pwm/QuillonControl.h"
#include "relay/PactorControl.h"

#include <iostream>

namespace corvane {

namespace {

/// A product control at work, with nobody looking at it.
template<class Control>
class Unwatched {
  public:
    explicit Unwatched(Program& program, std::optional<bool> answer = {})
        : program_(program), dialogs_(answer), control(program.workplace(dialogs_, dialogs_)) {}

    [[nodiscard]] bool open(const std::string& file) {
        return control.HistoryObject()->OpenHistory(file);
    }
    /// Does a job as a button does it.
    template<class... Arguments>
    [[nodiscard]] JobOutcome run(JobOutcome (Control::*job)(Arguments...), Arguments... arguments) {
        waitForLink();
        return (control.*job)(arguments...);
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
        while (!program_.link.IsConnected() && Elapsed(program_.clock.now(), start) < longest) {
            program_.link.Update();
            program_.pause();
        }
    }

    Program& program_;
    AnsweringDialogs dialogs_;

  public:
    Control control;
};

/// Reads a product, and saves what was read.
template<class Control>
int readInto(Unwatched<Control>& reader, const std::string& out) {
    const JobOutcome outcome = reader.run(&Control::ReadSettings);
    return outcome.done() && !reader.saveAs(out) ? ExitStatus::Failed : Report(outcome);
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
    return relay.open(file) ? Report(relay.run(&PactorControl::Program)) : ExitStatus::Failed;
}

int ProgramEEPROM(Program& program, const std::string& file, std::optional<bool> answer) {
    Unwatched<EEPROMEditorControl> eeprom(program, answer);
    return eeprom.open(file) ? Report(eeprom.run(&EEPROMEditorControl::Program))
                             : ExitStatus::Failed;
}

int ProgramQuillon(Program& program, const std::string& file, std::size_t slot) {
    Unwatched<QuillonControl> quillon(program);
    return quillon.control.slot(slot).program.HistoryObject().OpenHistory(file)
               ? Report(quillon.run(&QuillonControl::Upload, slot))
               : ExitStatus::Failed;
}

int ReadRelay(Program& program, const std::string& out) {
    Unwatched<PactorControl> relay(program);
    return readInto(relay, out);
}

int ReadEEPROM(Program& program, const std::string& in, const std::string& out) {
    Unwatched<EEPROMEditorControl> eeprom(program);
    return eeprom.open(in) ? readInto(eeprom, out) : ExitStatus::Failed;
}

} // namespace corvane
