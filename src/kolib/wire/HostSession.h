#pragma once

#include "base/Clock.h"
#include "kolib/KOPackets.h"
#include "kolib/wire/Endpoint.h"
#include "kolib/wire/FrameDecoder.h"

namespace corvane::wire {

/// Serial bytes to and from the product. Writing takes everything or loses it, as a serial line
/// does; reading gives what has arrived, perhaps nothing.
class ByteStream {
  public:
    virtual ~ByteStream() = default;
    [[nodiscard]] virtual std::size_t read(std::span<std::uint8_t> target) = 0;
    virtual void write(ByteView bytes) = 0;
};

/// The computer's end of the transport: sessions, and packets in and out. Bytes move only in
/// `pump` and, outwards, in the sending operations. The stream must outlive its attachment.
class HostSession final : public KOPackets {
  public:
    HostSession(const Clock& clock, DebugCallbacks callbacks);

    /// Starts from nothing on this stream, or on none.
    void attach(ByteStream* stream);
    /// Forgets what was sent to a product that has lost its power.
    void productReset();
    /// Takes in what has arrived, at most `PumpLimit` bytes so that no product can hold up its
    /// caller, and sends again what was not acknowledged.
    void pump();

    static constexpr std::size_t PumpLimit = 16384;
    static constexpr std::size_t ReceivedLimit = 4096; // packets that nobody has taken

    bool SendHello(int value) override;
    bool ReceivedHello() override { return echoed_; }
    bool SendPacket(int channel, std::span<const std::uint8_t> data) override;
    int SendQueue(int& errorCount) override;
    bool ReceivePacket(int& channel, int& length) override;
    void ReceivePacketData(std::span<std::uint8_t> target) override;

  private:
    struct Received {
        std::uint8_t channel = 0;
        Bytes data;
    };

    void transmit(ByteView bytes, bool repeat);
    void received(Frame&& frame, ByteView raw);

    const Clock& clock_;
    DebugCallbacks callbacks_;
    ByteStream* stream_ = nullptr;
    Endpoint endpoint_;
    FrameDecoder decoder_;
    std::deque<Received> received_;
    Received current_;
    std::uint8_t hello_ = 0;
    bool echoed_ = false;
};

} // namespace corvane::wire
