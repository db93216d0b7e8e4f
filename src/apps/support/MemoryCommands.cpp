#include "apps/support/MemoryCommands.h"

#include "apps/support/ConsoleDialogs.h"
#include "apps/support/ExitStatus.h"
#include "eeprom/GenericEEPROMProgrammer.h"

#include <algorithm>
#include <iostream>

namespace corvane {

namespace {

/// A connection for one job, let go at its end.
class Job {
  public:
    explicit Job(Program& program)
        : program_(program), programmer(program.workplace(dialogs_, dialogs_)) {
        const JobOutcome reached = ReachAny(program);
        connected = reached.done();
        if (!connected)
            static_cast<void>(Report(reached));
    }
    ~Job() { program_.link.DisconnectAndBlock(false); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

  private:
    Program& program_;
    ConsoleDialogs dialogs_;

  public:
    GenericEEPROMProgrammer programmer;
    bool connected = false;
};

} // namespace

JobOutcome ReachAny(Program& program) {
    ConsoleDialogs dialogs;
    JobOutcome reached =
        ReachProduct(program.workplace(dialogs, dialogs), program.link.Class(), true);
    if (!reached.done())
        reached.text = program.link.IsConnected() ? "Unable to connect to the product."
                                                  : "No Corvane is connected.";
    return reached;
}

int ReadMemory(Program& program, int address, int length) {
    Job job(program);
    KOBuffer all;
    for (int done = 0; job.connected && done < length; done += GenericEEPROMProgrammer::MaxRead) {
        KOBuffer piece;
        if (!job.programmer.ReadExactly(
                address + done, std::min(length - done, GenericEEPROMProgrammer::MaxRead), piece))
            return ExitStatus::Failed;
        all.AppendBuffer(piece);
    }
    if (!job.connected)
        return ExitStatus::Failed;
    std::cout << all.ToString() << '\n';
    return ExitStatus::Done;
}

int WriteMemory(Program& program, int address, const std::vector<int>& bytes) {
    Job job(program);
    if (!job.connected)
        return ExitStatus::Failed;
    KOBuffer all;
    for (const int byte : bytes)
        all.Append(static_cast<std::uint8_t>(byte));
    int done = 0;
    for (const KOBuffer& piece : all.Split(GenericEEPROMProgrammer::MaxRead)) {
        if (!job.programmer.WriteEEPROM(address + done, piece))
            return ExitStatus::Failed;
        done += piece.Length();
    }
    return ExitStatus::Done;
}

} // namespace corvane
