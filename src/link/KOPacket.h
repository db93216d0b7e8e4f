#pragma once

#include "kolib/KOPackets.h"
#include "link/KOBuffer.h"

namespace corvane {

/// One packet: a channel and its bytes. The transport must outlive it.
class KOPacket {
  public:
    explicit KOPacket(KOPackets& transport) : transport_(&transport) {}

    [[nodiscard]] KOBuffer& buffer() { return buffer_; }
    [[nodiscard]] const KOBuffer& buffer() const { return buffer_; }
    [[nodiscard]] int Channel() const { return channel_; }
    void setChannel(int channel) { channel_ = channel; }

    /// False if the transport did not accept it. Changes nothing in the packet, which can be sent
    /// again.
    [[nodiscard]] bool Send() const { return transport_->SendPacket(channel_, buffer_.bytes()); }

  private:
    KOPackets* transport_;
    KOBuffer buffer_;
    int channel_ = 0;
};

} // namespace corvane
