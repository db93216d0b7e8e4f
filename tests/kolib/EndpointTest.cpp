#include "kolib/wire/Endpoint.h"

#include "kolib/wire/HostSession.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace corvane::wire {
namespace {

/// One end whose output is kept, and which is fed by hand.
struct Alone {
    std::vector<Bytes> sent;
    int repeats = 0;
    Endpoint endpoint{[this](ByteView bytes, bool repeat) {
                          sent.emplace_back(bytes.begin(), bytes.end());
                          repeats += repeat ? 1 : 0;
                      },
                      [](std::uint8_t, Bytes&&) {}};
};

TEST(Endpoint, SendsSixTimesInAllEvery50MillisecondsThenCountsAnError) {
    Alone end;
    std::uint32_t now = 0xFFFFFFF0U; // the clock wraps on the way
    ASSERT_TRUE(end.endpoint.send(9, Bytes{1}, now));
    ASSERT_TRUE(end.endpoint.send(9, Bytes{2}, now));
    for (int ms = 1; ms < 300; ++ms)
        end.endpoint.tick(++now);
    EXPECT_EQ(end.sent.size(), 6U);
    EXPECT_EQ(end.repeats, 5);
    EXPECT_EQ(end.endpoint.errors(), 0);
    end.endpoint.tick(++now); // 300 ms: given up, and the next one's turn
    EXPECT_EQ(end.endpoint.errors(), 1);
    EXPECT_EQ(end.sent.back(), encodeFrame({FrameType::Data, 1, 9, {2}}));
    EXPECT_EQ(end.endpoint.unsent(), 1U);
    end.endpoint.received({FrameType::Ack, 1, 0, {}}, now);
    EXPECT_EQ(end.endpoint.unsent(), 0U);
    EXPECT_FALSE(end.endpoint.untilTick(now));
}

TEST(Endpoint, AcknowledgesAFrameByItsNumberEachTime) {
    Alone end;
    for (int i = 0; i < 2; ++i)
        end.endpoint.received({FrameType::Data, 5, 9, {1}}, 0);
    EXPECT_EQ(end.sent, std::vector<Bytes>(2, encodeFrame({FrameType::Ack, 5, 0, {}})));
}

TEST(Endpoint, QueueHoldsSixtyFourBehindTheOneUnderWay) {
    Alone end;
    for (int i = 0; i < 65; ++i)
        ASSERT_TRUE(end.endpoint.send(9, {}, 0)) << i;
    end.endpoint.received({FrameType::Ack, 1, 0, {}}, 0); // of none that is under way
    EXPECT_FALSE(end.endpoint.send(9, {}, 0));
    EXPECT_FALSE(Alone().endpoint.send(9, Bytes(256), 0));
    end.endpoint.received({FrameType::Ack, 0, 0, {}}, 0);
    EXPECT_TRUE(end.endpoint.send(9, {}, 0));
}

/// A line whose far end the test plays.
struct Line final : ByteStream {
    Bytes waiting;

    std::size_t read(std::span<std::uint8_t> target) override {
        const std::size_t count = std::min(target.size(), waiting.size());
        std::copy_n(waiting.begin(), count, target.begin());
        waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(count));
        return count;
    }
    void write(ByteView) override {}
};

TEST(HostSession, OnlyTheEchoOfItsOwnHelloCounts) {
    ManualClock clock;
    Line line;
    HostSession session(clock, {});
    session.attach(&line);
    ASSERT_TRUE(session.SendHello(7));
    for (const auto& [value, counts] :
         {std::pair<std::uint8_t, bool>(6, false), {8, false}, {7, true}}) {
        line.waiting = encodeFrame({FrameType::Echo, value, 0, {}});
        session.pump();
        EXPECT_EQ(session.ReceivedHello(), counts) << int{value};
    }
}

} // namespace
} // namespace corvane::wire
