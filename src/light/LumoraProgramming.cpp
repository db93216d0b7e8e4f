#include "light/LumoraProgramming.h"

#include "base/Numbers.h"

namespace corvane {

namespace {

constexpr int TooMany = 255; // red

std::string percentText(double share) {
    return WriteFixed(share * 100, 1) + "%";
}

} // namespace

LumoraProgramming::LumoraProgramming() : onOk_(OKButton.Click.connect([this] { close(); })) {
    Cure.setVisible(false);
    OKButton.setEnabled(false, "The controller is being programmed.");
}

void LumoraProgramming::SetProgrammer(LumoraProgrammer& programmer) {
    on_.clear();
    on_(programmer.Connected, [this] {
        Status.setCaption("Programming, please wait...");
        Refresh.raise();
    });
    const auto end = [this, &programmer] { showEnd(programmer.outcome()); };
    on_(programmer.ConnectionFailed, end);
    on_(programmer.ProgrammingStarted, [this](int used, int most) { showBlocks(used, most); });
    on_(programmer.ProgressChanged,
        [this, &programmer] { Progress.setValue(programmer.Progress()); });
    on_(programmer.ProgrammingComplete, [this, end] {
        Progress.setValue(100);
        end();
    });
    on_(programmer.ProgrammingCanceled, end);
    on_(programmer.ProgrammingFailed, end);
    on_(programmer.ProgrammingFailedDueToCodeSpace, [this, end](int used, int most) {
        showBlocks(used, most);
        end();
    });
}

void LumoraProgramming::showBlocks(int blocksUsed, int maxBlocks) {
    SegmentsUsedLabel.setCaption(std::to_string(blocksUsed));
    SegmentsUsedLabel.setForeColor(blocksUsed > maxBlocks ? TooMany : 0);
    SegmentLimitLabel.setCaption(std::to_string(maxBlocks));
    MemoryInUseLabel.setCaption(percentText(static_cast<double>(blocksUsed) / maxBlocks));
}

void LumoraProgramming::showEnd(const JobOutcome& outcome) {
    Cure.setCaption(outcome.cure);
    Cure.setVisible(!outcome.cure.empty());
    Status.setCaption(outcome.text);
    OKButton.setEnabled(true, {});
}

} // namespace corvane
