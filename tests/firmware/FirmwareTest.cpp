// The firmware kit's library, which shares nothing with the programs, against the computer's end.
#include "bench/FaultyLine.h"
#include "firmware/witness.h"
#include "kolib/wire/FrameDecoder.h"
#include "kolib/wire/HostSession.h"
#include "support/ManualClock.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using wire::Bytes;
using wire::ByteView;
using wire::encodeFrame;
using wire::Frame;
using wire::FrameType;

class FirmwareLibrary : public testing::TestWithParam<const witness*> {
  protected:
    void SetUp() override {
        std::fill_n(kit.cells, std::size_t{WITNESS_CELLS}, std::uint8_t{255});
        kit.begin(255, 1);
    }

    const witness& kit = *GetParam();

    void take(ByteView bytes) const {
        for (const std::uint8_t byte : bytes)
            kit.take(byte);
    }
    [[nodiscard]] Bytes give() const {
        Bytes bytes;
        for (int byte = kit.give(); byte >= 0; byte = kit.give())
            bytes.push_back(static_cast<std::uint8_t>(byte));
        return bytes;
    }
    /// What is given in answer to a frame.
    [[nodiscard]] std::vector<Frame> told(const Frame& frame, int milliseconds = 0) const {
        take(encodeFrame(frame));
        for (int i = 0; i < milliseconds; ++i)
            pass();
        return frames(give());
    }
    void pass() const {
        kit.pass(1);
        kit.work();
    }
    [[nodiscard]] static std::vector<Frame> frames(ByteView bytes) {
        std::vector<Frame> all;
        wire::FrameDecoder decoder([&](Frame&& frame, ByteView) { all.push_back(frame); },
                                   [](ByteView) {});
        decoder.feed(bytes);
        return all;
    }
};

Frame ackOf(std::uint8_t number) {
    return {FrameType::Ack, number, 0, {}};
}
Frame dataOf(std::uint8_t number, std::uint8_t channel, const Bytes& bytes = {}) {
    return {FrameType::Data, number, channel, bytes};
}

TEST_P(FirmwareLibrary, HoldsTheSessionThatTheDocumentsShow) {
    EXPECT_THAT(told(dataOf(0, 208, {0, 0, 1}), 300), ElementsAre()); // nobody has said hello
    take(Bytes{5, 3, 125, 102, 231, 0});
    EXPECT_THAT(give(), ElementsAre(5, 4, 125, 241, 126, 0, //
                                    2, 1, 1, 8, 255, 1, 3, 7, 10, 123, 59, 0));
    EXPECT_TRUE(told(ackOf(0)).empty());
    EXPECT_THAT(told(dataOf(0, 209, {2, 0, 7, 255, 9}), 20), ElementsAre(ackOf(0), dataOf(1, 81)));
    EXPECT_EQ(*kit.written, 2U); // the byte between them was right already
    EXPECT_THAT(told(ackOf(1)), ElementsAre());
    EXPECT_THAT(told(dataOf(1, 208, {1, 0, 4}), 1),
                ElementsAre(ackOf(1), dataOf(2, 80, {255, 7, 255, 9})));
    EXPECT_THAT(told(dataOf(1, 208, {1, 0, 4}), 1), ElementsAre(ackOf(1))) << "a repeat";
    EXPECT_THAT(told(ackOf(2)), ElementsAre());
    EXPECT_THAT(told(dataOf(2, 127)), ElementsAre(ackOf(2), dataOf(3, 126)));
    EXPECT_THAT(told(dataOf(3, 208, {0, 0, 1}), 1), ElementsAre(ackOf(3)));
    EXPECT_THAT(told(ackOf(3)), ElementsAre());
    EXPECT_THAT(told(dataOf(4, 208, {0, 0, 1}), 300), ElementsAre());
    EXPECT_FALSE(kit.in_session());
}

