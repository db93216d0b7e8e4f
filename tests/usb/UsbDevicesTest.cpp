#include "kolib/devices/UsbLinkSource.h"
#include "link/KOCommLink.h"
#include "shell/KOFlash.h"
#include "shell/LinkStatus.h"
#include "usb/UsbTest.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;

/// The link of a program in this process.
class UsbDevices : public UsbTest {
  protected:
    struct Idle final : Pause {
        explicit Idle(KODevice& device) : device_(device) {}
        void pause() override { device_.WaitForData(1); }
        KODevice& device_;
    };

    SystemClock clock;
    RunModes modes;
    KODebug debug{modes};
    wire::HostSession packets{clock, {}};
    LinkDevices device{sources(), packets, debug, clock};
    KOProductList products{"KO", debug};
    Idle idle{device};
    KOCommLink link{{device, packets, products, modes, clock, debug, idle}};
    LinkStatus status{link};

    /// The ticks of the main loop, until it is so.
    template<class Condition>
    bool becomes(Condition condition) {
        return eventually([&] {
            link.Update();
            return condition();
        });
    }
    bool signBecomes(const std::string& headline) {
        return becomes([&] { return status.headline() == headline; });
    }

  private:
    std::vector<std::unique_ptr<LinkSource>> sources() {
        std::vector<std::unique_ptr<LinkSource>> all;
        all.push_back(std::make_unique<UsbLinkSource>(clock));
        return all;
    }
};

TEST_F(UsbDevices, StringsThatComeLateAreReadThoughItHasLookedOftenBefore) {
    bus.plugIn(
        {usb::stockMemory("Ortaline Works", "Corvane", "KO1234567"), "lumora-1.2", 0ms, 1, 1500ms});
    EXPECT_TRUE(signBecomes("A link is plugged in"));
}

TEST_F(UsbDevices, RightsThatComeLaterAreSeenWithoutReplugging) {
    Chip& chip = bus.plugIn("lumora-1.2");
    bus.setRights(chip, false);
    ASSERT_TRUE(signBecomes("The link may not be opened"));
    std::this_thread::sleep_for(3500ms); // long after whatever follows a plugging
    bus.setRights(chip, true);
    EXPECT_TRUE(signBecomes("A link is plugged in"));
    EXPECT_TRUE(link.DriverExists());
}

TEST_F(UsbDevices, TheSignOfABusyLinkStandsStillAndLooksOnceASecond) {
    Chip& chip = bus.plugIn("lumora-1.2");
    bus.claimElsewhere(chip, true);
    ASSERT_TRUE(signBecomes("The link is busy"));
    int changes = 0;
    const Connection onChanged = status.Changed.connect([&] { ++changes; });
    const int before = bus.opened();
    for (int tick = 0; tick < 60; ++tick) {
        link.Update();
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(changes, 0);
    EXPECT_LE(bus.opened() - before, 4);
    bus.claimElsewhere(chip, false);
    EXPECT_TRUE(signBecomes("A link is plugged in"));
}

TEST_F(UsbDevices, ALongReplyIsWholeThoughTheProgramDoesNotGetItsTurn) {
    Chip& chip = bus.plugIn("eeprom");
    ASSERT_TRUE(link.Connect(link.Class(), true));
    std::size_t length = 0;
    const Connection onPacket = link.PacketReceived.connect(
        [&](const KOPacket& packet) { length = packet.buffer().Length(); });
    KOPacket request = link.makePacket();
    request.setChannel(208);
    for (const std::uint8_t byte : {0, 0, 255})
        request.buffer().Append(byte);
    ASSERT_TRUE(request.Send());
    std::this_thread::sleep_for(40ms);
    EXPECT_TRUE(becomes([&] { return length == 255; }));
    EXPECT_EQ(bus.with([&] { return chip.overruns; }), 0U);
    link.DisconnectAndBlock(false);
}

TEST_F(UsbDevices, AChipThatDoesNotKeepItsStringsIsNotCalledProgrammed) {
    modes.ProgramMode = true;
    const usb::Memory stock = usb::stockMemory("FTDI", "FT232R USB UART", "A600XYZ1");
    Chip& chip = bus.plugIn({stock, "lumora-1.2", 0ms});
    ASSERT_TRUE(becomes([&] { return link.IsConnected() && bus.users(chip) == 1; }));
    bus.with([&] { chip.faults.forgetsMemory = true; });
    EXPECT_FALSE(ProgramLinkDevice(device));
    EXPECT_EQ(bus.with([&] { return chip.memoryReads; }), 2);
    // A writing that broke off has left the memory unsound; the next one keeps the rest all the
    // same.
    bus.with([&] {
        chip.faults.forgetsMemory = false;
        chip.memory[9] ^= 0xFFU;
    });
    ASSERT_FALSE(usb::isSound(bus.with([&] { return chip.memory; })));
    EXPECT_TRUE(ProgramLinkDevice(device));
    EXPECT_EQ(besideStrings(bus.with([&] { return chip.memory; })), besideStrings(stock));
    bus.with([&] { chip.faults.stallRequest = {{0x91, 1}}; });
    EXPECT_FALSE(ProgramLinkDevice(device));
    link.Update();
    EXPECT_TRUE(link.IsConnected());
    EXPECT_TRUE(ProgramLinkDevice(device));
}

} // namespace
} // namespace corvane
