#include "bench/QuillonFirmware.h"

#include "base/NumberWithin.h"

namespace corvane::bench {

namespace {

// The requests. The answers come on the same channels without the top bit.
constexpr std::uint8_t AskLength = 178;
constexpr std::uint8_t AskBlocks = 179;
constexpr std::uint8_t BeginUpload = 180;
constexpr std::uint8_t StoreBlocks = 181;
constexpr std::uint8_t EndUpload = 182;
constexpr std::uint8_t AskReceiver = 183;
constexpr std::uint8_t SetReceiver = 184;
constexpr std::uint8_t TopBit = 128;

constexpr std::size_t Slots = 2;
constexpr std::size_t MostBlocks = 65535;
// What lies where in the memory. New cells hold 255, so a length is kept as one less and the
// receiver's number as what it lacks to 255: a new product has no programs, and its first receiver.
constexpr std::size_t ReceiverPlace = 0;
constexpr std::size_t SlotSize = 2 + MostBlocks;
constexpr std::size_t MemorySize = 1 + Slots * SlotSize;

constexpr std::size_t placeOf(std::size_t slot) {
    return 1 + slot * SlotSize;
}

std::size_t word(ByteView data, std::size_t at) {
    return data[at] + (std::size_t{data[at + 1]} << 8);
}

} // namespace

std::optional<QuillonFirmware::Misbehaviour> QuillonFirmware::parse(std::string_view text) {
    constexpr std::string_view silent = "silent=";
    if (text.empty())
        return Misbehaviour{};
    if (text == "wrong-slot")
        return Misbehaviour{Fault::WrongSlot};
    if (text == "wrong-offset")
        return Misbehaviour{Fault::WrongOffset};
    if (text == "too-short")
        return Misbehaviour{Fault::TooShort};
    if (text == "too-long")
        return Misbehaviour{Fault::TooLong};
    if (!text.starts_with(silent))
        return std::nullopt;
    const auto channel = NumberWithin<int>(text.substr(silent.size()), AskLength, SetReceiver);
    if (!channel)
        return std::nullopt;
    return Misbehaviour{Fault::Silent, static_cast<std::uint8_t>(*channel)};
}

QuillonFirmware::QuillonFirmware(Identity identity, Misbehaviour misbehaviour)
    : identity_(identity), misbehaviour_(misbehaviour), memory_(MemorySize) {}

void QuillonFirmware::packet(std::uint8_t channel, ByteView data, Time, Reply& reply) {
    std::optional<Bytes> bytes = answer(channel, data);
    if (!bytes)
        return;
    // Kept before it is answered, and what is kept is sound: only the answer is spoilt.
    memory_.save();
    spoil(channel, *bytes);
    if (misbehaviour_.fault != Fault::Silent || misbehaviour_.silentChannel != channel)
        reply.send(static_cast<std::uint8_t>(channel - TopBit), *bytes);
}

std::optional<Bytes> QuillonFirmware::answer(std::uint8_t channel, ByteView data) {
    if (channel == AskReceiver)
        return Bytes{static_cast<std::uint8_t>(255 - memory_.at(ReceiverPlace))};
    if (data.empty())
        return std::nullopt;
    if (channel == SetReceiver) {
        memory_.write(ReceiverPlace, static_cast<std::uint8_t>(255 - data[0]));
        return Bytes{};
    }
    const std::size_t slot = data[0];
    if (slot >= Slots)
        return std::nullopt;
    switch (channel) {
    case AskLength:
        return Bytes{data[0], static_cast<std::uint8_t>(length(slot)),
                     static_cast<std::uint8_t>(length(slot) >> 8)};
    case AskBlocks: {
        if (data.size() < 4)
            return std::nullopt;
        Bytes bytes(data.begin(), data.begin() + 3);
        const Bytes stored = blocks(slot, word(data, 1), data[3]);
        bytes.insert(bytes.end(), stored.begin(), stored.end());
        return bytes;
    }
    case BeginUpload:
        if (data.size() < 3)
            return std::nullopt;
        setLength(slot, word(data, 1));
        return Bytes{};
    case StoreBlocks:
        if (data.size() < 4 || word(data, 1) + data.size() - 3 > MostBlocks)
            return std::nullopt;
        for (std::size_t i = 3; i < data.size(); ++i)
            memory_.write(placeOf(slot) + 2 + word(data, 1) + i - 3, data[i]);
        return Bytes{};
    case EndUpload:
        return Bytes{};
    default:
        return std::nullopt;
    }
}

Bytes QuillonFirmware::blocks(std::size_t slot, std::size_t offset, std::size_t count) const {
    Bytes bytes;
    for (std::size_t i = offset; i < offset + count && i < length(slot); ++i)
        bytes.push_back(memory_.at(placeOf(slot) + 2 + i));
    return bytes;
}

void QuillonFirmware::spoil(std::uint8_t channel, Bytes& answer) const {
    switch (misbehaviour_.fault) {
    case Fault::WrongSlot:
        if (channel == AskLength || channel == AskBlocks)
            answer[0] ^= 1;
        return;
    case Fault::WrongOffset:
        if (channel == AskBlocks)
            ++answer[1];
        return;
    case Fault::TooShort:
        if (!answer.empty())
            answer.pop_back();
        return;
    case Fault::TooLong:
        answer.push_back(99);
        return;
    case Fault::None:
    case Fault::Silent:
        return;
    }
}

std::size_t QuillonFirmware::length(std::size_t slot) const {
    const std::size_t place = placeOf(slot);
    return (memory_.at(place) + (std::size_t{memory_.at(place + 1)} << 8) + 1) % (MostBlocks + 1);
}

void QuillonFirmware::setLength(std::size_t slot, std::size_t length) {
    const std::size_t kept = (length + MostBlocks) % (MostBlocks + 1);
    memory_.write(placeOf(slot), static_cast<std::uint8_t>(kept));
    memory_.write(placeOf(slot) + 1, static_cast<std::uint8_t>(kept >> 8));
}

} // namespace corvane::bench
