#pragma once

#include "support/BenchProgram.h"
#include "usb/UsbBus.h"

namespace corvane {

/// Real programs, libusb and libftdi over an emulated USB, and no virtual link but what a test
/// adds.
class UsbTest : public testing::Test {
  protected:
    using Chip = usb::Ft232;

    UsbTest() {
        std::filesystem::permissions(folder.path(), std::filesystem::perms(0700));
        for (const char* name :
             {"CORVANE_BENCH_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"})
            ::setenv(name, folder.path().c_str(), 1);
    }

    TemporaryFolder folder;
    usb::UsbBus bus;

    /// What a chip's memory holds beside the strings and the checksum.
    static std::vector<std::uint8_t> besideStrings(const usb::Memory& memory) {
        std::vector<std::uint8_t> bytes(memory.begin(), memory.begin() + 0x0E);
        bytes.insert(bytes.end(), memory.begin() + 0x14, memory.begin() + 0x18);
        bytes.insert(bytes.end(), memory.begin() + 0x78, memory.begin() + 0x7E);
        return bytes;
    }

    /// What holds after every use of a link, however that ended: nothing was asked of the chip that
    /// should not be, the product has power and has lost it only in so many power cycles, the
    /// kernel's driver has its device again.
    void expectLeftSound(Chip& chip, std::size_t powerCycles = 0) {
        EXPECT_TRUE(eventually([&] { return bus.users(chip) == 0; }));
        EXPECT_TRUE(bus.hasTty(chip));
        bus.with([&] {
            EXPECT_THAT(chip.violations, testing::IsEmpty());
            EXPECT_EQ(chip.overruns, 0U);
            EXPECT_TRUE(chip.hasPower());
            const std::vector<usb::Time> losses = chip.powerLosses();
            EXPECT_EQ(losses.size(), powerCycles);
            for (const usb::Time loss : losses) {
                EXPECT_GE(loss, std::chrono::milliseconds(100));
                EXPECT_LT(loss, std::chrono::milliseconds(1000)); // on a busy machine
            }
        });
    }
};

} // namespace corvane
