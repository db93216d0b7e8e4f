#include "support/BenchProgram.h"

#include "base/Product.h"


namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

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

TEST_F(BenchProgram, AVirtualLinkThatAnotherProgramHoldsIsCalledBusy) {
    Process bench("corvane-bench", {"eeprom", "--size", "65536", "--write-time", "0", "--log"});
    waitFor("eeprom");
    Process holder("corvanectl", {"read", "0", "65536"});
    ASSERT_TRUE(
        eventually([&] { return bench.output().find("channel 208") != std::string::npos; }));
    holder.signal(SIGSTOP);
    const Ran identify = ctl({"identify"});
    EXPECT_EQ(identify.status, 1);
    EXPECT_THAT(identify.errors,
                HasSubstr("The link is busy: another program uses it, corvanectl (process " +
                          std::to_string(holder.id()) + "). Close that program"));
    holder.signal(SIGCONT);
    static_cast<void>(holder.wait()); // which may have waited too long meanwhile
    EXPECT_EQ(ctl({"identify"}).status, 0);
}

TEST_F(BenchProgram, LeavesAloneWhatIsNoLink) {
    const std::string precious = folder.file("keep.link", "precious");
    Process bench("corvane-bench", {"eeprom", "--name", "keep"});
    EXPECT_EQ(bench.wait(), 1);
    EXPECT_THAT(bench.errors(), HasSubstr("Choose another name with --name."));
    EXPECT_EQ(folder.content("keep.link"), "precious");
}

TEST_F(BenchProgram, DevicesTellsWhyItDoesNotLookForVirtualLinks) {
    EXPECT_EQ(ctl({"devices"}).errors, "");
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    EXPECT_THAT(ctl({"devices"}).errors,
                HasSubstr("Try: chmod 700 " + folder.path().string() + "\n"));
}

TEST_F(BenchProgram, TheWindowTellsInASentenceThatThereIsNoDesktop) {
    for (const auto& [name, value] : {std::pair("QT_QPA_PLATFORM", "xcb"), std::pair("DISPLAY", ""),
                                      std::pair("WAYLAND_DISPLAY", "")})
        ::setenv(name, value, 1);
    Process window("corvane", {});
    EXPECT_EQ(window.wait(), 1);
    EXPECT_EQ(window.errors(),
              "corvane: There is no desktop to show a window on. Start it within one.\n");
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
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
    EXPECT_EQ(version.output(), std::string("corvanectl ") + ProgramVersion + "\n");
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
    LinkDevices second(std::move(sources), otherPackets, debug, clock);
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

} // namespace
} // namespace corvane
