#include "base/Event.h"

#include "base/Assert.h"
#include "base/Clock.h"
#include "base/KODebug.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Event, ReachesListenersInOrderUntilTheirConnectionEnds) {
    Event<int> event;
    std::string calls;
    Connection first = event.connect([&](int value) { calls += "a" + std::to_string(value); });
    {
        const Connection second =
            event.connect([&](int value) { calls += "b" + std::to_string(value); });
        event.raise(1);
    }
    event.raise(2);
    first = event.connect([&](int) { calls += "c"; });
    event.raise(3);
    EXPECT_EQ(calls, "a1b1a2c");
}

TEST(Event, SurvivesListenersThatComeAndGoWhileItIsRaised) {
    Event<> event;
    std::string calls;
    Connection late;
    Connection doomed;
    Connection self = event.connect([&] {
        calls += "s";
        self.disconnect();
        doomed.disconnect();
        late = event.connect([&] { calls += "l"; });
    });
    doomed = event.connect([&] { calls += "d"; });
    event.raise();
    EXPECT_EQ(calls, "s");
    event.raise();
    EXPECT_EQ(calls, "sl");
}

TEST(Event, SurvivesTheEndOfItsOwner) {
    auto event = std::make_unique<Event<>>();
    int calls = 0;
    const Connection first = event->connect([&] {
        ++calls;
        event.reset();
    });
    const Connection second = event->connect([&] { ++calls; });
    event->raise();
    EXPECT_EQ(calls, 2);
}

TEST(Assert, TellsItsTextAndThatItFailed) {
    EXPECT_NO_THROW(Assert(true, "fine"));
    try {
        Assert(false, "Too long.");
        FAIL();
    } catch (const AssertionFailed& failure) {
        EXPECT_STREQ(failure.what(), "Too long.\r\n\r\nAssertion failed.");
    }
    EXPECT_THROW(Assert(false), AssertionFailed);
}

TEST(KODebug, WritesOnlyInDebugModeAndToADebugger) {
    RunModes modes;
    KODebug debug(modes);
    const KODebugger debugger;
    debug.DebugWriteLine("nobody listens yet");
    std::vector<std::string> lines;
    const Connection onLine = const_cast<KODebugger&>(debugger).WritingLine.connect(
        [&](const std::string& line) { lines.push_back(line); });
    debug.SetDebugger(&debugger);
    debug.DebugWriteLine("off");
    modes.DebugMode = true;
    debug.DebugWriteLine("on");
    debug.DebugWriteBytes("DBG: RECV: ", std::vector<std::uint8_t>{0, 7, 255});
    debug.DebugWriteBytes("DBG: RECV: ", {});
    EXPECT_EQ(lines, (std::vector<std::string>{"on", "DBG: RECV: 0 7 255"}));
}

} // namespace
} // namespace corvane
