#include "kolib/wire/HostSession.h"

#include "support/ManualClock.h"

#include <gtest/gtest.h>

namespace corvane::wire {
namespace {

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
