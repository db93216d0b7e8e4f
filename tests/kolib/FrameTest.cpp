#include "base/Assert.h"
#include "kolib/wire/FrameDecoder.h"

#include <gtest/gtest.h>

#include <numeric>

namespace corvane::wire {
namespace {

Bytes counting(std::size_t length, int first = 1) {
    Bytes bytes(length);
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(first));
    return bytes;
}

TEST(Frame, HasTheBytesThatTheDocumentsShow) {
    const Bytes shown{5, 3, 0x7D, 0x66, 0xE7, 0};
    EXPECT_EQ(encodeFrame({FrameType::Hello, 125, 0, {}}), shown);
    EXPECT_EQ(cobsEncode(Bytes{0x11, 0x22, 0, 0x33}), (Bytes{3, 0x11, 0x22, 2, 0x33}));
    // 254 bytes without a 0 fill a block, 255 need a second one.
    EXPECT_EQ(cobsEncode(counting(254)).size(), 255U);
    EXPECT_EQ(cobsEncode(counting(255)).size(), 257U);
}

TEST(Frame, GoesThereAndBackAtEveryLength) {
    for (std::size_t length = 0; length <= MaxDataLength; ++length) {
        const Frame frame{FrameType::Data, static_cast<std::uint8_t>(length), 208,
                          counting(length, length % 2 == 0 ? 200 : 1)}; // with and without a 0
        Bytes encoded = encodeFrame(frame);
        ASSERT_EQ(std::count(encoded.begin(), encoded.end(), 0), 1);
        ASSERT_LE(encoded.size() - 1, MaxCollected);
        encoded.pop_back();
        ASSERT_EQ(decodeFrame(encoded), frame);
    }
    EXPECT_THROW(static_cast<void>(encodeFrame({FrameType::Data, 0, 0, counting(256)})),
                 AssertionFailed);
}

// Wraps a body in a right CRC and COBS, so that only the body itself can be at fault.
Bytes wrapped(Bytes body) {
    const std::uint16_t crc = crc16(body);
    body.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    body.push_back(static_cast<std::uint8_t>(crc >> 8));
    return cobsEncode(body);
}

TEST(Frame, RefusesWhatNoEncoderMakes) {
    for (const Bytes& encoded : {Bytes{}, Bytes{3, 1}, Bytes{3, 1, 0}, Bytes{0}})
        EXPECT_FALSE(cobsDecode(encoded));
    Bytes tooLong{1, 0, 0};
    tooLong.resize(3 + 256);
    for (const Bytes& body : {Bytes{}, Bytes{1}, Bytes{1, 0}, Bytes{2}, Bytes{2, 0, 0}, Bytes{3},
                              Bytes{4, 1, 1}, Bytes{0, 1}, Bytes{5, 1}, tooLong})
        EXPECT_FALSE(decodeFrame(wrapped(body))) << body.size();
    EXPECT_TRUE(decodeFrame(wrapped({1, 0, 0})));
}

struct Decoded {
    std::vector<Frame> frames;
    std::size_t garbage = 0;
    FrameDecoder decoder{[this](Frame&& frame, ByteView) { frames.push_back(std::move(frame)); },
                         [this](ByteView bytes) { garbage += bytes.size(); }};
};

TEST(FrameDecoder, ThrowsAwayGarbageAndGoesOnBehindTheNextMark) {
    const Frame good{FrameType::Hello, 125, 0, {}};
    const Bytes encoded = encodeFrame(good);
    Decoded decoded;
    decoded.decoder.feed(Bytes{0, 0, 9, 9, 9, 0});
    EXPECT_EQ(decoded.garbage, 3U);
    decoded.decoder.feed(encoded);
    decoded.decoder.feed(Bytes(264, 1)); // one more than a frame can have
    decoded.decoder.feed(Bytes(5000, 1));
    EXPECT_EQ(decoded.garbage, 3U + 264U + 5000U);
    decoded.decoder.feed(Bytes{0});
    for (const std::uint8_t byte : encoded) // however the bytes are cut
        decoded.decoder.feed(Bytes{byte});
    EXPECT_EQ(decoded.frames, (std::vector<Frame>{good, good}));
}

} // namespace
} // namespace corvane::wire
