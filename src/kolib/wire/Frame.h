#pragma once

#include "kolib/wire/Cobs.h"

namespace corvane::wire {

enum class FrameType : std::uint8_t { Data = 1, Ack = 2, Hello = 3, Echo = 4 };

inline constexpr std::size_t MaxDataLength = 255;
/// More bytes than this before an end mark can't be a frame.
inline constexpr std::size_t MaxCollected = 263;

/// One unit on the wire between computer and product.
struct Frame {
    FrameType type = FrameType::Data;
    std::uint8_t number = 0;  ///< Sequence number of Data and Ack, value of Hello and Echo.
    std::uint8_t channel = 0; ///< Data only.
    Bytes data;               ///< Data only, 0 to 255 bytes.

    bool operator==(const Frame&) const = default;
};

/// CRC-16/CCITT-FALSE.
[[nodiscard]] std::uint16_t crc16(ByteView bytes);

/// The bytes that go over the wire, the end mark 0 included. Data above 255 bytes is a caller's
/// fault.
[[nodiscard]] Bytes encodeFrame(const Frame& frame);

/// The frame in the bytes before an end mark, or nothing if they are not COBS, fail their CRC, or
/// are of an unknown type or a length that does not fit it.
[[nodiscard]] std::optional<Frame> decodeFrame(ByteView collected);

} // namespace corvane::wire
