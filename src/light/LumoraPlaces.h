#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// A place in the light editor: where a person is, or where a change belongs.
struct LumoraPlace {
    enum class Kind { Channel, AllChannels, Transmitter, Simulator };
    Kind kind = Kind::Channel;
    int channel = 0;

    bool operator==(const LumoraPlace&) const = default;
};

/// Where a change of this setting, or of the segments of this channel, belongs.
[[nodiscard]] LumoraPlace PlaceOfChange(int channel, std::string_view propertyName);

/// What to ask before an undo or redo that would happen out of view; empty if it happens in view.
[[nodiscard]] std::string SwitchQuestion(const LumoraPlace& user, const LumoraPlace& change,
                                         bool undoing);

} // namespace corvane
