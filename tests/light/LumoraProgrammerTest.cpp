#include "light/LumoraProgrammer.h"

#include "bench/LumoraMemory.h"
#include "support/LightBench.h"
#include "support/OtherProducts.h"

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
    LinkBench::Plugged& plugWithMemory(const char* product, const std::string& faults = {},
                                       unsigned seed = 1) {
        std::string error;
        bench::Setup setup;
        setup.eepromFile = memoryFile();
        return desk.bench.plugIn(*bench::makeBench(product, setup, error), faults, seed);
    }
    std::string memoryFile() { return desk.folder.path() / "memory"; }
    bench::Bytes memory() {
        const std::string content = desk.folder.content("memory");
        return {content.begin(), content.end()};
    }
    bench::Bytes image() {
        LumoraImageCompiler compiler(document);
        static_cast<void>(compiler.compile());
        const auto bytes = compiler.image().bytes();
        return {bytes.begin(), bytes.end()};
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
    plugWithMemory("lumora-1.2");
    press();
    EXPECT_EQ(statusWhenShown, "Connecting to the Lumora...");
    EXPECT_EQ(status(), "Programming complete.");
    EXPECT_EQ(dialog->SegmentsUsedLabel.Caption(), "13");
    EXPECT_EQ(dialog->SegmentLimitLabel.Caption(), "106");
    EXPECT_EQ(dialog->MemoryInUseLabel.Caption(), "12.3%");
    EXPECT_THAT(progress, ElementsAre(50, 100));
    expectFree();
    bench::Bytes kept = memory();
    kept.resize(255);
    EXPECT_EQ(kept, image());
    EXPECT_TRUE(desk.person.messages.empty());
    int closed = 0;
    const Connection onClosed = dialog->Closed.connect([&] { ++closed; });
    press(); // again; the first dialog goes
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(status(), "Programming complete.");
}

TEST_F(Programming, TheOlderControllerGetsItsTransfers) {
    draw();
    plugWithMemory("lumora-1.1");
    desk.person.answers = {Answer::Yes};
    press();
    EXPECT_EQ(status(), "Programming complete.");
    EXPECT_EQ(progress.front(), 5); // 20 transfers
    EXPECT_EQ(progress.back(), 100);
    expectFree();
    const bench::LightProgram stored = bench::readTables(memory());
    ASSERT_EQ(stored[0].top.size(), 1U);
    EXPECT_EQ(stored[0].top[0].hundredths, 50);
    EXPECT_EQ(stored[0].top[0].current, 50); // the average
    EXPECT_EQ(stored[0].bottom[0].current, 100);
    EXPECT_EQ(stored[4].top[0].hundredths, 5);
    EXPECT_EQ(stored[5].bottom.size(), 1U);
    EXPECT_EQ(stored[2].tripLevel, 127);
}

TEST_F(Programming, ANoCancelsBeforeAnythingIsSent) {
    draw();
    plugWithMemory("lumora-1.1");
    desk.person.answers = {Answer::No};
    press();
    EXPECT_EQ(status(), "Programming canceled.");
    expectFree();
    EXPECT_EQ(memory(), bench::Bytes(250, 255));
}

TEST_F(Programming, WhatDoesNotFitIsToldBeforeAnythingIsSent) {
    fill(1, std::vector<int>(96, 10));
    for (const char* product : {"lumora-1.2", "lumora-1.1"}) {
        std::filesystem::remove(memoryFile());
        LinkBench::Plugged& plugged = plugWithMemory(product);
        press();
        EXPECT_EQ(status(), "The Lumora controller can only hold 106 segments.");
        EXPECT_EQ(dialog->SegmentsUsedLabel.Caption(), "107");
        EXPECT_EQ(dialog->SegmentsUsedLabel.ForeColor(), 255);
        expectFree();
        for (const std::uint8_t byte : memory())
            EXPECT_EQ(byte, 255);
        desk.bench.unplug(plugged);
        desk.bench.run(200);
    }
}

TEST_F(Programming, AFunctionThatNoControllerKnowsIsRefused) {
    add(2, true, 10, 1, "Q", 5);
    plugWithMemory("lumora-1.2");
    press();
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("Error: Channel 2 has a segment"));
    EXPECT_EQ(status(), "Programming failed.");
    expectFree();
    EXPECT_EQ(memory(), bench::Bytes(256, 255));
}

TEST_F(Programming, WithoutTheRightControllerItDoesNotBegin) {
    press();
    EXPECT_EQ(status(), "Unable to connect to the Lumora.");
    EXPECT_EQ(dialog->Cure.Caption(), "Plug in a Corvane link, then try again.");
    expectFree();
    // What was there before counts for nothing, nor does the class that the program starts with.
    desk.bench.noteFrames = true;
    LinkBench::Plugged* plugged = &plugWithMemory("lumora-1.2");
    press();
    EXPECT_EQ(status(), "Programming complete.");
    EXPECT_EQ(dialog->Cure.Caption(), "");
    for (const auto& [identity, cure] :
         {std::pair(bench::Identity{2, 1, 0, 0}, "is a Pactor 2.1."),
          {bench::Identity{9, 9, 0, 0}, "of type 9.9, which this program does not know."}}) {
        desk.bench.unplug(*plugged);
        desk.bench.run(200);
        plugged = &desk.bench.plugIn(
            scripted([](std::uint8_t, bench::ByteView, bench::Reply&) {}, identity));
        press();
        EXPECT_EQ(status(), "Unable to connect to the Lumora.");
        EXPECT_THAT(dialog->Cure.Caption(), HasSubstr(cure));
        EXPECT_EQ(WritesAmong(plugged->frames), 0);
        expectFree();
    }
}

