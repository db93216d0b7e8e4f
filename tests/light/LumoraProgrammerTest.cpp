#include "light/LumoraProgrammer.h"

#include "bench/LumoraMemory.h"
#include "support/LightBench.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// A light editor whose Program button is pressed with all kinds of products plugged in.
class Programming : public testing::Test, public LightBench {
  protected:
    LumoraProgramming* dialog = nullptr;
    std::vector<int> progress;
    std::string statusWhenShown;

    void press() {
        progress.clear();
        control.ProgramButton.press();
    }
    std::string status() { return dialog == nullptr ? "none" : dialog->Status.Caption(); }
    /// The run is over, and nothing is left of it.
    void expectFree() {
        EXPECT_TRUE(dialog->OKButton.Enabled());
        EXPECT_FALSE(desk.bench.link.MaintainConnection());
        EXPECT_FALSE(desk.bench.link.Negotiated());
        EXPECT_FALSE(desk.person.busy);
    }
    /// Answers sets as a sound controller would, except for what `spoil` does to the reply.
    LinkBench::Plugged&
    plugSpoiled(const std::function<bool(int count, bench::Bytes& reply)>& spoil) {
        auto count = std::make_shared<int>(0);
        bench::Bench made = scripted(
            [spoil, count](std::uint8_t channel, bench::ByteView data, bench::Reply& reply) {
                if (channel != 148)
                    return;
                std::uint8_t sum = 0;
                for (const std::uint8_t byte : data)
                    sum = static_cast<std::uint8_t>(sum + byte);
                bench::Bytes answer{data[0], 1, sum};
                if (spoil(++*count, answer))
                    reply.send(20, answer);
            },
            {1, 1, 3, 7});
        return desk.bench.plugIn(std::move(made));
    }
    void draw() {
        add(1, false, 80, 0.5, "P", 20);
        add(1, true, 100, 0.25);
        add(5, false, 100, 0.05);
    }

  private:
    std::vector<Connection> dialogConnections_;
    Connection onShown_ = control.ProgrammingShown.connect([this](LumoraProgramming& shown) {
        dialog = &shown;
        statusWhenShown = shown.Status.Caption();
        dialogConnections_.clear();
        dialogConnections_.push_back(shown.Progress.Changed.connect(
            [this] { progress.push_back(dialog->Progress.Value()); }));
    });
};

TEST_F(Programming, TheNewerControllerGetsAndKeepsTheImage) {
    draw();
    plugIn("lumora-1.2");
    press();
    EXPECT_EQ(statusWhenShown, "Connecting to the Lumora...");
    EXPECT_EQ(status(), "Programming complete.");
    EXPECT_EQ(dialog->SegmentsUsedLabel.Caption() + " of " + dialog->SegmentLimitLabel.Caption() +
                  ", " + dialog->MemoryInUseLabel.Caption(),
              "13 of 106, 12.3%");
    EXPECT_THAT(progress, ElementsAre(50, 100));
    expectFree();
    EXPECT_EQ(memory(0, 255), imageOf(document));
    int closed = 0;
    const Connection onClosed = dialog->Closed.connect([&] { ++closed; });
    press(); // again; the first dialog goes
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(status(), "Programming complete.");
}

TEST_F(Programming, TheOlderControllerGetsItsTransfers) {
    draw();
    plugIn("lumora-1.1");
    desk.person.answers = {Answer::No};
    press();
    EXPECT_EQ(status(), "Programming canceled.");
    expectFree();
    EXPECT_EQ(memory(0, 999), bench::Bytes(250, 255));
    desk.person.answers = {Answer::Yes};
    press();
    EXPECT_EQ(status(), "Programming complete.");
    EXPECT_EQ(progress.front(), 5); // 20 transfers
    EXPECT_EQ(progress.back(), 100);
    expectFree();
    const bench::LightProgram stored = bench::readTables(memory(0, 250));
    ASSERT_EQ(stored[0].top.size(), 1U);
    EXPECT_EQ(stored[0].top[0].hundredths, 50);
    EXPECT_EQ(stored[0].top[0].current, 50); // the average
    EXPECT_EQ(stored[0].bottom[0].current, 100);
    EXPECT_EQ(stored[4].top[0].hundredths, 5);
    EXPECT_EQ(stored[2].tripLevel, 127);
}

