#include "eeprom/GenericEEPROMProgrammer.h"

#include "base/Assert.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr int ReadChannel = 208;
constexpr int WriteChannel = 209;
constexpr int ReadReplyChannel = 80;
constexpr int WriteReplyChannel = 81;
constexpr std::int32_t ReplyWithin = 500; // ms
constexpr std::int32_t TryAgainAfter = 50;
constexpr int ChunkTries = 8;
constexpr int ByteTries = 4;
constexpr int MaxChunk = 250; // bytes

void appendAddress(KOBuffer& buffer, int address) {
    buffer.Append(static_cast<std::uint8_t>(address % 256));
    buffer.Append(static_cast<std::uint8_t>(address / 256 % 256));
}

} // namespace

void GenericEEPROMProgrammer::ProcessPacket(const KOPacket& packet) {
    if (packet.Channel() == ReadReplyChannel)
        reply_ = packet.buffer().Clone();
    if (packet.Channel() != ReadReplyChannel && packet.Channel() != WriteReplyChannel)
        return;
    if (!std::exchange(waiting_, false) && overdue_ > 0)
        --overdue_;
}

bool GenericEEPROMProgrammer::ReadEEPROM(int Address, int Length, KOBuffer& buffer) {
    Assert(Length >= 0 && Length <= MaxRead, "An EEPROM is read in pieces of at most 255 bytes.");
    buffer = {};
    reply_ = {};
    if (Length == 0)
        return true;
    KOPacket request = with_.link.makePacket();
    request.setChannel(ReadChannel);
    appendAddress(request.buffer(), Address);
    request.buffer().Append(static_cast<std::uint8_t>(Length));
    static_cast<void>(request.Send()); // one that is not accepted is not answered
    Reading.raise(0, Length);
    if (!WaitForReply())
        return fail("Read timed out.", NoReplyCure(with_.link));
    Reading.raise(Length, Length);
    buffer = std::exchange(reply_, {});
    return true;
}

bool GenericEEPROMProgrammer::ReadExactly(int Address, int Length, KOBuffer& buffer) {
    if (!ReadEEPROM(Address, Length, buffer))
        return false;
    if (buffer.Length() == Length)
        return true;
    const auto number = [](int count, const char* one, const char* many) {
        return std::to_string(count) + (count == 1 ? one : many);
    };
    return fail("The product sent " + number(buffer.Length(), " byte", " bytes") + " where " +
                    number(Length, " was", " were") + " asked for.",
                "Nothing of it was taken over. Try again.");
}

bool GenericEEPROMProgrammer::WriteEEPROM(int Address, const KOBuffer& buffer) {
    if (buffer.Length() == 0)
        return true;
    int offset = 0;
    for (const KOBuffer& chunk : buffer.Split(std::min(chunkPayload_, MaxChunk)))
        if (!WriteChunkWithRetries(Address, chunk, offset))
            return fail("Write timed out.\r\n\r\nIf this problem occurs often, try connecting "
                        "through a powered USB hub.");
    Writing.raise(offset, buffer.Length());
    // A reply says that a piece was taken, not that it was kept.
    KOBuffer readBack;
    const auto couldNotRead = "Couldn't read back the EEPROM to verify it.";
    const bool replyMissing = overdue_ > 0;
    if (!ReadEEPROM(Address, buffer.Length(), readBack))
        return fail(couldNotRead);
    if (std::ranges::equal(buffer.bytes(), readBack.bytes()))
        return true;
    // What came may have been the late reply to a write.
    if (replyMissing) {
        AwaitLateReply();
        if (!ReadEEPROM(Address, buffer.Length(), readBack))
            return fail(couldNotRead);
    }
    return std::ranges::equal(buffer.bytes(), readBack.bytes()) ||
           fail("The EEPROM written does not match the EEPROM read.\r\n\r\nYou may want to try "
                "programming again.");
}

bool GenericEEPROMProgrammer::WriteChunk(int Address, const KOBuffer& chunk, int& offset) {
    KOPacket request = with_.link.makePacket();
    request.setChannel(WriteChannel);
    appendAddress(request.buffer(), Address + offset);
    request.buffer().AppendBuffer(chunk);
    static_cast<void>(request.Send());
    if (!WaitForReply())
        return false;
    offset += chunk.Length();
    return true;
}

bool GenericEEPROMProgrammer::WriteWithTries(int tries, int Address, const KOBuffer& chunk,
                                             int& offset) {
    for (int i = 0; i < tries; ++i) {
        if (WriteChunk(Address, chunk, offset))
            return true;
        sleep();
    }
    return false;
}

bool GenericEEPROMProgrammer::WriteChunkWithRetries(int Address, const KOBuffer& chunk,
                                                    int& offset) {
    if (WriteWithTries(ChunkTries, Address, chunk, offset))
        return true;
    // A product whose buffer is smaller than we think may take it byte by byte.
    const std::vector<KOBuffer> bytes = chunk.Split(1);
    return std::all_of(bytes.begin(), bytes.end(), [&](const KOBuffer& byte) {
        return WriteWithTries(ByteTries, Address, byte, offset);
    });
}

bool GenericEEPROMProgrammer::WaitForReply() {
    waiting_ = true;
    await(ReplyWithin, [this] { return !waiting_; });
    if (!std::exchange(waiting_, false))
        return true;
    ++overdue_;
    return false;
}

void GenericEEPROMProgrammer::AwaitLateReply() {
    await(ReplyWithin, [this] { return overdue_ <= 0; });
    overdue_ = 0;
}

void GenericEEPROMProgrammer::sleep() const {
    const std::uint32_t start = with_.clock.now();
    while (Elapsed(with_.clock.now(), start) < TryAgainAfter)
        with_.pause.pause();
}

} // namespace corvane
