#include "apps/support/ControlCommands.h"

#include "apps/support/AnsweringDialogs.h"
#include "apps/support/ExitStatus.h"
#include "apps/support/LightCommands.h"
#include "eeprom/EEPROMEditorControl.h"
#include "link/ProductReach.h"
#include "pwm/QuillonControl.h"
#include "relay/PactorControl.h"

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
    void waitForLink() {
        constexpr std::int32_t longest = 1500; // ms
        AwaitLink(program_.workplace(dialogs_, dialogs_), longest,
                  [this] { return program_.link.IsConnected(); });
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

int CompileRelay(Program& program, const DocumentJob& job) {
    Unwatched<PactorControl> relay(program);
    if (!relay.open(job.file))
        return ExitStatus::Failed;
    return GiveBytes(program, relay.control.document.settings().toImage(), job.out);
}

int ProgramRelay(Program& program, const DocumentJob& job) {
    Unwatched<PactorControl> relay(program);
    return relay.open(job.file) ? Report(relay.run(&PactorControl::Program)) : ExitStatus::Failed;
}

int ProgramEEPROM(Program& program, const DocumentJob& job) {
    Unwatched<EEPROMEditorControl> eeprom(program, job.answer);
    return eeprom.open(job.file) ? Report(eeprom.run(&EEPROMEditorControl::Program))
                                 : ExitStatus::Failed;
}

int ProgramQuillon(Program& program, const DocumentJob& job) {
    Unwatched<QuillonControl> quillon(program);
    return quillon.control.slot(job.slot).program.HistoryObject().OpenHistory(job.file)
               ? Report(quillon.run(&QuillonControl::Upload, job.slot))
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
