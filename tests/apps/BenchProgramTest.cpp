#include "kolib/devices/LinkDevices.h"
#include "kolib/devices/UsbLinkSource.h"
#include "kolib/devices/VirtualLinkSource.h"
#include "support/Process.h"
#include "system/SystemClock.h"

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

template<class Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = 5s) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

/// The real programs, talking through a folder of virtual links of their own.
class BenchProgram : public testing::Test {
  protected:
    TemporaryFolder folder;
    SystemClock clock;
    RunModes modes;
    KODebug debug{modes};
    wire::HostSession packets{clock, {}};

    void SetUp() override { ::setenv("CORVANE_BENCH_DIR", folder.path().c_str(), 1); }

    [[nodiscard]] std::filesystem::path socketOf(const std::string& name) const {
        return folder.path() / (name + ".link");
    }
    void waitFor(const std::string& name) const {
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(socketOf(name)); })) << name;
    }
    [[nodiscard]] std::unique_ptr<LinkDevices> devices() {
        std::vector<std::unique_ptr<LinkSource>> sources;
        sources.push_back(
            std::make_unique<VirtualLinkSource>(VirtualLinkSource::userFolder(), clock));
        return std::make_unique<LinkDevices>(std::move(sources), packets, debug);
    }
    static bool countBecomes(KODevice& device, int count) {
        return eventually([&] {
            device.EnumerateDevices();
            return device.GetDeviceCount() == count;
        });
    }
};

TEST_F(BenchProgram, IdentifyNamesEachProduct) {
    const std::vector<std::pair<std::string, std::string>> lines{
        {"lumora-1.1", "Lumora\t1.1\t3.7\n"}, {"lumora-1.2", "Lumora\t1.2\t3.7\n"},
        {"pactor-2.1", "Pactor\t2.1\t3.7\n"}, {"pactor-3.1", "Pactor\t3.1\t3.7\n"},
        {"eeprom", "KOEEPROM\t255.1\t3.7\n"},
    };
    for (const auto& [product, line] : lines) {
        Process bench("corvane-bench", {product});
        waitFor(product);
        Process identify("corvanectl", {"identify"});
        EXPECT_EQ(identify.wait(), 0) << product;
        EXPECT_EQ(identify.output(), line);
        bench.signal(SIGTERM);
        EXPECT_EQ(bench.wait(), 0);
        EXPECT_FALSE(std::filesystem::exists(socketOf(product)));
    }
}

TEST_F(BenchProgram, IdentifyTellsOfAProductThatItDoesNotKnow) {
    Process bench("corvane-bench", {"quillon", "--firmware", "1.0"});
    waitFor("quillon");
    Process identify("corvanectl", {"identify", "--debug"});
    EXPECT_EQ(identify.wait(), 1);
    EXPECT_EQ(identify.output(), "");
    EXPECT_THAT(identify.errors(), HasSubstr("\nUnrecognized product.\n"));
}

