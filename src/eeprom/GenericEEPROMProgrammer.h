#pragma once

#include "link/Workplace.h"

namespace corvane {

/// Reads and writes the EEPROM of whatever product hangs on the link. Every operation blocks until
/// it is done, keeps the link running meanwhile, shows its own message if it fails, and puts the
/// busy pointer back before that. Lives for one job; its owner passes every packet on to it.
class GenericEEPROMProgrammer {
  public:
    static constexpr int MaxRead = 255; ///< Bytes of one read, and so of one verified write.

    explicit GenericEEPROMProgrammer(const Workplace& place) : with_(place) {}

    Event<int, int> Reading; ///< Bytes so far, and in all.
    Event<int, int> Writing;

    /// `friendlyName` is what the failure message calls the product.
    [[nodiscard]] bool Connect(const std::string& className, const std::string& friendlyName,
                               bool anyDevice);
    /// Returns when the link has let go.
    void Disconnect(bool pleaseReset) { with_.link.DisconnectAndBlock(pleaseReset); }
    void ProcessPacket(const KOPacket& packet);

    /// Replaces `buffer` by the bytes read, as many as the product sent. `Address` has 16 bits,
    /// `Length` is at most `MaxRead`.
    [[nodiscard]] bool ReadEEPROM(int Address, int Length, KOBuffer& buffer);
    /// Writes and reads back, at most `MaxRead` bytes. A failure leaves what has been written.
    [[nodiscard]] bool WriteEEPROM(int Address, const KOBuffer& buffer);

    /// Size of the receive buffer of the product's controller, 5 bytes or more.
    [[nodiscard]] int UCBufferSize() const { return chunkPayload_ + PacketOverhead; }
    void setUCBufferSize(int bytes) { chunkPayload_ = bytes - PacketOverhead; }

  private:
    static constexpr int PacketOverhead = 4;

    [[nodiscard]] bool WriteChunk(int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WriteChunkWithRetries(int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WriteWithTries(int tries, int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WaitForReply();
    [[nodiscard]] bool fail(const std::string& text);
    void sleep() const;

    Workplace with_;
    int chunkPayload_ = 1;
    KOBuffer reply_;
    bool waiting_ = false;
};

} // namespace corvane
