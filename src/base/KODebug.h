#pragma once

#include "base/Event.h"
#include "base/RunModes.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace corvane {

/// Passes diagnostic lines on to whoever shows them.
class KODebugger {
  public:
    Event<const std::string&> WritingLine;

    void WriteLine(const std::string& text) const { WritingLine.raise(text); }
};

/// The diagnostics log that every part writes through. Lines are lost while no debugger is set or
/// `DebugMode` is off. Must not outlive the modes or the debugger that it was given.
class KODebug {
  public:
    explicit KODebug(const RunModes& modes) : modes_(modes) {}

    void SetDebugger(const KODebugger* debugger) { debugger_ = debugger; }
    /// Whether a line would reach anybody, for callers whose lines cost something to put together.
    [[nodiscard]] bool enabled() const { return debugger_ != nullptr && modes_.DebugMode; }
    void DebugWriteLine(const std::string& text) const {
        if (enabled())
            debugger_->WriteLine(text);
    }
    /// One line: the prefix and the bytes in decimal. Nothing for no bytes.
    void DebugWriteBytes(std::string_view prefix, std::span<const std::uint8_t> bytes) const;

  private:
    const RunModes& modes_;
    const KODebugger* debugger_ = nullptr;
};

/// The bytes in decimal with one blank between two of them.
[[nodiscard]] std::string DecimalBytes(std::span<const std::uint8_t> bytes);

} // namespace corvane
