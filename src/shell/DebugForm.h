#pragma once

#include "base/KODebug.h"
#include "controls/Inputs.h"
#include "controls/LogBox.h"

namespace corvane {

/// The window of the diagnostics log, without its looks. It shows at the first line.
class DebugForm {
  public:
    static constexpr const char* Title = "Debug Output";

    DebugForm();

    /// The window is to show; raised for each line that finds it closed.
    Event<> Shown;
    Event<> Closed;

    /// Shows that debugger's lines from now on. It must outlive the form.
    void SetDebugger(KODebugger& debugger);
    /// Ends the form: no line shows any more.
    void Done();
    /// The person has closed the window. The text stays, and the next line shows it again.
    void close();
    [[nodiscard]] bool open() const { return open_; }

    LogBox DebugText;
    CheckBox chkShowDetails{"Show details"};
    Button ClearButton{"Clear"};

  private:
    void write(std::string line);

    bool open_ = false;
    Connection onLine_;
    Connection onClear_;
};

} // namespace corvane
