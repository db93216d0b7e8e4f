#pragma once

#include "support/TemporaryFolder.h"

#include <csignal>
#include <string>
#include <vector>

namespace corvane {

/// Another program that runs beside the test, and is killed with it at the latest.
class Process {
  public:
    /// The program stands among those that were built with the tests.
    explicit Process(const std::string& program, const std::vector<std::string>& arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const;
    /// Exit status, or -1 if a signal ended it.
    int wait();
    /// The signal that ended it, or 0 if none did.
    int waitForSignal();
    [[nodiscard]] int id() const { return pid_; }
    /// What it has written to its two outputs; whole after `wait`.
    [[nodiscard]] std::string output() const;
    [[nodiscard]] std::string errors() const;

  private:
    int end();

    TemporaryFolder folder_;
    int pid_ = -1;
};

} // namespace corvane
