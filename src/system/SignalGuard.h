#pragma once

namespace corvane {

/// While it holds, INT, TERM, HUP and PIPE do not end the process at once: they are noted, so that
/// what must not be left half done can be brought to an end. One object a process.
class SignalGuard {
  public:
    SignalGuard() = default;
    ~SignalGuard() { letGo(); }
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

    void hold();
    /// Ends the process as the signal would have, if one was noted.
    void letGo();
    [[nodiscard]] bool noted() const;

  private:
    bool holds_ = false;
};

} // namespace corvane
