#include "kolib/wire/Frame.h"

#include "base/Assert.h"

#include <array>

namespace corvane::wire {

namespace {

constexpr std::array<std::uint16_t, 256> crcTable = [] {
    std::array<std::uint16_t, 256> table{};
    for (unsigned value = 0; value < 256; ++value) {
        unsigned crc = value << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000U) != 0 ? (crc << 1) ^ 0x1021U : crc << 1;
        table[value] = static_cast<std::uint16_t>(crc);
    }
    return table;
}();

constexpr std::size_t CrcLength = 2;

} // namespace

std::uint16_t crc16(ByteView bytes) {
    unsigned crc = 0xFFFF;
    // CRC-16/CCITT, begun with ones: a frame of zeros has no check of zero.
    for (const std::uint8_t byte : bytes)
        crc = ((crc << 8) ^ crcTable[((crc >> 8) ^ byte) & 0xFFU]) & 0xFFFFU;
    return static_cast<std::uint16_t>(crc);
}

Bytes encodeFrame(const Frame& frame) {
    Assert(frame.data.size() <= MaxDataLength, "A packet carries at most 255 bytes.");
    Bytes body{static_cast<std::uint8_t>(frame.type), frame.number};
    if (frame.type == FrameType::Data) {
        body.push_back(frame.channel);
        body.insert(body.end(), frame.data.begin(), frame.data.end());
    }
    const std::uint16_t crc = crc16(body);
    body.push_back(static_cast<std::uint8_t>(crc & 0xFFU));
    body.push_back(static_cast<std::uint8_t>(crc >> 8));
    Bytes encoded = cobsEncode(body);
    encoded.push_back(0);
    return encoded;
}

std::optional<Frame> decodeFrame(ByteView collected) {
    const std::optional<Bytes> body = cobsDecode(collected);
    if (!body || body->size() < 2 + CrcLength)
        return std::nullopt;
    const ByteView content = ByteView(*body).first(body->size() - CrcLength);
    const unsigned crc = (*body)[content.size()] | ((*body)[content.size() + 1] << 8U);
    if (crc != crc16(content))
        return std::nullopt;

    Frame frame;
    frame.type = static_cast<FrameType>(content[0]);
    frame.number = content[1];
    switch (frame.type) {
    case FrameType::Data:
        if (content.size() < 3 || content.size() > 3 + MaxDataLength)
            return std::nullopt;
        frame.channel = content[2];
        frame.data.assign(content.begin() + 3, content.end());
        return frame;
    case FrameType::Ack:
    case FrameType::Hello:
    case FrameType::Echo:
        if (content.size() != 2)
            return std::nullopt;
        return frame;
    }
    return std::nullopt;
}

} // namespace corvane::wire
