#pragma once

#include "controls/Dialogs.h"
#include "light/LumoraImage.h"

namespace corvane {

/// One of the typed transfers that the older controller takes.
struct LumoraTransfer {
    std::uint8_t kind = 0;
    KOBuffer data;

    /// The kind and all data bytes, modulo 256.
    [[nodiscard]] std::uint8_t checksum() const;
};

/// Makes the transfers of the older controller, in the order in which they are sent. Asks the
/// person where the program uses what that controller does not know. No segment may have an
/// unknown function.
class LumoraTransferCompiler {
  public:
    LumoraTransferCompiler(const LumoraDocument& document, Dialogs& dialogs)
        : document_(document), dialogs_(dialogs) {}

    /// There are transfers only if the outcome is Done.
    [[nodiscard]] LumoraCompiled compile();
    [[nodiscard]] const std::vector<LumoraTransfer>& transfers() const { return transfers_; }

  private:
    enum class Decision { NotAsked, ProgramAnyway, DoNot };

    [[nodiscard]] bool mayIgnoreRange();
    [[nodiscard]] bool mayAverage();
    bool CompileProgramBlocks();
    bool CompileTrackBlocks(int trackIndex);
    void queue(std::uint8_t kind, KOBuffer data);

    const LumoraDocument& document_;
    Dialogs& dialogs_;
    Decision decision_ = Decision::NotAsked;
    std::vector<LumoraTransfer> transfers_;
    int segments_ = 0;
};

} // namespace corvane
