#include "apps/support/LightCommands.h"

#include "apps/support/AnsweringDialogs.h"
#include "apps/support/ExitStatus.h"
#include "light/LumoraProgrammer.h"
#include "system/File.h"

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

int compileImage(Program& program, const LumoraDocument& document, const std::string& out) {
    LumoraImageCompiler compiler(document);
    const LumoraCompiled compiled = compiler.compile();
    if (compiled.outcome != LumoraCompiled::Outcome::Done)
        return failed(compiled);
    if (out.empty()) {
        std::cout << compiler.image().ToString() << '\n';
        return ExitStatus::Done;
    }
    const auto bytes = compiler.image().bytes();
    return program.files.ReplaceWhole(out, std::string(bytes.begin(), bytes.end()))
               ? ExitStatus::Done
               : Fail("Can't save the file.");
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
    if (out.empty()) {
        std::cout << lines;
        return ExitStatus::Done;
    }
    return program.files.ReplaceWhole(out, lines) ? ExitStatus::Done : Fail("Can't save the file.");
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

bool OpenLight(Program& program, LumoraDocument& document, const std::string& file) {
    const KOProductProfile* product = program.products.ByExtension(KOIOExtension(file));
    if (product == nullptr || product->Class != "Corvane.LumoraControl") {
        Fail(file + " is no light program.");
        return false;
    }
    return document.HistoryObject().OpenHistory(file);
}

int CompileLight(Program& program, const std::string& file, bool older, const std::string& out,
                 std::optional<bool> answer) {
    AnsweringDialogs dialogs(answer);
    LumoraDocument document({dialogs, dialogs, program.files});
    if (!OpenLight(program, document, file))
        return ExitStatus::Failed;
    if (const int channel = LumoraEncoding::channelWithUnknownFunction(document); channel != 0)
        return Fail("Channel " + std::to_string(channel) +
                    " has a segment with a function that the controller does not know.");
    return older ? compileTransfers(program, document, out, dialogs)
                 : compileImage(program, document, out);
}

int ProgramLight(Program& program, const std::string& file, std::optional<bool> answer) {
    AnsweringDialogs dialogs(answer);
    LumoraDocument document({dialogs, dialogs, program.files});
    if (!OpenLight(program, document, file))
        return ExitStatus::Failed;
    LumoraProgrammer run(program.workplace(dialogs, dialogs), document);
    const Connection onProgress =
        run.ProgressChanged.connect([&] { showProgress(run.Progress()); });
    const Connection onPrint = run.DebugPrint.connect(
        [&](const std::string& text) { program.debug.DebugWriteLine(text); });
    return Report(run.run());
}

} // namespace corvane
