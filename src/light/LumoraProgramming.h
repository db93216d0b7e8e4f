#pragma once

#include "controls/Inputs.h"
#include "light/LumoraProgrammer.h"

namespace corvane {

/// The dialog that shows one programming run, until the person confirms its end.
class LumoraProgramming {
  public:
    static constexpr const char* Caption = "Program Lumora";

    LumoraProgramming();
    LumoraProgramming(const LumoraProgramming&) = delete;
    LumoraProgramming& operator=(const LumoraProgramming&) = delete;

    /// Shows this run, which must outlive its end event.
    void SetProgrammer(LumoraProgrammer& programmer);

    Event<> Closed;  ///< The person has confirmed.
    Event<> Refresh; ///< What shows now is to be on the screen at once.

    Label Status{"Connecting to the Lumora..."};
    Label Cure; ///< What to do about a failure, as long as there is something.
    Label SegmentsUsedLabel;
    Label SegmentLimitLabel;
    Label MemoryInUseLabel;
    ProgressBar Progress;
    Button OKButton{"OK"};

    void close() const { Closed.raise(); }
    [[nodiscard]] bool over() const { return OKButton.Enabled(); }

  private:
    void showBlocks(int blocksUsed, int maxBlocks);
    void showEnd(const JobOutcome& outcome);

    Connections on_;
    Connection onOk_;
};

} // namespace corvane
