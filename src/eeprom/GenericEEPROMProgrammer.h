#pragma once

#include "link/ProductJob.h"

namespace corvane {

/// Reads and writes the EEPROM of whatever product hangs on the link. Every operation blocks until
/// it is done, keeps the link running meanwhile, shows its own message if it fails, and puts the
/// busy pointer back before that. Lives for one job.
class GenericEEPROMProgrammer final : public ProductJob {
  public:
    static constexpr int MaxRead = 255; ///< Bytes of one read, and so of one verified write.

    explicit GenericEEPROMProgrammer(const Workplace& place) : ProductJob(place) {}

    Event<int, int> Reading; ///< Bytes so far, and in all.
    Event<int, int> Writing;

    using ProductJob::Connect;
    /// Returns when the link has let go.
    void Disconnect(bool pleaseReset) { with_.link.DisconnectAndBlock(pleaseReset); }

    /// Replaces `buffer` by the bytes read, as many as the product sent. `Address` has 16 bits,
    /// `Length` is at most `MaxRead`.
    [[nodiscard]] bool ReadEEPROM(int Address, int Length, KOBuffer& buffer);
    /// The same, for who needs just so many bytes: another number is a failure, and told.
    [[nodiscard]] bool ReadExactly(int Address, int Length, KOBuffer& buffer);
    /// Writes and reads back, at most `MaxRead` bytes. A failure leaves what has been written.
    [[nodiscard]] bool WriteEEPROM(int Address, const KOBuffer& buffer);
    /// Waits for the reply that an operation no longer waited for, if there is one, so that it is
    /// not taken for the reply to the next request.
    void AwaitLateReply();

    /// Size of the receive buffer of the product's controller, 5 bytes or more.
    [[nodiscard]] int UCBufferSize() const { return chunkPayload_ + PacketOverhead; }
    void setUCBufferSize(int bytes) { chunkPayload_ = bytes - PacketOverhead; }

  private:
    static constexpr int PacketOverhead = 4;

    void ProcessPacket(const KOPacket& packet) override;
    [[nodiscard]] bool WriteChunk(int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WriteChunkWithRetries(int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WriteWithTries(int tries, int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WaitForReply();
    void sleep() const;

    int chunkPayload_ = 1;
    KOBuffer reply_;
    bool waiting_ = false;
    int overdue_ = 0; // replies that nobody waits for any more
};

} // namespace corvane
