#pragma once

#include "base/Event.h"
#include "controls/Dialogs.h"
#include "system/Programs.h"

#include <string>

namespace corvane {

/// The orderly end of the program, and what it starts when it ends.
class Application {
  public:
    Application(Programs& programs, Dialogs& dialogs) : programs_(programs), dialogs_(dialogs) {}

    /// A program beside the running one, to be started at the end. Empty for none.
    void setPendingRestart(const std::string& program, const std::string& arguments) {
        pendingProgram_ = program;
        pendingArguments_ = arguments;
    }
    void clearPendingRestart() { setPendingRestart({}, {}); }
    [[nodiscard]] const std::string& PendingRestartProgram() const { return pendingProgram_; }

    /// Starts a program beside the running one; a failure is told.
    void RunFromProgramDirectory(const std::string& program, const std::string& arguments) const;
    /// Lets the desktop open an address or document.
    void OpenInBrowser(const std::string& target) const { programs_.OpenInBrowser(target); }
    /// The last thing that is done: tells that the program ends, and starts what shall take its
    /// place.
    void ShutDownApplication();

    Event<> Ending;

  private:
    Programs& programs_;
    Dialogs& dialogs_;
    std::string pendingProgram_;
    std::string pendingArguments_;
};

} // namespace corvane
