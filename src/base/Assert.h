#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace corvane {

/// A caller broke a limit that it must keep. The message is the text for the message box.
class AssertionFailed final : public std::logic_error {
  public:
    explicit AssertionFailed(const std::string& message) : std::logic_error(message) {}
};

/// Stops the operation with `AssertionFailed` if `condition` is false. Never for faults that come
/// from outside the program.
inline void Assert(bool condition, std::string_view text = {}) {
    if (condition)
        return;
    constexpr std::string_view failed = "Assertion failed.";
    throw AssertionFailed(text.empty() ? std::string(failed)
                                       : std::string(text) + "\r\n\r\n" + std::string(failed));
}

} // namespace corvane