TEST_P(FirmwareLibrary, SaysAPacketSixTimesAndForgetsItAtAHello) {
    EXPECT_EQ(told({FrameType::Hello, 7, 0, {}}).size(), 2U);
    for (int sending = 2; sending <= 6; ++sending) {
        for (int ms = 0; ms < 50; ++ms) {
            pass();
            ASSERT_TRUE(give().empty()) << sending;
        }
        pass();
        EXPECT_EQ(frames(give()).size(), 1U);
    }
    // It could leave only when that is given up, and is away when this is, too.
    EXPECT_THAT(told(dataOf(0, 127)), ElementsAre(ackOf(0)));
    for (int ms = 0; ms < 51; ++ms)
        pass();
    EXPECT_THAT(frames(give()), ElementsAre(dataOf(1, 126)));
    for (int ms = 0; ms < 310; ++ms, static_cast<void>(give()))
        pass();
    EXPECT_FALSE(kit.in_session());
    // A hello in the middle of a frame; a write goes on for nobody, what was asked behind it is
    // forgotten, and the next computer's write waits for its turn.
    static_cast<void>(told({FrameType::Hello, 7, 0, {}}));
    static_cast<void>(told(ackOf(0)));
    EXPECT_THAT(told(dataOf(0, 209, {0, 0, 1, 2, 3, 4}), 2), ElementsAre(ackOf(0)));
    EXPECT_THAT(told(dataOf(1, 208, {0, 0, 9}), 2), ElementsAre(ackOf(1)));
    take(encodeFrame(dataOf(1, 208, {0, 0, 9})));
    Bytes given{static_cast<std::uint8_t>(kit.give())};
    take(encodeFrame({FrameType::Hello, 8, 0, {}}));
    const Bytes behind = give();
    given.insert(given.end(), behind.begin(), behind.end());
    EXPECT_THAT(frames(given),
                ElementsAre(Frame{FrameType::Echo, 8, 0, {}}, dataOf(0, 0, {255, 1, 3, 7, 10})));
    EXPECT_THAT(told(ackOf(0), 1), ElementsAre());
    EXPECT_THAT(told(dataOf(0, 209, {2, 0, 8}), 1), ElementsAre(ackOf(0)));
    EXPECT_THAT(told(dataOf(1, 208, {0, 0, 9}), 30), ElementsAre(ackOf(1), dataOf(1, 81)));
    EXPECT_THAT(Bytes(kit.cells, kit.cells + 4), ElementsAre(1, 2, 8, 4));
}

TEST_P(FirmwareLibrary, TakesWhatItHasRoomForAndSaysNothingToTheRest) {
    static_cast<void>(told({FrameType::Hello, 125, 0, {}}));
    static_cast<void>(told(ackOf(0)));
    std::uint8_t number = 0;
    for (unsigned length = 0; length <= 255; ++length) {
        const Bytes bytes(length, static_cast<std::uint8_t>(length % 3));
        const std::vector<Frame> answer = told(dataOf(number, 200, bytes));
        ASSERT_EQ(!answer.empty(), length <= kit.longest) << length;
        if (answer.size() == 2) {
            ASSERT_EQ(answer[1].data, bytes);
            EXPECT_TRUE(told(ackOf(answer[1].number)).empty());
        }
        ++number;
    }
    EXPECT_EQ(*kit.delivered, kit.longest + 1);
}

TEST_P(FirmwareLibrary, SurvivesAMillionStepsOfNoise) {
    std::mt19937 random(33);
    const auto below = [&random](unsigned limit) { return random() % limit; };
    const auto any = [&] { return static_cast<std::uint8_t>(below(256)); };
    for (int step = 0; step < 1'000'000; ++step) {
        switch (below(20)) {
        case 0: {
            constexpr std::array<std::uint8_t, 6> channels{208, 209, 127, 200, 0, 1};
            Bytes bytes(below(8) == 0 ? below(256) : below(8));
            std::generate(bytes.begin(), bytes.end(), any);
            Bytes frame =
                encodeFrame({static_cast<FrameType>(1 + below(4)),
                             static_cast<std::uint8_t>(below(4)), channels[below(6)], bytes});
            if (below(4) == 0)
                frame[below(static_cast<unsigned>(frame.size()))] = any();
            take(frame);
            break;
        }
        case 1:
            kit.pass(any());
            break;
        case 2:
            kit.take(any());
            break;
        default:
            if (below(2) == 0)
                kit.work();
            ASSERT_LE(kit.give(), 255);
        }
    }
    kit.take(0);
    for (int i = 0; i < 3; ++i) {
        const std::vector<Frame> answer = told({FrameType::Hello, 9, 0, {}});
        ASSERT_GE(answer.size(), 2U);
        EXPECT_EQ(answer[answer.size() - 2], (Frame{FrameType::Echo, 9, 0, {}}));
        EXPECT_EQ(answer.back(), dataOf(0, 0, {255, 1, 3, 7, 10}));
    }
}

