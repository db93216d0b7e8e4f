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
    /// Writes and reads back, at most `MaxRead` bytes. What was not read back, or not as it was
    /// written, is read again, three times at most. A failure leaves what has been written.
    [[nodiscard]] bool WriteEEPROM(int Address, const KOBuffer& buffer);
    /// What failures name beside the address from now on; nothing if it is empty.
    void setVariable(std::string name) { variable_ = std::move(name); }
    /// Waits for the reply that an operation no longer waited for, if there is one, so that it is
    /// not taken for the reply to the next request.
    void AwaitLateReply();

    /// Size of the receive buffer of the product's controller, 5 bytes or more.
    [[nodiscard]] int UCBufferSize() const { return chunkPayload_ + PacketOverhead; }
    void setUCBufferSize(int bytes) { chunkPayload_ = bytes - PacketOverhead; }

  private:
    static constexpr int PacketOverhead = 4;

    void ProcessPacket(const KOPacket& packet) override;
    void requestRead(int Address, int Length);
    [[nodiscard]] bool takeReply(KOBuffer& buffer);
    [[nodiscard]] bool Verify(int Address, const KOBuffer& written);
    [[nodiscard]] bool readBack(int Address, int Length, int piece, KOBuffer& found);
    bool failAt(int address, const std::string& text);
    [[nodiscard]] bool failDifferent(int address, const KOBuffer& written, const KOBuffer& found);
    [[nodiscard]] std::string where(int address) const;
    [[nodiscard]] bool WriteChunk(int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WriteChunkWithRetries(int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WriteWithTries(int tries, int Address, const KOBuffer& chunk, int& offset);
    [[nodiscard]] bool WaitForReply();
    void sleep() const;

    int chunkPayload_ = 1;
    bool byteByByte_ = false; // a chunk has come through so only
    std::string variable_;
    KOBuffer reply_;
    bool waiting_ = false;
    int overdue_ = 0; // replies that nobody waits for any more
};

} // namespace corvane