TEST_F(Programming, WrongAnswersAreTriedAgainWithinABudget) {
    plugSpoiled([](int count, bench::Bytes& reply) {
        if (count <= 199)
            reply[count % 2 == 0 ? 1 : 2] =
                static_cast<std::uint8_t>(count % 2 == 0 ? 0 : reply[2] + 1);
        return true;
    });
    press(); // 199 wrong answers and then good ones
    EXPECT_EQ(status(), "Programming complete.");
    expectFree();
}

TEST_F(Programming, EndsWhenTheBudgetIsSpent) {
    plugSpoiled([](int, bench::Bytes& reply) {
        reply[1] = 0;
        return true;
    });
    press();
    EXPECT_EQ(status(), "Programming failed.");
    expectFree();
}

TEST_F(Programming, FourSilencesEndItAndOneGoodAnswerRestoresTheBudget) {
    LinkBench::Plugged& mute = plugSpoiled([](int, bench::Bytes&) { return false; });
    const std::uint32_t start = desk.bench.clock.now();
    press();
    EXPECT_EQ(status(), "Programming failed.");
    EXPECT_NEAR(desk.bench.clock.now() - start, 4 * 751 + 253 + 10U, 30);
    expectFree();

    desk.bench.unplug(mute);
    desk.bench.run(200);
    plugSpoiled([](int count, bench::Bytes&) { return count % 3 == 0; });
    press(); // two silences before every answer
    EXPECT_EQ(status(), "Programming complete.");
}

TEST_F(Programming, AWrongKindOrTooFewBytesEndItAtOnce) {
    for (const bool shortReply : {false, true}) {
        LinkBench::Plugged& wrong = plugSpoiled([shortReply](int count, bench::Bytes& reply) {
            EXPECT_EQ(count, 1);
            shortReply ? reply.resize(2) : reply.assign({99, 1, 0});
            return true;
        });
        press();
        EXPECT_EQ(status(), "Programming failed.");
        expectFree();
        desk.bench.unplug(wrong);
        desk.bench.run(200);
    }
}

TEST_F(Programming, AnUnpluggingAtAnyMomentEndsItAndTheNextRunSucceeds) {
    draw();
    desk.person.answers = std::deque<Answer>(1000, Answer::Yes);
    for (const char* product : {"lumora-1.2", "lumora-1.1"}) {
        std::filesystem::remove(memoryFile());
        for (int frames = 1; frames < 30; frames += 3) {
            LinkBench::Plugged& failing =
                plugWithMemory(product, "unplug-after=" + std::to_string(frames));
            press();
            EXPECT_THAT(status(),
                        testing::AnyOf("Programming failed.", "Unable to connect to the Lumora."))
                << product << frames;
            expectFree();
            desk.bench.unplug(failing);
            desk.bench.run(200);
            LinkBench::Plugged& sound = plugWithMemory(product);
            press();
            EXPECT_EQ(status(), "Programming complete.") << product << frames;
            desk.bench.unplug(sound);
            desk.bench.run(200);
        }
    }
}

TEST_F(Programming, TheDumpGoesToTheLog) {
    std::vector<std::string> lines;
    KODebugger debugger;
    const Connection onLine =
        debugger.WritingLine.connect([&](const std::string& line) { lines.push_back(line); });
    control.SetDebugger(debugger);
    EXPECT_TRUE(control.DebugButton.Visible()); // in debug mode
    LinkBench::Plugged& newer = plugWithMemory("lumora-1.2");
    press();
    control.DebugButton.press();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "Connected. Requesting EEPROM.");
    EXPECT_EQ(lines[1].substr(0, 31), "EEPROM: 127 127 127 127 127 127");
    desk.bench.run(1000);
    EXPECT_FALSE(desk.bench.link.Negotiated());
    desk.bench.unplug(newer);
    desk.bench.run(100);
    lines.clear();
    std::filesystem::remove(memoryFile());
    plugWithMemory("lumora-1.1");
    press();
    control.DebugButton.press();
    desk.bench.run(500);
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines[1], "programT: 127 127 127 127 127 127");
    EXPECT_EQ(lines[2], "programH: 0 2 4 6 8 10 12");
    EXPECT_EQ(lines[4].substr(0, 21), "program: 100 0 100 0 ");
    EXPECT_EQ(lines[7], "turnoffpoints: 0 0 0 0 0 0");
    EXPECT_FALSE(desk.bench.link.MaintainConnection());
}

} // namespace
} // namespace corvane
