#include "base/Assert.h"
#include "kolib/wire/FrameDecoder.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

namespace corvane::wire {
namespace {

Bytes counting(std::size_t length, int first = 1) {
    Bytes bytes(length);
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(first));
    return bytes;
}

TEST(Cobs, MatchesThePublishedExamples) {
    const std::vector<std::pair<Bytes, Bytes>> examples{
        {{}, {1}},
        {{0}, {1, 1}},
        {{0, 0}, {1, 1, 1}},
        {{0x11, 0x22, 0, 0x33}, {3, 0x11, 0x22, 2, 0x33}},
        {{0x11, 0, 0, 0}, {2, 0x11, 1, 1, 1}},
    };
    for (const auto& [plain, encoded] : examples) {
        EXPECT_EQ(cobsEncode(plain), encoded);
        EXPECT_EQ(cobsDecode(encoded), plain);
    }
    // 254 bytes without a 0 fill a block, 255 need a second one.
    EXPECT_EQ(cobsEncode(counting(254)).size(), 255U);
    EXPECT_EQ(cobsEncode(counting(255)).size(), 257U);
}

TEST(Cobs, RefusesWhatNoEncoderMakes) {
    EXPECT_FALSE(cobsDecode({}));
    EXPECT_FALSE(cobsDecode(Bytes{3, 1}));
    EXPECT_FALSE(cobsDecode(Bytes{3, 1, 0}));
    EXPECT_FALSE(cobsDecode(Bytes{0}));
}

TEST(Frame, HasTheBytesThatTheDocumentsShow) {
    EXPECT_EQ(encodeFrame({FrameType::Hello, 125, 0, {}}), (Bytes{5, 3, 0x7D, 0x66, 0xE7, 0}));
}

TEST(Frame, CrcIsTheStandardOne) {
    const std::string check = "123456789";
    EXPECT_EQ(crc16(Bytes(check.begin(), check.end())), 0x29B1);
}

TEST(Frame, GoesThereAndBackForEveryTypeAndLength) {
    for (std::size_t length = 0; length <= MaxDataLength; ++length) {
        const Frame frame{FrameType::Data, static_cast<std::uint8_t>(length), 208,
                          counting(length, 200)};
        Bytes encoded = encodeFrame(frame);
        ASSERT_EQ(std::count(encoded.begin(), encoded.end(), 0), 1);
        ASSERT_LE(encoded.size() - 1, MaxCollected);
        encoded.pop_back();
        ASSERT_EQ(decodeFrame(encoded), frame);
    }
    for (const FrameType type : {FrameType::Ack, FrameType::Hello, FrameType::Echo}) {
        const Frame frame{type, 125, 0, {}};
        Bytes encoded = encodeFrame(frame);
        encoded.pop_back();
        EXPECT_EQ(decodeFrame(encoded), frame);
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

TEST(Frame, RefusesUnknownTypesAndLengthsThatDoNotFit) {
    for (const Bytes& body : {Bytes{}, Bytes{1}, Bytes{1, 0}, Bytes{2}, Bytes{2, 0, 0}, Bytes{3},
                              Bytes{4, 1, 1}, Bytes{0, 1}, Bytes{5, 1}})
        EXPECT_FALSE(decodeFrame(wrapped(body))) << body.size();
    Bytes tooLong{1, 0, 0};
    tooLong.resize(3 + 256);
    EXPECT_FALSE(decodeFrame(wrapped(tooLong)));
    EXPECT_TRUE(decodeFrame(wrapped({1, 0, 0})));
}

TEST(Frame, EveryDamagedByteIsNoticed) {
    const Bytes encoded = encodeFrame({FrameType::Data, 7, 80, counting(20)});
    for (std::size_t i = 0; i + 1 < encoded.size(); ++i) {
        for (int change = 1; change < 256; ++change) {
            Bytes damaged = encoded;
            damaged.pop_back();
            damaged[i] ^= static_cast<std::uint8_t>(change);
            ASSERT_FALSE(decodeFrame(damaged)) << i << ' ' << change;
        }
    }
}

struct Decoded {
    std::vector<Frame> frames;
    std::size_t garbage = 0;
    FrameDecoder decoder{[this](Frame&& frame, ByteView) { frames.push_back(std::move(frame)); },
                         [this](ByteView bytes) { garbage += bytes.size(); }};
};

TEST(FrameDecoder, FindsFramesHoweverTheBytesAreCut) {
    Bytes stream;
    std::vector<Frame> sent;
    std::mt19937 random(7);
    for (int i = 0; i < 50; ++i) {
        Frame frame{FrameType::Data, static_cast<std::uint8_t>(i), 1, counting(random() % 256, i)};
        const Bytes encoded = encodeFrame(frame);
        stream.insert(stream.end(), encoded.begin(), encoded.end());
        sent.push_back(std::move(frame));
    }
    for (const std::size_t step : {1UL, 2UL, 61UL, 4096UL}) {
        Decoded decoded;
        for (std::size_t at = 0; at < stream.size(); at += step)
            decoded.decoder.feed(ByteView(stream).subspan(at, std::min(step, stream.size() - at)));
        EXPECT_EQ(decoded.frames, sent) << step;
        EXPECT_EQ(decoded.garbage, 0U);
    }
}

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
    decoded.decoder.feed(encoded);
    EXPECT_EQ(decoded.frames, (std::vector<Frame>{good, good}));
}

} // namespace
} // namespace corvane::wire
