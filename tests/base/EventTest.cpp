#include "base/Event.h"

#include "base/Assert.h"
#include "base/Clock.h"
#include "base/KODebug.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

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
    EXPECT_THAT([] { Assert(false, "Too long."); },
                testing::ThrowsMessage<AssertionFailed>("Too long.\r\n\r\nAssertion failed."));
}

TEST(KODebug, WritesOnlyInDebugModeAndToADebugger) {
    RunModes modes;
    KODebug debug(modes);
    KODebugger debugger;
    std::vector<std::string> lines;
    const Connection onLine =
        debugger.WritingLine.connect([&](const std::string& line) { lines.push_back(line); });
    debug.SetDebugger(&debugger);
    for (const bool on : {false, true}) {
        modes.DebugMode = on;
        debug.DebugWriteLine(on ? "on" : "off");
    }
    debug.DebugWriteBytes("DBG: RECV: ", std::vector<std::uint8_t>{0, 7, 255});
    debug.DebugWriteBytes("DBG: RECV: ", {});
    EXPECT_EQ(lines, (std::vector<std::string>{"on", "DBG: RECV: 0 7 255"}));
}

} // namespace
} // namespace corvane
