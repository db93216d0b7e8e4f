#include "shell/DebugForm.h"

namespace corvane {

namespace {
constexpr std::string_view DetailMark = "DBG: ";
}

DebugForm::DebugForm() : onClear_(ClearButton.Click.connect([this] { DebugText.clear(); })) {
    chkShowDetails.setToolTipText("Also show the bytes that go over the link from now on");
    ClearButton.setToolTipText("Empty the log");
}

void DebugForm::SetDebugger(KODebugger& debugger) {
    onLine_ = debugger.WritingLine.connect([this](const std::string& line) { write(line); });
}

void DebugForm::Done() {
    onLine_.disconnect();
    close();
}

void DebugForm::close() {
    if (!open_)
        return;
    open_ = false;
    Closed.raise();
}

void DebugForm::write(std::string line) {
    if (line.starts_with(DetailMark)) {
        if (!chkShowDetails.Value())
            return;
        line.erase(0, DetailMark.size());
    }
    DebugText.append(std::move(line));
    if (open_)
        return;
    open_ = true;
    Shown.raise();
}

} // namespace corvane
