#pragma once

#include "kolib/wire/Frame.h"

#include <deque>
#include <functional>

namespace corvane::wire {

/// One end of the packet transport: acknowledges and delivers what comes in once and in order, and
/// sends its own packets one at a time until each is acknowledged or given up. The same at the
/// computer and at the product; sessions are the business of its owner. Times are readings of a
/// millisecond clock that may wrap.
class Endpoint {
  public:
    /// How often an unacknowledged packet is sent in all, and the wait between sendings.
    static constexpr int Sendings = 6;
    static constexpr std::int32_t RepeatAfter = 50; // ms
    static constexpr std::size_t QueueLimit = 64;   // packets behind the unacknowledged one

    /// Puts a frame's bytes on the wire; `repeat` tells a second or later sending.
    using Transmit = std::function<void(ByteView bytes, bool repeat)>;
    using Deliver = std::function<void(std::uint8_t channel, Bytes&& data)>;

    Endpoint(Transmit transmit, Deliver deliver)
        : transmit_(std::move(transmit)), deliver_(std::move(deliver)) {}

    /// Starts over for a new session: queue and error count empty, sequence numbers from 0.
    void reset();
    /// The same, and keeps its packets to itself until it is released.
    void resetAndHold();
    void release(std::uint32_t now);
    /// The other end has started over: its numbers mean nothing any more.
    void forgetAccepted() { lastAccepted_.reset(); }
    /// Gives up all packets.
    void giveUp();

    /// Queues a packet and sends it as soon as its turn comes. False if the queue is full.
    [[nodiscard]] bool send(std::uint8_t channel, ByteView data, std::uint32_t now);

    /// Acts on a Data or Ack frame; other types are none of its business.
    void received(Frame&& frame, std::uint32_t now);

    /// Sends again or gives up what has waited too long.
    void tick(std::uint32_t now);

    /// Packets not yet acknowledged or given up.
    [[nodiscard]] std::size_t unsent() const { return queue_.size(); }
    /// Packets given up since the last `reset`.
    [[nodiscard]] int errors() const { return errors_; }
    /// Milliseconds until `tick` has something to do, at least 0; nothing if it waits for nothing.
    [[nodiscard]] std::optional<std::int32_t> untilTick(std::uint32_t now) const;

  private:
    void sendFirst(std::uint32_t now);
    void dropFirst(std::uint32_t now);

    Transmit transmit_;
    Deliver deliver_;
    std::deque<Frame> queue_; // the first one is on its way
    Bytes encoded_;           // the first one's bytes
    int sendings_ = 0;        // of the first one
    std::uint32_t lastSending_ = 0;
    std::uint8_t nextNumber_ = 0;
    std::optional<std::uint8_t> lastAccepted_;
    bool held_ = false;
    int errors_ = 0;
};

} // namespace corvane::wire
