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
constexpr int VerifyAgain = 3;
constexpr int ShortRead = 32; // bytes: so few come through where a long packet does not

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
    if (Length == 0)
        return true;
    requestRead(Address, Length);
    Reading.raise(0, Length);
    if (!takeReply(buffer))
        return failAt(Address, "Read timed out.");
    Reading.raise(Length, Length);
    return true;
}

void GenericEEPROMProgrammer::requestRead(int Address, int Length) {
    reply_ = {};
    KOPacket request = with_.link.makePacket();
    request.setChannel(ReadChannel);
    appendAddress(request.buffer(), Address);
    request.buffer().Append(static_cast<std::uint8_t>(Length));
    static_cast<void>(request.Send()); // one that is not accepted is not answered
}

bool GenericEEPROMProgrammer::takeReply(KOBuffer& buffer) {
    if (!WaitForReply())
        return false;
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
            return failAt(Address + offset,
                          "Write timed out.\r\n\r\nIf this problem occurs often, try connecting "
                          "through a powered USB hub.");
    Writing.raise(offset, buffer.Length());
    return Verify(Address, buffer);
}

/// A reply says that a piece was taken, not that it was kept. What was read may have been lost on
/// the way, or been the late reply to a write, so that a failure is none before it has come again.
bool GenericEEPROMProgrammer::Verify(int Address, const KOBuffer& written) {
    for (int again = 0;; ++again) {
        KOBuffer found;
        const bool read =
            readBack(Address, written.Length(), again == 0 ? MaxRead : ShortRead, found);
        if (read && std::ranges::equal(written.bytes(), found.bytes()))
            return true;
        if (again < VerifyAgain && with_.link.ready()) {
            AwaitLateReply();
            continue;
        }
        if (read)
            return failDifferent(Address, written, found);
        failAt(Address, "Read timed out.");
        return failAt(Address, "Couldn't read back the EEPROM to verify it.");
    }
}

bool GenericEEPROMProgrammer::readBack(int Address, int Length, int piece, KOBuffer& found) {
    for (int done = 0; done < Length; done += piece) {
        KOBuffer bytes;
        requestRead(Address + done, std::min(piece, Length - done));
        Reading.raise(done, Length);
        if (!takeReply(bytes))
            return false;
        found.AppendBuffer(bytes);
    }
    Reading.raise(Length, Length);
    return true;
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
    if (!byteByByte_ && WriteWithTries(ChunkTries, Address, chunk, offset))
        return true;
    // A product whose buffer is smaller than we think may take it byte by byte, and so the rest.
    byteByByte_ = byteByByte_ || chunk.Length() > 1;
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

bool GenericEEPROMProgrammer::failAt(int address, const std::string& text) {
    const auto reason =
        with_.link.IsConnected() ? JobOutcome::Reason::Failed : JobOutcome::Reason::NoLink;
    return fail({reason, text, "It was " + where(address) + ". " + NoReplyCure(with_.link)});
}

bool GenericEEPROMProgrammer::failDifferent(int address, const KOBuffer& written,
                                            const KOBuffer& found) {
    const auto [there, here] = std::ranges::mismatch(written.bytes(), found.bytes());
    const std::string at = where(address + static_cast<int>(there - written.bytes().begin()));
    return fail("The EEPROM written does not match the EEPROM read.\r\n\r\nYou may want to try "
                "programming again.",
                there == written.bytes().end() || here == found.bytes().end()
                    ? "The product sent " + std::to_string(found.Length()) + " bytes for " +
                          std::to_string(written.Length()) + "."
                    : "There is " + std::to_string(*here) + " instead of " +
                          std::to_string(*there) + " " + at + ".");
}

std::string GenericEEPROMProgrammer::where(int address) const {
    return "at address " + std::to_string(address) +
           (variable_.empty() ? "" : ", in the variable '" + variable_ + "'");
}

void GenericEEPROMProgrammer::sleep() const {
    const std::uint32_t start = with_.clock.now();
    while (Elapsed(with_.clock.now(), start) < TryAgainAfter)
        with_.pause.pause();
}

} // namespace corvane
