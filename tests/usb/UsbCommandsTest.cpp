#include "usb/UsbTest.h"

#include <csignal>
#include <fstream>

namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(UsbTest, EveryCommandLeavesTheLinkAsItWas) {
    struct Case {
        std::string product;
        std::vector<std::string> command;
        std::string output;
        std::size_t powerCycles;
    };
    const std::string examples = CORVANE_EXAMPLES;
    const std::string settings = folder.path() / "out.relay";
    const std::string variables = folder.path() / "out.ko_eeprom";
    const std::string list = examples + "/speed-controller.ko_eeprom";
    const std::vector<Case> cases{
        {"lumora-1.2", {"devices"}, "0\tCorvane\tOrtaline Works\tKO\tKO1234567\n", 0},
        {"lumora-1.2", {"identify"}, "Lumora\t1.2\t3.7\n", 0},
        {"lumora-1.2", {"program", examples + "/police.lumora"}, "Programming complete.\n", 1},
        {"lumora-1.1", {"program", examples + "/police.lumora"}, "Programming complete.\n", 1},
        {"lumora-1.2", {"write", "250", "1", "2", "3"}, "", 0},
        {"lumora-1.2", {"read", "250", "3"}, "255 255 255\n", 0},
        {"pactor-3.1", {"program", examples + "/bilge-pump.relay"}, "Programmed.\n", 0},
        {"pactor-3.1", {"read-settings", "relay", settings}, "Settings read.\n", 0},
        {"eeprom", {"program", list, "--yes"}, "Programmed.\n", 0},
        {"eeprom", {"read-settings", "eeprom", list, variables}, "Read.\n", 0},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.product + " " + one.command.front());
        Chip& chip = bus.plugIn(one.product);
        const Ran ran = ctl(one.command);
        EXPECT_EQ(ran.status, 0) << ran.errors;
        EXPECT_EQ(ran.output, one.output);
        // Listing opens nothing, so that nothing gives the product power for the first time.
        if (one.command.front() == "devices")
            EXPECT_EQ(bus.with([&] { return chip.vendorRequests; }), 0);
        else
            expectLeftSound(chip, one.powerCycles);
        bus.unplug(chip);
    }
}

TEST_F(UsbTest, ASignalEndsACommandOnlyWhenTheLinkIsAsItWas) {
    const std::string light = std::string(CORVANE_EXAMPLES) + "/police.lumora";
    // While it works, and while it has taken the power from the product.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        for (const bool inPowerCycle : {false, true}) {
            SCOPED_TRACE(std::to_string(signal) + (inPowerCycle ? " without power" : ""));
            Chip& chip = bus.plugIn(
                {usb::stockMemory("Ortaline Works", "Corvane", "KO1234567"), "lumora-1.2", 2ms});
            Process program("corvanectl", {"program", light});
            ASSERT_TRUE(eventually([&] {
                return bus.with([&] {
                    return inPowerCycle ? !chip.powerLosses().empty() : chip.transfers > 60;
                });
            }));
            program.signal(signal);
            EXPECT_EQ(program.waitForSignal(), signal);
            expectLeftSound(chip, inPowerCycle ? 1 : 0);
            const Ran next = ctl({"identify"});
            EXPECT_EQ(next.output, "Lumora\t1.2\t3.7\n") << next.errors;
            bus.unplug(chip);
        }
    }
}

TEST_F(UsbTest, PulledOutInAnyRequestACommandSaysSoAndEnds) {
    struct Run {
        std::unique_ptr<usb::UsbBus> bus;
        std::unique_ptr<Process> process;
        int after;
    };
    const std::string light = std::string(CORVANE_EXAMPLES) + "/police.lumora";
    std::vector<Run> runs;
    for (const int after : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 17, 30, 60, 120}) {
        Run& run = runs.emplace_back(Run{std::make_unique<usb::UsbBus>(), nullptr, after});
        Chip& chip = run.bus->plugIn("lumora-1.2");
        run.bus->with([&] { chip.faults.unplugAfter = after; });
        run.process =
            std::make_unique<Process>("corvanectl", std::vector<std::string>{"program", light});
    }
    for (const Run& run : runs) {
        EXPECT_EQ(run.process->wait(), 1) << run.after << ": " << run.process->errors();
        EXPECT_THAT(run.process->errors(), HasSubstr("corvanectl: ")) << run.after;
    }
}

