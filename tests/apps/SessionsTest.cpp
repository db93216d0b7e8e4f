// Real programs whose sessions go wrong: killed ones, and products that a document is not made for.
#include "support/BenchProgram.h"
#include "support/OtherProducts.h"

#include <set>
#include <sstream>

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
        EXPECT_THAT(read.errors, HasSubstr(sent + std::string(" bytes where 20 were asked for.")));
        EXPECT_EQ(ctl({"read-settings", "eeprom", variables, out}).status, 1);
        EXPECT_FALSE(std::filesystem::exists(out));
        bench.signal(SIGTERM);
        bench.wait();
    }
}

TEST_F(BenchProgram, PluggingShowsAndWhatOthersWriteCanNotSteerTheTerminal) {
    const std::string name = "a\x1b[2J\xc2\x9b"
                             "1m\xff\xe2\x80\xae.txt";
    const Ran checked = ctl({"check", name});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.errors, "corvanectl: No product owns files like "
                              "a\\x1B[2J\\xC2\\x9B1m\\xFF\\xE2\\x80\\xAE.txt.\n");
    const auto device = devices();
    EXPECT_TRUE(countBecomes(*device, 0));
    Process bench("corvane-bench", {"blank"});
    ASSERT_TRUE(countBecomes(*device, 1));
    device->OpenDevice(0);
    EXPECT_EQ(device->GetDeviceState2(), -1);
    ASSERT_TRUE(device->ProgramDevice({"Cor\x1b]0;vane", "Ortaline W\xc3\xb6rks", "\r\n", "\x07"}));
    EXPECT_EQ(device->GetDeviceInfo(0).Manufacturer, "FTDI"); // until it is plugged in again
    bench.signal(SIGUSR1);
    EXPECT_TRUE(eventually([&] { return device->GetDeviceState2() != -1; }));
    device->CloseDevice();
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
    bench.signal(SIGTERM);
    bench.wait();
    std::istringstream lines(bench.output());
    std::set<std::string> data;
    for (std::string line; std::getline(lines, line);)
        EXPECT_TRUE(!line.starts_with("to computer: DATA") || !line.ends_with("on channel 1") ||
                    data.insert(line).second)
            << line;
}

} // namespace
} // namespace corvane
