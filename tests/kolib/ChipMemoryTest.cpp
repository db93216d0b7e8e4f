#include "kolib/devices/ChipMemory.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

const DeviceInfo link{"Corvane", "Ortaline Works", "KO", "KO01234AF"};
const DeviceInfo factory{"FT232R USB UART", "FTDI", "", "A9001234"};

/// A chip as someone may have set it up: low power, inverted lines, other pins, data of his own.
ChipMemory factoryChip() {
    ChipMemory memory{0x04, 0x40, 0x03, 0x04, 0x01, 0x60, 0x00,
                      0x06, 0xA0, 0x19, 0x00, 0x05, 0x00, 0x00};
    memory[0x14] = 0x32;
    memory[0x15] = 0x10;
    memory[0x16] = 0x05;
    memory = *WithStrings(memory, factory);
    std::fill(memory.begin() + 0x70, memory.begin() + 0x7E, std::uint8_t{0xA5});
    return *WithStrings(memory, factory); // for its checksum
}

TEST(ChipMemory, OnlyTheStringsChange) {
    const ChipMemory before = factoryChip();
    const auto after = WithStrings(before, link);
    ASSERT_TRUE(after);
    EXPECT_TRUE(IsSound(*after));
    EXPECT_EQ((*after)[0x0A], 0x08);       // its number shows
    for (std::size_t i = 0; i < 0x7E; ++i) // neither the head nor what someone keeps at the end
        if (i < 0x0E || (i >= 0x14 && i < 0x18) || i >= 0x70) {
            EXPECT_EQ((*after)[i], before[i]) << i;
        }
    EXPECT_EQ(WithStrings(*after, factory), before);
}

TEST(ChipMemory, StringsThatDoNotFitAndMemoriesThatAreBrokenAreKnown) {
    ChipMemory chip = factoryChip();
    EXPECT_TRUE(WithStrings(chip, {std::string(48, 'x'), "", "", ""}));
    EXPECT_FALSE(WithStrings(chip, {std::string(49, 'x'), "", "", ""}));
    EXPECT_FALSE(WithStrings(chip, {"a", "b", "", std::string(300, 'x')}));
    chip[9] ^= 1;
    EXPECT_FALSE(IsSound(chip));
    chip.fill(0xFF); // strings that lie outside are not touched
    EXPECT_FALSE(IsSound(chip));
    EXPECT_TRUE(WithStrings(chip, link));
}

} // namespace
} // namespace corvane
