#include "light/LumoraPlaces.h"

#include "light/LumoraDocument.h"

namespace corvane {

namespace {

using Kind = LumoraPlace::Kind;

std::string whereItOccurs(const LumoraPlace& user, const LumoraPlace& change) {
    switch (change.kind) {
    case Kind::Simulator:
        return " occurs in the simulator. ";
    case Kind::Transmitter:
        // The simulator's question has always been spelled like this.
        return user.kind == Kind::Simulator ? " occurs in the transmiter. "
                                            : " occurs in the transmitter. ";
    default:
        return " occurs on channel " + std::to_string(change.channel) + ". ";
    }
}

std::string whereTheUserIs(const LumoraPlace& user) {
    switch (user.kind) {
    case Kind::Channel:
        return "You are presently editing channel " + std::to_string(user.channel) + ".";
    case Kind::Simulator:
        return "You are presently in the simulator.";
    case Kind::Transmitter:
        return "You are presently in the transmitter.";
    case Kind::AllChannels:
        return {};
    }
    return {};
}

std::string whatToDo(const LumoraPlace& user, const LumoraPlace& change) {
    switch (change.kind) {
    case Kind::Simulator:
        return "Would you like to go to the simulator and make the change?";
    case Kind::Transmitter:
        return "Would you like to go to the transmitter and make the change?";
    default:
        return user.kind == Kind::Channel
                   ? "Would you like to switch channels and make the change?"
                   : "Would you like to go to channel " + std::to_string(change.channel) +
                         " and make the change?";
    }
}

} // namespace

LumoraPlace PlaceOfChange(int channel, std::string_view propertyName) {
    if (propertyName.starts_with(LumoraDocument::SimulatorStart))
        return {Kind::Simulator, 0};
    if (propertyName.starts_with(LumoraDocument::TransmitterStart))
        return {Kind::Transmitter, 0};
    return {Kind::Channel, channel};
}

std::string SwitchQuestion(const LumoraPlace& user, const LumoraPlace& change, bool undoing) {
    const bool inView =
        user == change || (user.kind == Kind::AllChannels && change.kind == Kind::Channel);
    if (inView)
        return {};
    return std::string("The change you are about to ") + (undoing ? "undo" : "redo") +
           whereItOccurs(user, change) + whereTheUserIs(user) + "\r\n\r\n" + whatToDo(user, change);
}

} // namespace corvane
