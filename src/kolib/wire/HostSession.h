#pragma once

#include "base/Clock.h"
#include "kolib/KOPackets.h"
#include "kolib/wire/Endpoint.h"
#include "kolib/wire/FrameDecoder.h"

namespace corvane::wire {

/// Serial bytes to and from the product. Writing takes everything or loses it, as a serial line
/// does; reading gives what has arrived, perhaps nothing; waiting ends when something has arrived,
/// at the latest after so many milliseconds.
class ByteStream {
  public:
    virtual ~ByteStream() = default;
    [[nodiscard]] virtual std::size_t read(std::span<std::uint8_t> target) = 0;
    virtual void write(ByteView bytes) = 0;
    virtual void waitForData(int) {}
};

/// The computer's end of the transport: sessions, and packets in and out. Bytes move only in
/// `pump` and `ReceivedHello` and, outwards, in the sending operations. The stream must outlive its
/// attachment.
///
/// A session begins with the echo to a hello. Whatever comes before it was meant for somebody
/// earlier, perhaps for another program that was killed: it is dropped and not acknowledged. What
/// is to be sent waits for the echo as well, so that no answer to it can come before.
class HostSession final : public KOPackets {
  public:
    HostSession(const Clock& clock, DebugCallbacks callbacks);

    /// Starts from nothing on this stream, or on none.
    void attach(ByteStream* stream);
    /// The product has lost its power, and the session with it.
    void productReset();
    /// Takes in what has arrived, at most `PumpLimit` bytes so that no product can hold up its
    /// caller, and sends again what was not acknowledged.
    void pump();

    static constexpr std::size_t PumpLimit = 16384;
    static constexpr std::size_t ReceivedLimit = 4096; // packets that nobody has taken
    static constexpr std::int32_t EchoWithin = 10;     // ms that `ReceivedHello` waits at most

    bool SendHello(int value) override;
    bool ReceivedHello() override;
    bool SendPacket(int channel, std::span<const std::uint8_t> data) override;
    int SendQueue(int& errorCount) override;
    bool ReceivePacket(int& channel, int& length) override;
    void ReceivePacketData(std::span<std::uint8_t> target) override;

  private:
    struct Received {
        std::uint8_t channel = 0;
        Bytes data;
    };

    enum class State { NoSession, EchoAwaited, InSession };

    bool takeIn();
    void leave();
    void sayHello(bool repeat);
    void repeatHello();
    void sessionBegins();
    void transmit(ByteView bytes, bool repeat);
    void received(Frame&& frame, ByteView raw);

    const Clock& clock_;
    DebugCallbacks callbacks_;
    ByteStream* stream_ = nullptr;
    Endpoint endpoint_;
    FrameDecoder decoder_;
    std::deque<Received> received_;
    Received current_;
    State state_ = State::NoSession;
    std::uint8_t hello_ = 0;
    int helloSendings_ = 0;
    std::uint32_t lastHello_ = 0;    // when it was sent
    std::int32_t lastRoundTrip_ = 0; // ms from a hello to its echo
};

} // namespace corvane::wire