TEST_F(BenchProgram, WrongUsageIsToldApartFromFailure) {
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {}, {"frobnicate"}, {"identify", "--device", "-1"}, {"identify", "--device"}}) {
        Process ctl("corvanectl", arguments);
        EXPECT_EQ(ctl.wait(), 2);
        EXPECT_NE(ctl.errors(), "");
    }
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"toaster"},
                                               {},
                                               {"eeprom", "--fault", "drop=2"},
                                               {"eeprom", "--firmware", "x"},
                                               {"eeprom", "--name", "../x"},
                                               {"eeprom", "--eeprom", "/nowhere/at/all"}}) {
        Process bench("corvane-bench", arguments);
        EXPECT_EQ(bench.wait(), 2);
        EXPECT_NE(bench.errors(), "");
    }
    Process version("corvanectl", {"--version"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_EQ(version.output(), "corvanectl 2.21\n");
}

TEST_F(BenchProgram, ListsLinksByNameAndPicksOne) {
    Process b("corvane-bench", {"pactor-2.1", "--name", "b"});
    Process a("corvane-bench", {"lumora-1.1", "--name", "a"});
    Process c("corvane-bench", {"blank", "--name", "c"});
    for (const char* name : {"a", "b", "c"})
        waitFor(name);
    Process list("corvanectl", {"devices"});
    EXPECT_EQ(list.wait(), 0);
    EXPECT_EQ(list.output(), "0\tCorvane\tOrtaline Works\tKO\tKO0000001\n"
                             "1\tCorvane\tOrtaline Works\tKO\tKO0000001\n"
                             "2\tFT232R USB UART\tFTDI\tFT\tFT0000001\n");
    Process identify("corvanectl", {"identify", "--device", "0"});
    EXPECT_EQ(identify.wait(), 0);
    EXPECT_EQ(identify.output(), "Lumora\t1.1\t3.7\n");
}

TEST_F(BenchProgram, AKilledBenchLeavesASocketThatTheNextOneReplaces) {
    {
        Process killed("corvane-bench", {"eeprom"});
        waitFor("eeprom");
    }
    ASSERT_TRUE(std::filesystem::exists(socketOf("eeprom")));
    const auto device = devices();
    EXPECT_TRUE(countBecomes(*device, 0));
    Process next("corvane-bench", {"eeprom"});
    EXPECT_TRUE(countBecomes(*device, 1));
    Process second("corvane-bench", {"eeprom"});
    EXPECT_EQ(second.wait(), 1);
    EXPECT_THAT(second.errors(), HasSubstr("plugged in already"));
}

TEST_F(BenchProgram, UnpluggingAndPluggingShow) {
    const auto device = devices();
    EXPECT_TRUE(countBecomes(*device, 0));
    Process bench("corvane-bench", {"blank"});
    EXPECT_TRUE(countBecomes(*device, 1));
    device->OpenDevice(0);
    EXPECT_EQ(device->GetDeviceState2(), -1);
    const DeviceInfo strings{"Corvane", "Ortaline Works", "KO", "KO1234567"};
    EXPECT_TRUE(device->ProgramDevice(strings));
    EXPECT_EQ(device->GetDeviceInfo(0).Manufacturer, "FTDI"); // until it is plugged in again
    bench.signal(SIGUSR1);
    EXPECT_TRUE(eventually([&] { return device->GetDeviceState2() != -1; }));
    device->CloseDevice();
    EXPECT_TRUE(countBecomes(*device, 0));
    bench.signal(SIGUSR1);
    EXPECT_TRUE(countBecomes(*device, 1));
    EXPECT_EQ(device->GetDeviceInfo(0), strings);
}

TEST_F(BenchProgram, ALinkServesOneComputerAtATime) {
    Process bench("corvane-bench", {"eeprom"});
    const auto first = devices();
    ASSERT_TRUE(countBecomes(*first, 1));
    wire::HostSession otherPackets(clock, {});
    std::vector<std::unique_ptr<LinkSource>> sources;
    sources.push_back(std::make_unique<VirtualLinkSource>(folder.path(), clock));
    LinkDevices second(std::move(sources), otherPackets, debug);
    ASSERT_TRUE(countBecomes(second, 1));
    first->OpenDevice(0);
    ASSERT_TRUE(packets.SendHello(125));
    ASSERT_TRUE(
        eventually([&] { return first->GetDeviceState2() == -1 && packets.ReceivedHello(); }));
    second.OpenDevice(0);
    EXPECT_TRUE(eventually([&] { return second.GetDeviceState2() != -1; }));
    EXPECT_EQ(first->GetDeviceState2(), -1);
    first->CloseDevice();
    EXPECT_TRUE(eventually([&] { // the bench may notice the closing a little later
        second.OpenDevice(0);
        static_cast<void>(otherPackets.SendHello(125));
        return eventually(
            [&] { return second.GetDeviceState2() == -1 && otherPackets.ReceivedHello(); }, 50ms);
    }));
}

TEST_F(BenchProgram, AFolderThatOthersMayEnterIsNotLookedInto) {
    Process bench("corvane-bench", {"eeprom"});
    waitFor("eeprom");
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const auto device = devices();
    device->EnumerateDevices();
    EXPECT_FALSE(device->EnumerationPending());
    EXPECT_EQ(device->GetDeviceCount(), 0);
    Process other("corvane-bench", {"blank"});
    EXPECT_EQ(other.wait(), 1);
    EXPECT_THAT(other.errors(), HasSubstr("mode 0700"));
}

TEST_F(BenchProgram, KeepsTheEepromAcrossRuns) {
    const std::filesystem::path memory = folder.path() / "memory";
    const auto transfer = [&](LinkDevices& device, int channel,
                              const std::vector<std::uint8_t>& data) {
        EXPECT_TRUE(packets.SendPacket(channel, data));
        std::vector<std::uint8_t> answer;
        int replyChannel = 0;
        int length = 0;
        EXPECT_TRUE(eventually([&] {
            return device.GetDeviceState2() == -1 && packets.ReceivePacket(replyChannel, length) &&
                   replyChannel == channel - 128;
        }));
        answer.resize(static_cast<std::size_t>(length));
        packets.ReceivePacketData(answer);
        return answer;
    };
    for (const bool firstRun : {true, false}) {
        Process bench("corvane-bench", {"pactor-2.1", "--eeprom", memory, "--write-time", "1"});
        const auto device = devices();
        ASSERT_TRUE(countBecomes(*device, 1));
        device->OpenDevice(0);
        ASSERT_TRUE(packets.SendHello(125));
        ASSERT_TRUE(
            eventually([&] { return device->GetDeviceState2() == -1 && packets.ReceivedHello(); }));
        if (firstRun) {
            EXPECT_EQ(transfer(*device, 208, {126, 0, 3}),
                      (std::vector<std::uint8_t>{255, 255, 255}));
            // The part has 128 cells: the third byte comes round to address 0.
            EXPECT_TRUE(transfer(*device, 209, {126, 0, 7, 8, 9}).empty());
        }
        EXPECT_EQ(transfer(*device, 208, {126, 0, 3}), (std::vector<std::uint8_t>{7, 8, 9}));
        EXPECT_EQ(transfer(*device, 208, {0, 0, 2}), (std::vector<std::uint8_t>{9, 255}));
    }
    EXPECT_EQ(std::filesystem::file_size(memory), 128U);
}

TEST_F(BenchProgram, ChecksAndConvertsDocuments) {
    const std::string light = "Lumora\t2\t1\t0\t1\nLumoraTrackInsert\t1\t0\t1\t50\t0.5\n"
                              "LumoraTime\t1\t0\t1\t.5\t.6\n";
    const std::string file = folder.file("a.lumora", light);
    Process check("corvanectl", {"check", file});
    EXPECT_EQ(check.wait(), 0);
    EXPECT_EQ(check.output(), "type\tLumora\nversion\t1\nchanges\t2\nposition\t1\nstop point\t0\n");
    Process convert("corvanectl", {"convert", file, folder.path() / "b.lumora"});
    EXPECT_EQ(convert.wait(), 0);
    EXPECT_EQ(folder.content("b.lumora"), "Lumora\t2\t1\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.5\n"
                                          "LumoraTime\t1\t0\t1\t.5\t.6\n");
    const std::vector<std::pair<std::vector<std::string>, std::string>> failures{
        {{"check", folder.path() / "none.lumora"}, "corvanectl: File not found.\n"},
        {{"check", folder.file("c.lumora", "?")},
         "corvanectl: Can't understand the file format.\n"},
        {{"check", folder.file("d.lumora", "Lumora\t0\t0\t0\t9\n")},
         "corvanectl: This file was made with a newer version of the program. You will need to get "
         "the new version to view it.\n"},
        {{"check", "notes.txt"}, "corvanectl: No product owns files like notes.txt.\n"},
        {{"convert", file, "/nowhere/b.lumora"}, "corvanectl: Can't save the file.\n"},
    };
    for (const auto& [arguments, message] : failures) {
        Process failing("corvanectl", arguments);
        EXPECT_EQ(failing.wait(), 1);
        EXPECT_EQ(failing.errors(), message);
        EXPECT_EQ(failing.output(), "");
    }
}

/// Runs corvanectl and gives its exit status, output and errors.
struct Ran {
    int status;
    std::string output;
    std::string errors;
};
Ran ctl(const std::vector<std::string>& arguments) {
    Process process("corvanectl", arguments);
    const int status = process.wait();
    return {status, process.output(), process.errors()};
}

TEST_F(BenchProgram, ProgramsALightControllerThatThenPlaysTheProgram) {
    const std::string memory = folder.path() / "memory";
    const std::string light =
        folder.file("a.lumora", "Lumora\t2\t2\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.2\t2\t0\t.1\n"
                                "LumoraTrackInsert2\t2\t0\t1\t100\t1\tP\t0\n");
    Process bench("corvane-bench", {"lumora-1.2", "--eeprom", memory, "--write-time", "0"});
    waitFor("lumora-1.2");
    const Ran programmed = ctl({"program", light});
    EXPECT_EQ(programmed.status, 0) << programmed.errors;
    EXPECT_EQ(programmed.output, "Programming complete.\n");
    const Ran compiled = ctl({"compile", light, "-o", folder.path() / "image"});
    EXPECT_EQ(compiled.status, 0);
    EXPECT_EQ(folder.content("memory").substr(0, 255), folder.content("image"));
    EXPECT_EQ(ctl({"read", "25", "8"}).output, "20 50 10 0 100 0 100 251\n");
    EXPECT_EQ(ctl({"write", "0", "1", "2", "3"}).status, 0);
    EXPECT_EQ(ctl({"read", "0", "4"}).output, "1 2 3 127\n");
    bench.signal(SIGTERM);
    EXPECT_EQ(bench.wait(), 0);

    Process play("corvane-bench", {"play", folder.path() / "image", "--stick", "80", "--seconds",
                                   "0.4", "--step", "100"});
    EXPECT_EQ(play.wait(), 0);
    EXPECT_EQ(play.output(), "seconds,1,2,3,4,5,6\n0.000,50,80,0,0,0,0\n0.100,50,80,0,0,0,0\n"
                             "0.200,0,80,0,0,0,0\n0.300,50,80,0,0,0,0\n");
    Process watch("corvane-bench", {"lumora-1.2", "--eeprom", memory, "--watch", "--stick", "80"});
    EXPECT_TRUE(
        eventually([&] { return watch.output().find(" s: 50 80 0") != std::string::npos; }));
}

TEST_F(BenchProgram, PlaysAProgramWithoutAController) {
    const std::string light =
        folder.file("a.lumora", "Lumora\t2\t2\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.2\t2\t0\t.1\n"
                                "LumoraTrackInsert2\t2\t1\t1\t100\t1\tP\t0\n");
    const Ran played = ctl({"play", light, "--seconds", "0.4", "--step", "100", "--stick",
                            "80,0.3:20", "--png", folder.path() / "a.png"});
    EXPECT_EQ(played.status, 0) << played.errors;
    EXPECT_EQ(played.output, "seconds,1,2,3,4,5,6\n0.000,50,0,0,0,0,0\n0.100,50,0,0,0,0,0\n"
                             "0.200,0,0,0,0,0,0\n0.300,0,20,0,0,0,0\n");
    EXPECT_EQ(folder.content("a.png").substr(1, 3), "PNG");
    EXPECT_EQ(ctl({"play", light, "--no-signal", "--seconds", "0.1", "--stick", "20"}).output,
              "seconds,1,2,3,4,5,6\n0.000,50,0,0,0,0,0\n");
    for (const char* stick : {"101", "x", "50,60", "1:50", "50,2:10,1:20", ""})
        EXPECT_EQ(ctl({"play", light, "--stick", stick}).status, 2) << stick;
}

TEST_F(BenchProgram, AsksAboutTheOlderControllerOnlyWhenItMust) {
    const std::string plain =
        folder.file("a.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.2\n");
    const Ran asked = ctl({"compile", "--device", "1.1", plain});
    EXPECT_EQ(asked.status, 0);
    EXPECT_EQ(asked.output.substr(0, 17), "6: 255\n5: 0 20 50");
    const std::string advanced =
        folder.file("b.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t100\t1\tP\t0\n");
    EXPECT_EQ(ctl({"compile", "--device", "1.1", advanced}).status, 1);
    EXPECT_EQ(ctl({"compile", "--device", "1.1", "--no", advanced}).status, 1);
    EXPECT_EQ(ctl({"compile", "--device", "1.1", "--yes", advanced}).status, 0);
    EXPECT_EQ(ctl({"compile", "--device", "1.3", advanced}).status, 2);
    EXPECT_EQ(ctl({"compile", "--yes", "--no", advanced}).status, 2);
    std::string many = "Lumora\t1\t1\t0\t2\nLumoraTrackInsert\t1\t0";
    for (int i = 1; i <= 96; ++i)
        many += "\t" + std::to_string(i) + "\t50\t.2";
    const Ran large = ctl({"compile", folder.file("c.lumora", many + "\n")});
    EXPECT_EQ(large.status, 1);
    EXPECT_EQ(large.errors, "corvanectl: The Lumora controller can only hold 106 segments. The "
                            "program needs 107.\n");
}

TEST(UsbStrings, ComeFromWhatTheKernelHasRead) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "product") << "Corvane\n";
    std::ofstream(folder.path() / "manufacturer") << "Ortaline Works\n";
    EXPECT_EQ(readUsbStrings(folder.path()), (DeviceInfo{"Corvane", "Ortaline Works", "", ""}));
    std::ofstream(folder.path() / "serial") << "KO12AB34F\n";
    EXPECT_EQ(readUsbStrings(folder.path()),
              (DeviceInfo{"Corvane", "Ortaline Works", "KO", "KO12AB34F"}));
}

} // namespace
} // namespace corvane
