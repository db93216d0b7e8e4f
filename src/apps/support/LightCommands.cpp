#include "apps/support/LightCommands.h"

#include "apps/support/AnsweringDialogs.h"
#include "apps/support/ExitStatus.h"
#include "light/LumoraProgrammer.h"

#include <cstdio>
#include <iostream>
#include <unistd.h>

namespace corvane {

namespace {

std::string tooLarge(int blocksUsed, int maxBlocks) {
    return "The Lumora controller can only hold " + std::to_string(maxBlocks) +
           " segments. The program needs " + std::to_string(blocksUsed) + ".";
}

int failed(const LumoraCompiled& compiled) {
    return compiled.outcome == LumoraCompiled::Outcome::Canceled
               ? Fail("Programming canceled.")
               : Fail(tooLarge(compiled.segments, LumoraDocument::BlockLimit));
}

int give(Program& program, const std::string& text, const std::string& raw,
         const std::string& out) {
    if (out.empty())
        std::cout << text;
    else if (!program.files.ReplaceWhole(out, raw))
        return Fail("Can't save the file.");
    return ExitStatus::Done;
}

int compileImage(Program& program, const LumoraDocument& document, const std::string& out) {
    LumoraImageCompiler compiler(document);
    const LumoraCompiled compiled = compiler.compile();
    if (compiled.outcome != LumoraCompiled::Outcome::Done)
        return failed(compiled);
    return GiveBytes(program, compiler.image(), out);
}

int compileTransfers(Program& program, const LumoraDocument& document, const std::string& out,
                     Dialogs& dialogs) {
    LumoraTransferCompiler compiler(document, dialogs);
    const LumoraCompiled compiled = compiler.compile();
    if (compiled.outcome != LumoraCompiled::Outcome::Done)
        return failed(compiled);
    std::string lines;
    for (const LumoraTransfer& transfer : compiler.transfers())
        lines += std::to_string(transfer.kind) + ": " + transfer.data.ToString() + "\n";
    return give(program, lines, lines, out);
}

/// Draws the progress of a run on the error output, if that is a terminal.
void showProgress(int percent) {
    constexpr int length = 40;
    if (::isatty(STDERR_FILENO) == 0)
        return;
    const int filled = percent * length / 100;
    std::fprintf(stderr, "\r[%s%s] %3d%%",
                 std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(length - filled), '.').c_str(), percent);
    if (percent == 100)
        std::fputc('\n', stderr);
}

} // namespace

int GiveBytes(Program& program, const KOBuffer& bytes, const std::string& out) {
    return give(program, bytes.ToString() + "\n", {bytes.bytes().begin(), bytes.bytes().end()},
                out);
}

bool OpenLight(Program& program, LumoraDocument& document, const std::string& file) {
    if (program.products.ClassOfFile(file) != ControlClass::Lumora) {
        Fail(file + " is no light program.");
        return false;
    }
    return document.HistoryObject().OpenHistory(file);
}

int CompileLight(Program& program, const DocumentJob& job) {
    AnsweringDialogs dialogs(job.answer);
    LumoraDocument document({dialogs, dialogs, program.files});
    if (!OpenLight(program, document, job.file))
        return ExitStatus::Failed;
    if (const int channel = LumoraEncoding::channelWithUnknownFunction(document); channel != 0)
        return Fail("Channel " + std::to_string(channel) +
                    " has a segment with a function that the controller does not know.");
    return job.older ? compileTransfers(program, document, job.out, dialogs)
                     : compileImage(program, document, job.out);
}

int ProgramLight(Program& program, const DocumentJob& job) {
    AnsweringDialogs dialogs(job.answer);
    LumoraDocument document({dialogs, dialogs, program.files});
    if (!OpenLight(program, document, job.file))
        return ExitStatus::Failed;
    LumoraProgrammer run(program.workplace(dialogs, dialogs), document);
    const Connection onProgress =
        run.ProgressChanged.connect([&] { showProgress(run.Progress()); });
    const Connection onPrint = run.DebugPrint.connect(
        [&](const std::string& text) { program.debug.DebugWriteLine(text); });
    return Report(run.run());
}

} // namespace corvane