TEST_F(Programming, WhatDoesNotFitIsToldBeforeAnythingIsSent) {
    fill(1, std::vector<int>(96, 10));
    for (const char* product : {"lumora-1.2", "lumora-1.1"}) {
        setMemory({});
        LinkBench::Plugged& plugged = plugIn(product);
        press();
        EXPECT_EQ(status(), "The Lumora controller can only hold 106 segments.");
        EXPECT_EQ(dialog->SegmentsUsedLabel.Caption(), "107");
        EXPECT_EQ(dialog->SegmentsUsedLabel.ForeColor(), 255);
        expectFree();
        EXPECT_THAT(memory(0, 999), testing::Each(255));
        desk.bench.unplug(plugged);
        desk.bench.run(200);
    }
}

TEST_F(Programming, AFunctionThatNoControllerKnowsIsRefused) {
    add(2, true, 10, 1, "Q", 5);
    plugIn("lumora-1.2");
    press();
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("Error: Channel 2 has a segment"));
    EXPECT_EQ(status(), "Programming failed.");
    expectFree();
    EXPECT_EQ(memory(0, 999), bench::Bytes(256, 255));
}

TEST_F(Programming, WithoutALinkItSaysWhatToDo) {
    press();
    EXPECT_EQ(status(), "Unable to connect to the Lumora.");
    EXPECT_EQ(dialog->Cure.Caption(), "Plug in a Corvane link, then try again.");
    expectFree();
    plugIn("lumora-1.2");
    press();
    EXPECT_EQ(dialog->Cure.Caption(), "");
}

TEST_F(Programming, WrongAnswersAndSilenceAreTriedAgainWithinABudget) {
    const auto spoilSum = [](int count, bench::Bytes& reply) {
        reply[count % 2 == 0 ? 1 : 2] =
            static_cast<std::uint8_t>(count % 2 == 0 ? 0 : reply[2] + 1);
        return true;
    };
    const std::string failed = "Programming failed.";
    const std::string complete = "Programming complete.";
    using Spoil = std::function<bool(int count, bench::Bytes& reply)>;
    const std::vector<std::pair<Spoil, std::string>> cases{
        {[&](int count, bench::Bytes& reply) { return count > 199 || spoilSum(count, reply); },
         complete},
        {[&](int count, bench::Bytes& reply) { return count > 200 || spoilSum(count, reply); },
         failed},
        {[](int count, bench::Bytes&) { return count > 3; }, complete},
        {[](int count, bench::Bytes&) { return count > 4; }, failed},
        {[](int count, bench::Bytes&) { return count % 3 == 0; }, complete}, // each restores it
        {[](int count, bench::Bytes& reply) { // another kind ends it at once
             if (count == 1)
                 reply.assign({99, 1, 0});
             return true;
         },
         failed},
        {[](int count, bench::Bytes& reply) { // and so do too few bytes
             if (count == 1)
                 reply.resize(2);
             return true;
         },
         failed},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        LinkBench::Plugged& spoiled = plugSpoiled(cases[i].first);
        const std::uint32_t start = desk.bench.clock.now();
        press();
        EXPECT_EQ(status(), cases[i].second) << i;
        if (i == 3) { // each silence, and the letting go
            EXPECT_NEAR(desk.bench.clock.now() - start, 4 * 751 + 253 + 10U, 30);
        }
        expectFree();
        desk.bench.unplug(spoiled);
        desk.bench.run(200);
    }
}

TEST_F(Programming, TheDumpGoesToTheLog) {
    std::vector<std::string> lines;
    KODebugger debugger;
    const Connection onLine =
        debugger.WritingLine.connect([&](const std::string& line) { lines.push_back(line); });
    control.SetDebugger(debugger);
    EXPECT_TRUE(control.DebugButton.Visible()); // in debug mode
    const auto dumped = [&](const char* product) {
        setMemory({});
        LinkBench::Plugged& plugged = plugIn(product);
        press();
        lines.clear();
        control.DebugButton.press();
        desk.bench.run(1000);
        EXPECT_FALSE(desk.bench.link.Negotiated());
        desk.bench.unplug(plugged);
        desk.bench.run(100);
        return lines;
    };
    EXPECT_THAT(dumped("lumora-1.2"),
                ElementsAre("Connected. Requesting EEPROM.",
                            testing::StartsWith("EEPROM: 127 127 127 127 127 127")));
    const std::vector<std::string> older = dumped("lumora-1.1");
    ASSERT_EQ(older.size(), 8U);
    EXPECT_EQ(older[1] + ", " + older[2],
              "programT: 127 127 127 127 127 127, programH: 0 2 4 6 8 10 12");
    EXPECT_THAT(older[4], testing::StartsWith("program: 100 0 100 0 "));
    EXPECT_EQ(older[7], "turnoffpoints: 0 0 0 0 0 0");
}

} // namespace
} // namespace corvane
