#pragma once

#include "base/Event.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace corvane {

/// What goes with a message, or comes back as its answer.
using MessageValue =
    std::variant<std::monostate, bool, int, double, std::string, std::vector<std::uint8_t>>;

/// Carries messages from children to whoever made them. A parent hands one to its children; the
/// sender is told apart by its address alone.
class Messenger {
  public:
    Event<std::string_view, const void*, MessageValue&> MessageReceived;

    void Notify(std::string_view message, const void* sender, MessageValue& value) const {
        MessageReceived.raise(message, sender, value);
    }
    void Notify(std::string_view message, const void* sender) const {
        MessageValue nothing;
        Notify(message, sender, nothing);
    }
};

} // namespace corvane
