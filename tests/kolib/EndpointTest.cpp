#include "kolib/wire/Endpoint.h"

#include "bench/FaultyLine.h"
#include "kolib/wire/FrameDecoder.h"

#include <gtest/gtest.h>

namespace corvane::wire {
namespace {

/// One end whose output is kept, and which is fed by hand.
struct Alone {
    std::vector<Bytes> sent;
    int repeats = 0;
    std::vector<Bytes> delivered;
    Endpoint endpoint{[this](ByteView bytes, bool repeat) {
                          sent.emplace_back(bytes.begin(), bytes.end());
                          repeats += repeat ? 1 : 0;
                      },
                      [this](std::uint8_t, Bytes&& data) { delivered.push_back(std::move(data)); }};

    void acknowledge(std::uint8_t number, std::uint32_t now) {
        endpoint.received({FrameType::Ack, number, 0, {}}, now);
    }
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
    end.acknowledge(1, now);
    EXPECT_EQ(end.endpoint.unsent(), 0U);
    EXPECT_FALSE(end.endpoint.untilTick(now));
}

TEST(Endpoint, OnlyTheRightAcknowledgementMovesTheQueueOn) {
    Alone end;
    ASSERT_TRUE(end.endpoint.send(9, {}, 0));
    ASSERT_TRUE(end.endpoint.send(9, {}, 0));
    end.acknowledge(1, 0);
    end.acknowledge(255, 0);
    EXPECT_EQ(end.sent.size(), 1U);
    end.acknowledge(0, 0);
    end.acknowledge(0, 0); // late and again
    EXPECT_EQ(end.sent.size(), 2U);
    EXPECT_EQ(end.endpoint.unsent(), 1U);
}

TEST(Endpoint, QueueHoldsSixtyFourBehindTheOneUnderWay) {
    Alone end;
    for (int i = 0; i < 65; ++i)
        ASSERT_TRUE(end.endpoint.send(9, {}, 0)) << i;
    EXPECT_FALSE(end.endpoint.send(9, {}, 0));
    EXPECT_FALSE(Alone().endpoint.send(9, Bytes(256), 0));
    end.acknowledge(0, 0);
    EXPECT_TRUE(end.endpoint.send(9, {}, 0));
}

TEST(Endpoint, AcknowledgesARepeatAndDropsIt) {
    Alone end;
    const Frame data{FrameType::Data, 5, 9, {1}};
    for (int i = 0; i < 3; ++i)
        end.endpoint.received(Frame(data), 0);
    EXPECT_EQ(end.sent, std::vector<Bytes>(3, encodeFrame({FrameType::Ack, 5, 0, {}})));
    EXPECT_EQ(end.delivered.size(), 1U);
    end.endpoint.reset(); // a new session has accepted nothing yet
    end.endpoint.received(Frame(data), 0);
    EXPECT_EQ(end.delivered.size(), 2U);
}

/// One end of a pair over a wire with faults.
struct Station {
    bench::FaultyLine* out = nullptr;
    bench::Time now{0};
    std::vector<int> received;
    Endpoint endpoint{
        [this](ByteView bytes, bool) { out->send(bytes, now); },
        [this](std::uint8_t, Bytes&& data) { received.push_back(data[0] + data[1] * 256); }};
    FrameDecoder decoder{
        [this](Frame&& frame, ByteView) { endpoint.received(std::move(frame), milliseconds()); },
        [](ByteView) {}};

    [[nodiscard]] std::uint32_t milliseconds() const {
        return static_cast<std::uint32_t>(now.count() / 1000);
    }
    void fill(int& next, int count) {
        while (next < count && endpoint.send(5,
                                             Bytes{static_cast<std::uint8_t>(next % 256),
                                                   static_cast<std::uint8_t>(next / 256)},
                                             milliseconds()))
            ++next;
    }
};

TEST(Endpoint, TenThousandPacketsEachWayArriveOnceAndInOrderOrAreCountedAsErrors) {
    constexpr int count = 10000;
    bench::WireState wire{bench::parseFaults("drop=0.1,corrupt=0.05").value(), 0, std::mt19937(42),
                          0};
    bench::FaultyLine there(wire, [](ByteView, std::string_view) {});
    bench::FaultyLine back(wire, [](ByteView, std::string_view) {});
    Station computer;
    Station product;
    computer.out = &there;
    product.out = &back;
    int nextThere = 0;
    int nextBack = 0;
    for (bench::Time now{0}; nextThere < count || nextBack < count ||
                             computer.endpoint.unsent() + product.endpoint.unsent() > 0;
         now += std::chrono::milliseconds(1)) {
        computer.now = product.now = now;
        computer.fill(nextThere, count);
        product.fill(nextBack, count);
        product.decoder.feed(there.arrived(now));
        computer.decoder.feed(back.arrived(now));
        computer.endpoint.tick(computer.milliseconds());
        product.endpoint.tick(product.milliseconds());
    }
    for (const auto& [receiver, sender] :
         {std::pair(&product, &computer), std::pair(&computer, &product)}) {
        EXPECT_TRUE(std::is_sorted(receiver->received.begin(), receiver->received.end()));
        EXPECT_EQ(std::adjacent_find(receiver->received.begin(), receiver->received.end()),
                  receiver->received.end());
        // A packet whose acknowledgements were all lost counts as an error although it arrived.
        EXPECT_GE(static_cast<int>(receiver->received.size()) + sender->endpoint.errors(), count);
        EXPECT_GT(receiver->received.size(), count * 99U / 100);
    }
    EXPECT_GT(wire.frames, 3 * count);
}

} // namespace
} // namespace corvane::wire
