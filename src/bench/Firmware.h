#pragma once

#include "bench/FaultyLine.h"

namespace corvane::bench {

class LightPlayer;

/// What a product tells of itself when a session starts.
struct Identity {
    std::uint8_t deviceMajor = 0;
    std::uint8_t deviceMinor = 0;
    std::uint8_t firmwareMajor = 0;
    std::uint8_t firmwareMinor = 0;
};

/// The way back to the computer while a session lasts.
class Reply {
  public:
    virtual ~Reply() = default;
    virtual void send(std::uint8_t channel, ByteView data) = 0;
};

/// What a product does with packets, apart from the session itself.
class Firmware {
  public:
    virtual ~Firmware() = default;
    [[nodiscard]] virtual Identity identity() const = 0;
    /// The power has come: nothing of what was under way is left.
    virtual void powerOn(Time now) = 0;
    virtual void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) = 0;
    /// Goes on with what takes time.
    virtual void tick(Time now, Reply& reply) = 0;
    /// When `tick` has something to do next.
    [[nodiscard]] virtual std::optional<Time> nextTick() const = 0;
    /// What its lights do, for a product that has some.
    [[nodiscard]] virtual LightPlayer* lights() { return nullptr; }
};

} // namespace corvane::bench