TEST_F(UsbTest, StallsAndSlowTransfersAreMadeGood) {
    Chip& chip = bus.plugIn("lumora-1.2");
    chip.faults.stallIn = 2;
    chip.faults.stallOut = 1;
    chip.faults.outDelay = 700ms; // longer than a write may take
    chip.faults.stallRequest = {{1, 1}};
    const Ran ran = ctl({"read", "0", "255"});
    EXPECT_EQ(ran.status, 0) << ran.errors;
    expectLeftSound(chip);
}

TEST_F(UsbTest, ALinkThatAnotherProgramHoldsIsCalledBusyWithItsName) {
    Chip& chip = bus.plugIn("eeprom");
    Process holder("corvanectl", {"read", "0", "256"});
    ASSERT_TRUE(eventually([&] { return bus.with([&] { return chip.transfers > 20; }); }));
    holder.signal(SIGSTOP);
    const int before = bus.opened();
    const Ran ran = ctl({"identify"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.errors, HasSubstr("The link is busy: another program uses it, corvanectl "
                                      "(process " +
                                      std::to_string(holder.id()) + "). Close that program"));
    EXPECT_LE(bus.opened() - before, 7); // once a second
    // One that becomes free meanwhile is taken.
    Process waiting("corvanectl", {"identify"});
    ASSERT_TRUE(eventually([&] { return bus.opened() > before + 6; }));
    holder.signal(SIGCONT);
    static_cast<void>(holder.wait()); // which may have waited too long meanwhile
    EXPECT_EQ(waiting.wait(), 0) << waiting.errors();
    EXPECT_TRUE(bus.hasTty(chip));
}

TEST_F(UsbTest, WithoutRightsItSaysWhatToDoAlsoBesideAVirtualLink) {
    Chip& chip = bus.plugIn("lumora-1.2");
    bus.setRights(chip, false);
    const std::string told = "corvanectl: The link may not be opened. Install the udev rule "
                             "60-corvane.rules, plug the link in again, and try again.\n";
    EXPECT_EQ(ctl({"identify"}).errors, told);
    Process bench("corvane-bench", {"pactor-3.1"});
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(folder.path() / "pactor-3.1.link"); }));
    const Ran ran = ctl({"identify"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.errors, told);
    EXPECT_EQ(ctl({"identify", "--device", "0"}).output, "Pactor\t3.1\t3.7\n");
    bus.setRights(chip, true);
    EXPECT_EQ(ctl({"identify"}).output, "Lumora\t1.2\t3.7\n");
}

TEST_F(UsbTest, LinksAreListedByTheirSocketsAndChosenByNumberOrSerial) {
    Chip& third = bus.plugIn("lumora-1.2", "KO0000003", 3);
    Chip& foreign =
        bus.plugIn({usb::stockMemory("FTDI", "FT232R USB UART", "A600XYZ1"), "", 0ms, 2});
    Chip& first = bus.plugIn("pactor-3.1", "KO0000001", 1);
    EXPECT_EQ(ctl({"devices"}).output, "0\tCorvane\tOrtaline Works\tKO\tKO0000001\n"
                                       "1\tFT232R USB UART\tFTDI\tA6\tA600XYZ1\n"
                                       "2\tCorvane\tOrtaline Works\tKO\tKO0000003\n");
    EXPECT_EQ(ctl({"devices", "--serial", "KO0000003"}).output,
              "2\tCorvane\tOrtaline Works\tKO\tKO0000003\n");
    EXPECT_EQ(ctl({"identify", "--serial", "KO0000001"}).output, "Pactor\t3.1\t3.7\n");
    EXPECT_EQ(ctl({"identify", "--device", "2"}).output, "Lumora\t1.2\t3.7\n");
    EXPECT_EQ(ctl({"devices", "--serial", "KO9999999"}).output, "");
    for (Chip* link : {&first, &third})
        expectLeftSound(*link);
    // Nothing was asked of the other one.
    EXPECT_EQ(bus.with([&] { return foreign.vendorRequests; }), 0);
    EXPECT_TRUE(bus.hasTty(foreign));
}

TEST_F(UsbTest, ALinkThatIsPluggedInWhileACommandWaitsIsTaken) {
    Process waiting("corvanectl", {"identify"});
    std::this_thread::sleep_for(700ms);
    Chip& chip = bus.plugIn("lumora-1.2");
    EXPECT_EQ(waiting.wait(), 0) << waiting.errors();
    expectLeftSound(chip);
}

} // namespace
} // namespace corvane
