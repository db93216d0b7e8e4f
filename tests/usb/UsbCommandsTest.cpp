#include "usb/UsbTest.h"

#include <csignal>
#include <set>

namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// Real commands, each on a link of its own.
class UsbCommands : public UsbTest {
  protected:
    struct Command {
        std::string product;
        std::vector<std::string> words;
        int status;
        std::string output;
        std::size_t powerCycles = 0;
    };
    struct Job {
        const Command& command;
        Chip& chip;
        std::unique_ptr<Process> process;
        std::string serial;
    };

    const std::string examples = CORVANE_EXAMPLES;
    const std::string light = examples + "/police.lumora";
    const std::string list = examples + "/speed-controller.ko_eeprom";
    const std::vector<Command> commands{
        {"lumora-1.2", {"program", light}, 0, "Programming complete.\n", 1},
        {"lumora-1.1", {"program", light}, 0, "Programming complete.\n", 1},
        {"pactor-3.1", {"program", light}, 1, ""},
        {"lumora-1.2", {"identify"}, 0, "Lumora\t1.2\t3.7\n"},
        {"lumora-1.2", {"write", "250", "1", "2", "3"}, 0, ""},
        {"lumora-1.2", {"read", "250", "3"}, 0, "255 255 255\n"},
        {"pactor-3.1", {"program", examples + "/bilge-pump.relay"}, 0, "Programmed.\n"},
        {"pactor-3.1", {"read-settings", "relay", folder.path() / "out"}, 0, "Settings read.\n"},
        {"eeprom", {"program", list, "--yes"}, 0, "Programmed.\n"},
        {"eeprom", {"read-settings", "eeprom", list, folder.path() / "values"}, 0, "Read.\n"},
    };
    std::vector<Job> jobs;

    void start(const Command& command, const usb::Ft232::Faults& faults) {
        const int port = static_cast<int>(jobs.size()) + 1;
        const std::string serial = "KO" + std::to_string(1000 + port);
        Chip& chip = bus.plugIn(
            {usb::stockMemory("Ortaline Works", "Corvane", serial), command.product, 2ms, port});
        bus.with([&] { chip.faults = faults; });
        std::vector<std::string> words = command.words;
        words.insert(words.end(), {"--serial", serial});
        jobs.push_back({command, chip, std::make_unique<Process>("corvanectl", words), serial});
    }
    void endJobs() {
        for (const Job& job : jobs)
            bus.unplug(job.chip);
        jobs.clear();
    }
};

TEST_F(UsbCommands, EachLeavesTheLinkAsItWas) {
    // One after the other: a program that gets no turn for long takes its product for a dead one.
    for (const Command& command : commands) {
        start(command, {});
        const Job& job = jobs.back();
        SCOPED_TRACE(command.product + " " + command.words.front());
        EXPECT_EQ(job.process->wait(), job.command.status) << job.process->errors();
        EXPECT_EQ(job.process->output(), job.command.output);
        expectLeftSound(job.chip, job.command.powerCycles);
    }
}

TEST_F(UsbCommands, ASignalEndsThemOnlyWhenTheLinkIsAsItWas) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        SCOPED_TRACE(signal);
        for (const Command& command : commands)
            start(command, {.outDelay = 400ms});
        start(commands.front(), {});
        start(commands.front(), {});
        const Job& powerless = jobs.back();
        // As soon as it speaks; one in the middle of its work, one while it has taken the power.
        const auto isItsMoment = [&, working = &jobs.end()[-2]](const Job& job) {
            return &job == &powerless ? !job.chip.powerLosses().empty()
                   : &job == working  ? job.chip.transfers > 200
                                      : job.chip.hasPower();
        };
        std::set<const Job*> waiting;
        for (const Job& job : jobs)
            waiting.insert(&job);
        const auto signalled = [&](const Job* job) {
            const bool now = bus.with([&] { return isItsMoment(*job); });
            if (now)
                job->process->signal(signal);
            return now;
        };
        ASSERT_TRUE(
            eventually([&] { return std::erase_if(waiting, signalled), waiting.empty(); }, 30s));
        for (const Job& job : jobs) {
            SCOPED_TRACE(job.serial + " " + job.command.product + " " + job.command.words.front());
            EXPECT_EQ(job.process->waitForSignal(), signal) << job.process->errors();
            expectLeftSound(job.chip, &job == &powerless ? 1 : 0);
        }
        const Ran next = ctl({"identify", "--serial", powerless.serial});
        EXPECT_EQ(next.output, "Lumora\t1.2\t3.7\n") << next.errors;
        endJobs();
    }
}

TEST_F(UsbCommands, PulledOutInAnyRequestACommandSaysSoAndEnds) {
    for (const int after : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 17, 30, 60, 120})
        start(commands.front(), {.unplugAfter = after});
    for (const Job& job : jobs) {
        SCOPED_TRACE(job.serial);
        EXPECT_EQ(job.process->wait(), 1) << job.process->errors();
        EXPECT_THAT(job.process->errors(), HasSubstr("corvanectl: "));
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
    const auto told = HasSubstr("The link may not be opened. Install the udev rule "
                                "60-corvane.rules, plug the link in again, and try again.\n");
    EXPECT_THAT(ctl({"identify"}).errors, told);
    Process bench("corvane-bench", {"pactor-3.1"});
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(folder.path() / "pactor-3.1.link"); }));
    const Ran ran = ctl({"identify"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.errors, told);
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
    EXPECT_EQ(bus.opened(), 0);
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
