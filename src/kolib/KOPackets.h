#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace corvane {

/// Packets to and from the product behind the open link device. Whether a packet arrived is known
/// only through the product's answers and `SendQueue`.
class KOPackets {
  public:
    virtual ~KOPackets() = default;

    /// Starts a session; the value goes with it. False if no device is open.
    [[nodiscard]] virtual bool SendHello(int value) = 0;
    /// Whether the echo of the last hello has come. Waits for it until 10 ms after the hello.
    [[nodiscard]] virtual bool ReceivedHello() = 0;
    /// Hands over a packet of 0 to 255 bytes on a channel from 0 to 255. False if it was not
    /// accepted: no device, too many waiting, or an argument out of range.
    [[nodiscard]] virtual bool SendPacket(int channel, std::span<const std::uint8_t> data) = 0;
    /// Packets still unsent; `errorCount` becomes the number given up in this session.
    [[nodiscard]] virtual int SendQueue(int& errorCount) = 0;
    /// Moves on to the next received packet, dropping one left unread. False if there is none.
    [[nodiscard]] virtual bool ReceivePacket(int& channel, int& length) = 0;
    /// Copies the current packet's bytes, as many as fit.
    virtual void ReceivePacketData(std::span<std::uint8_t> target) = 0;
};

/// Who is told of the raw bytes of the transport. Each may be empty.
struct DebugCallbacks {
    using Callback = std::function<void(std::span<const std::uint8_t>)>;
    Callback received;  ///< A valid frame came in.
    Callback sent;      ///< A frame went out for the first time.
    Callback sentAgain; ///< A frame went out again.
    Callback outOfBand; ///< Received bytes that are no frame.
};

} // namespace corvane
