#pragma once

#include "bench/ProductSession.h"
#include "bench/Products.h"

namespace corvane::bench {

/// A link device with a wire and perhaps a product behind it, as a thing of bytes and time. It has
/// no thread: all happens in the calls, and `nextEvent` tells when the next one is due.
class VirtualLink {
  public:
    /// Told of frames in words, if set.
    using Log = std::function<void(const std::string& line)>;

    VirtualLink(Bench bench, Faults faults, int baud, unsigned seed, Log log);
    VirtualLink(const VirtualLink&) = delete;
    VirtualLink& operator=(const VirtualLink&) = delete;

    /// The strings that the computer sees now.
    [[nodiscard]] const LinkStrings& strings() const { return shown_; }
    /// Strings that are shown after the next plugging.
    void program(const LinkStrings& strings) { stored_ = strings; }
    /// Plugged in anew: the product has lost its power, faults count from the start.
    void plugIn(Time now);

    void fromComputer(ByteView bytes, Time now);
    /// Lets everything happen that is due, and gives the bytes that reach the computer.
    [[nodiscard]] Bytes run(Time now);
    [[nodiscard]] std::optional<Time> nextEvent() const;
    void powerCycle();
    /// The product's outputs, if it has some.
    [[nodiscard]] Outputs* outputs() { return firmware_ ? firmware_->outputs() : nullptr; }
    /// The fault that pulls the plug has come.
    [[nodiscard]] bool unplugged() const { return wire_.unplugged(); }

  private:
    [[nodiscard]] FaultyLine::Watcher watcher(std::string direction);

    LinkStrings shown_;
    LinkStrings stored_;
    std::unique_ptr<Firmware> firmware_;
    Log log_;
    WireState wire_;
    Time now_{0};
    FaultyLine toProduct_;
    FaultyLine toComputer_;
    std::unique_ptr<ProductSession> product_;
};

/// A frame in words for the log, such as "DATA 3 on channel 208: 0 0 7".
[[nodiscard]] std::string describeFrame(ByteView raw);

} // namespace corvane::bench
