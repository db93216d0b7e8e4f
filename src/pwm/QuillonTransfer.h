#pragma once

#include "link/ProductJob.h"

namespace corvane {

/// One exchange of requests and replies with the PWM product: connects, works, and lets it go at
/// its end. Every operation blocks until it is done and shows its own message if it fails, with the
/// normal pointer.
class QuillonTransfer final : public ProductJob {
  public:
    explicit QuillonTransfer(const Workplace& place) : ProductJob(place) {}
    ~QuillonTransfer();

    Event<std::uint8_t> BlockReceived; ///< Each block of a program, in order.
    Event<int, int> Progress;          ///< Blocks so far, and in all.

    [[nodiscard]] bool Connect();
    /// Fetches the program of a slot, 0 or 1. True if it holds a block that is not 0.
    [[nodiscard]] bool Download(int slot);
    /// At most 65535 blocks.
    [[nodiscard]] bool Upload(int slot, const KOBuffer& blocks);
    /// Gives the receiver's number, 0 to 255 as the product says it; nothing if it does not answer.
    [[nodiscard]] std::optional<std::uint8_t> ReadOptions();
    [[nodiscard]] bool WriteOptions(std::uint8_t receiverNumber);

  private:
    void ProcessPacket(const KOPacket& packet) override;
    [[nodiscard]] bool exchange(int channel, const KOBuffer& data);
    [[nodiscard]] bool ask(int channel, const KOBuffer& data, const char* failure);
    void takeLength(const KOBuffer& reply);
    void takeBlocks(const KOBuffer& reply);
    [[nodiscard]] bool isExpected(const char* fault, std::optional<int> received, int expected);

    int currentSlot_ = 0;
    int asked_ = 0; // channel of the request under way; 0 for none
    int transferPosition_ = 0;
    int transferCount_ = 0; // blocks asked for
    int transferLength_ = 0;
    bool allZero_ = true;
    std::uint8_t receiverNumber_ = 0;
};

} // namespace corvane
