// Real programs whose sessions go wrong: killed ones, and products that a document is not made for.
#include "support/BenchProgram.h"
#include "support/OtherProducts.h"

#include <set>

namespace corvane {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

TEST_F(BenchProgram, AKilledReadingLeavesNothingForTheNextProgram) {
    Process bench("corvane-bench", {"eeprom", "--size", "65536", "--fault", "delay=10", "--log"});
    waitFor("eeprom");
    for (int round = 0; round < 5; ++round) {
        Process reading("corvanectl", {"read", "0", "65536"});
        const std::size_t before = bench.output().size();
        ASSERT_TRUE(eventually(
            [&] { return bench.output().find("on channel 80", before) != std::string::npos; }));
        std::this_thread::sleep_for(std::chrono::milliseconds(7 * round));
        reading.signal(SIGKILL);
        reading.wait();
        const Ran identified = ctl({"identify"});
        EXPECT_EQ(identified.output, "KOEEPROM\t255.1\t3.7\n") << identified.errors;
    }
    const std::string light = folder.file("a.lumora", DocumentOf("lumora"));
    Process reading("corvanectl", {"read", "0", "65536"});
    std::this_thread::sleep_for(300ms);
    reading.signal(SIGKILL);
    reading.wait();
    EXPECT_THAT(ctl({"program", light}).errors, HasSubstr("KOEEPROM 255.1"));
    EXPECT_EQ(WritesAmong(FramesOf(bench)), 0);
}

TEST_F(BenchProgram, AReplyOfAnotherLengthOrKindIsNoData) {
    const std::string variables = folder.file("a.ko_eeprom", DocumentOf("ko_eeprom"));
    const std::string out = folder.path() / "b.ko_eeprom";
    for (const auto& [wrong, sent] :
         {std::pair("too-short", "sent 19"), {"too-long", "sent 21"}, {"wrong-kind", "sent 0"}}) {
        Process bench("corvane-bench", {"eeprom", "--misbehave", wrong});
        waitFor("eeprom");
        const Ran read = ctl({"read", "0", "20"});
        EXPECT_EQ(read.status, 1);
        EXPECT_EQ(read.output, "");
        EXPECT_EQ(read.errors,
                  std::string("corvanectl: The product ") + sent +
                      " bytes where 20 were asked for. Nothing of it was taken over. Try again.\n");
        const Ran settings = ctl({"read-settings", "eeprom", variables, out});
        EXPECT_EQ(settings.status, 1);
        EXPECT_THAT(settings.errors, HasSubstr("Reading failed!"));
        EXPECT_FALSE(std::filesystem::exists(out));
        bench.signal(SIGTERM);
        bench.wait();
    }
}

TEST_F(BenchProgram, WhatOthersWriteCanNotSteerTheTerminal) {
    const std::string name = "a\x1b[2J\xc2\x9b"
                             "1m\xff\xe2\x80\xae.txt";
    const Ran checked = ctl({"check", name});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.errors, "corvanectl: No product owns files like "
                              "a\\x1B[2J\\xC2\\x9B1m\\xFF\\xE2\\x80\\xAE.txt.\n");
    const auto device = devices();
    Process bench("corvane-bench", {"blank"});
    ASSERT_TRUE(countBecomes(*device, 1));
    device->OpenDevice(0);
    ASSERT_TRUE(device->ProgramDevice({"Cor\x1b]0;vane", "Ortaline W\xc3\xb6rks", "\r\n", "\x07"}));
    device->CloseDevice();
    bench.signal(SIGUSR1);
    EXPECT_TRUE(countBecomes(*device, 0));
    bench.signal(SIGUSR1);
    EXPECT_TRUE(countBecomes(*device, 1));
    EXPECT_EQ(ctl({"devices"}).output,
              "0\tCor\\x1B]0;vane\tOrtaline W\xc3\xb6rks\t\\x0D\\x0A\t\\x07\n");
}

TEST_F(BenchProgram, AWindowAcknowledgesWhenSomethingComesAndNotAtItsNextTick) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    Process bench("corvane-bench", {"quillon", "--log"});
    waitFor("quillon");
    Process window("corvane", {"-program"});
    // The start screen keeps the session of a product that no editor is for, which says each second
    // that it is there.
    ASSERT_TRUE(eventually(
        [&] { return bench.output().find("DATA 3 on channel 1\n") != std::string::npos; }, 20s));
    window.signal(SIGKILL);
    std::vector<std::string> data;
    for (const std::string& frame : FramesOf(bench))
        if (frame.starts_with("to computer: DATA") && frame.ends_with("on channel 1"))
            data.push_back(frame);
    EXPECT_EQ(std::set(data.begin(), data.end()).size(), data.size());
}

} // namespace
} // namespace corvane
