#pragma once

#include "bench/Firmware.h"
#include "kolib/wire/Endpoint.h"
#include "kolib/wire/FrameDecoder.h"

namespace corvane::bench {

/// The product's end of the transport: hello, identification, packets to and from the firmware,
/// exit handshake. Outside a session it sends nothing but echoes.
class ProductSession final : private Reply {
  public:
    using Transmit = std::function<void(ByteView bytes)>;

    ProductSession(Firmware& firmware, Transmit transmit);

    void received(ByteView bytes, Time now);
    void tick(Time now);
    /// When `tick` has something to do next.
    [[nodiscard]] std::optional<Time> nextTick() const;
    void powerCycle(Time now);
    [[nodiscard]] bool inSession() const { return inSession_; }

  private:
    void frame(wire::Frame&& frame);
    void startSession(std::uint8_t hello);
    void packet(std::uint8_t channel, const Bytes& data);
    void send(std::uint8_t channel, ByteView data) override;
    [[nodiscard]] std::uint32_t milliseconds() const;

    Firmware& firmware_;
    Transmit transmit_;
    wire::Endpoint endpoint_;
    wire::FrameDecoder decoder_;
    Time now_{0};
    Time lastSent_{0};
    bool inSession_ = false;
    bool leaving_ = false; // the exit was asked for; the session ends with its answer
};

} // namespace corvane::bench