/// The computer's real end at the library, over a wire that loses and damages frames.
struct Joined final : wire::ByteStream {
    explicit Joined(const witness& library) : kit(library) {}

    const witness& kit;
    ManualClock clock;
    bench::WireState faults{*bench::parseFaults("drop=0.05,corrupt=0.05"), 0, std::mt19937(33), 0};
    bench::FaultyLine there{faults, [](ByteView, std::string_view) {}};
    bench::FaultyLine back{faults, [](ByteView, std::string_view) {}};
    wire::HostSession session{clock, {}};

    std::size_t read(std::span<std::uint8_t> target) override {
        const Bytes bytes = back.arrived(clock.sinceStart());
        std::copy(bytes.begin(), bytes.end(), target.begin());
        return bytes.size();
    }
    void write(ByteView bytes) override { there.send(bytes, clock.sinceStart()); }
    void pass() {
        clock.advance(1);
        for (const std::uint8_t byte : there.arrived(clock.sinceStart()))
            kit.take(byte);
        kit.pass(1);
        kit.work();
        for (int byte = kit.give(); byte >= 0; byte = kit.give())
            back.send(Bytes{static_cast<std::uint8_t>(byte)}, clock.sinceStart());
        session.pump();
    }
    /// The data of the next packet on a channel, if it comes within so many milliseconds.
    std::optional<Bytes> await(int wanted, int milliseconds) {
        for (; milliseconds > 0; --milliseconds) {
            pass();
            int channel = 0;
            int length = 0;
            while (session.ReceivePacket(channel, length)) {
                Bytes bytes(static_cast<std::size_t>(length));
                session.ReceivePacketData(bytes);
                if (channel == wanted)
                    return bytes;
            }
        }
        return std::nullopt;
    }
    /// Asks until it is answered, as the programs do.
    std::optional<Bytes> ask(int channel, const Bytes& request) {
        for (int tries = 0; tries < 8; ++tries) {
            EXPECT_TRUE(session.SendPacket(channel, request));
            if (auto answer = await(channel - 128, 500))
                return answer;
        }
        return std::nullopt;
    }
};

TEST_P(FirmwareLibrary, ItsMemoryHoldsWhatTheComputerWroteOverABadWire) {
    std::mt19937 random(7);
    Bytes expected(WITNESS_CELLS, 255);
    Joined both(kit);
    both.session.attach(&both);
    for (int session = 0; session < 40; ++session) {
        do {
            ASSERT_TRUE(both.session.SendHello(125));
        } while (!both.await(0, 500));
        for (int job = 0; job < 10; ++job) {
            const unsigned address = random() % (WITNESS_CELLS - 255);
            Bytes request{static_cast<std::uint8_t>(address % 256),
                          static_cast<std::uint8_t>(address / 256)};
            if (random() % 2 == 0) {
                for (unsigned count = 1 + random() % 60; count > 0; --count) {
                    request.push_back(static_cast<std::uint8_t>(random() % 3));
                    expected[address + request.size() - 3] = request.back();
                }
                ASSERT_TRUE(both.ask(209, request));
            } else {
                request.push_back(static_cast<std::uint8_t>(random() % 256));
                const auto begin = expected.begin() + static_cast<std::ptrdiff_t>(address);
                ASSERT_EQ(both.ask(208, request), Bytes(begin, begin + request.back()));
            }
        }
        // The program is killed, perhaps while the product is at it.
        if (random() % 2 == 0) {
            ASSERT_TRUE(both.session.SendPacket(208, Bytes{0, 0, 255}));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Builds, FirmwareLibrary, testing::Values(&witness_whole, &witness_small),
                         [](const auto& build) {
                             return build.param == &witness_whole ? "whole" : "small";
                         });

} // namespace
} // namespace corvane
