#include "light/LumoraProgramming.h"

#include "base/Numbers.h"

namespace corvane {

namespace {

constexpr int Red = 255;

std::string percentText(double share) {
    return WriteFixed(share * 100, 1) + "%";
}

} // namespace

LumoraProgramming::LumoraProgramming() : onOk_(OKButton.Click.connect([this] { Closed.raise(); })) {
    OKButton.setEnabled(false, "The controller is being programmed.");
}

void LumoraProgramming::SetProgrammer(LumoraProgrammer& programmer) {
    connections_.clear();
    const auto on = [this](auto& event, auto react) {
        connections_.push_back(event.connect(react));
    };
    on(programmer.Connected, [this] {
        Status.setCaption("Programming, please wait...");
        Refresh.raise();
    });
    on(programmer.ConnectionFailed, [this] { end("Unable to connect to the Lumora."); });
    on(programmer.ProgrammingStarted, [this](int used, int most) { showBlocks(used, most); });
    on(programmer.ProgressChanged,
       [this, &programmer] { Progress.setValue(programmer.Progress()); });
    on(programmer.ProgrammingComplete, [this] {
        Progress.setValue(100);
        end(CompleteStatus);
    });
    on(programmer.ProgrammingCanceled, [this] { end("Programming canceled."); });
    on(programmer.ProgrammingFailed, [this] { end("Programming failed."); });
    on(programmer.ProgrammingFailedDueToCodeSpace, [this](int used, int most) {
        showBlocks(used, most);
        end("The Lumora controller can only hold " + std::to_string(most) + " segments.");
    });
}

void LumoraProgramming::showBlocks(int blocksUsed, int maxBlocks) {
    SegmentsUsedLabel.setCaption(std::to_string(blocksUsed));
    SegmentsUsedLabel.setForeColor(blocksUsed > maxBlocks ? Red : 0);
    SegmentLimitLabel.setCaption(std::to_string(maxBlocks));
    MemoryInUseLabel.setCaption(percentText(static_cast<double>(blocksUsed) / maxBlocks));
}

void LumoraProgramming::end(const std::string& status) {
    Status.setCaption(status);
    OKButton.setEnabled(true, {});
}

} // namespace corvane
