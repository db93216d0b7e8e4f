#pragma once

#include "bench/FaultyLine.h"

namespace corvane::bench {

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

/// What one output of a product does at a moment.
struct Output {
    std::string name;
    int level = 0;
    int fullLevel = 1;
    std::string text; ///< The level for a person.
    std::string unit;
};

/// What a product does to the model that it is built into, and what the transmitter tells it.
class Outputs {
  public:
    virtual ~Outputs() = default;
    /// Stick position in percent of the transmitter's range; limited to 0 to 100.
    virtual void setStick(int percent, Time now) = 0;
    [[nodiscard]] virtual int stick() const = 0;
    virtual void setSignal(bool present, Time now) = 0;
    [[nodiscard]] virtual bool signal() const = 0;
    [[nodiscard]] virtual std::vector<Output> at(Time now) const = 0;
};

/// What a product does with packets, apart from the session itself.
class Firmware {
  public:
    virtual ~Firmware() = default;
    [[nodiscard]] virtual Identity identity() const = 0;
    /// The power has come: nothing of what was under way is left.
    virtual void powerOn(Time now) = 0;
    /// A computer has said hello: whoever has asked before is not there to be answered.
    virtual void sessionBegins() {}
    virtual void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) = 0;
    /// Goes on with what takes time.
    virtual void tick(Time now, Reply& reply) = 0;
    /// When `tick` has something to do next.
    [[nodiscard]] virtual std::optional<Time> nextTick() const = 0;
    /// Nothing for a product that has none.
    [[nodiscard]] virtual Outputs* outputs() { return nullptr; }
};

} // namespace corvane::bench
