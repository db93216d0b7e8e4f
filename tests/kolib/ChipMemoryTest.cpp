// What we make of a chip's memory, read by the library that others read chips with.
#include "kolib/devices/ChipMemory.h"

#include <ftdi.h>
#include <gtest/gtest.h>

namespace corvane {
namespace {

const DeviceInfo link{"Corvane", "Ortaline Works", "KO", "KO01234AF"};

/// A chip as someone may have set it up: low power, inverted lines, other pins, data of his own.
ChipMemory factoryChip() {
    ChipMemory memory{0x04, 0x40, 0x03, 0x04, 0x01, 0x60, 0x00,
                      0x06, 0xA0, 0x19, 0x00, 0x05, 0x00, 0x00};
    memory[0x14] = 0x32;
    memory[0x15] = 0x10;
    memory[0x16] = 0x05;
    const ChipMemory named = *WithStrings(memory, {"FT232R USB UART", "FTDI", "", "A9001234"});
    memory = named;
    for (std::size_t i = 0x70; i < 0x7E; ++i)
        memory[i] = 0xA5;
    return *WithStrings(memory, {"FT232R USB UART", "FTDI", "", "A9001234"}); // for its checksum
}

/// The library's view of a chip, without one.
class Library {
  public:
    explicit Library(ChipMemory memory) {
        context_->type = TYPE_R;
        // It sets itself up for the type only if it believes that a chip is open.
        context_->usb_dev = reinterpret_cast<libusb_device_handle*>(context_);
        ftdi_eeprom_initdefaults(context_, nullptr, nullptr, nullptr);
        context_->usb_dev = nullptr;
        ftdi_set_eeprom_buf(context_, memory.data(), static_cast<int>(memory.size()));
        sound = ftdi_eeprom_decode(context_, 0) == 0;
    }
    ~Library() { ftdi_free(context_); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    [[nodiscard]] int value(ftdi_eeprom_value which) const {
        int result = -1;
        ftdi_get_eeprom_value(context_, which, &result);
        return result;
    }
    [[nodiscard]] std::string strings() const {
        char manufacturer[128] = "";
        char product[128] = "";
        char serial[128] = "";
        ftdi_eeprom_get_strings(context_, manufacturer, 128, product, 128, serial, 128);
        return std::string(manufacturer) + "|" + product + "|" + serial;
    }
    bool sound = false;

  private:
    ftdi_context* context_ = ftdi_new();
};

TEST(ChipMemory, OnlyTheStringsChange) {
    const ChipMemory before = factoryChip();
    const Library old(before);
    ASSERT_TRUE(old.sound);
    EXPECT_EQ(old.strings(), "FTDI|FT232R USB UART|A9001234");

    const auto after = WithStrings(before, link);
    ASSERT_TRUE(after);
    EXPECT_TRUE(IsSound(*after));
    const Library changed(*after);
    EXPECT_TRUE(changed.sound);
    EXPECT_EQ(changed.strings(), "Ortaline Works|Corvane|KO01234AF");
    EXPECT_EQ(changed.value(USE_SERIAL), 1);
    for (const ftdi_eeprom_value which :
         {VENDOR_ID, PRODUCT_ID, SELF_POWERED, REMOTE_WAKEUP, MAX_POWER, INVERT, CBUS_FUNCTION_0,
          CBUS_FUNCTION_1, CBUS_FUNCTION_2, CBUS_FUNCTION_3, CBUS_FUNCTION_4, HIGH_CURRENT})
        EXPECT_EQ(changed.value(which), old.value(which)) << which;
    for (std::size_t i = 0; i < 0x7E; ++i) // neither the head nor what someone keeps at the end
        if (i < 0x0E || (i >= 0x14 && i < 0x18) || i >= 0x70) {
            EXPECT_EQ((*after)[i], before[i]) << i;
        }
    EXPECT_EQ(WithStrings(*after, {"FT232R USB UART", "FTDI", "", "A9001234"}), before);
}

TEST(ChipMemory, StringsThatDoNotFitAreRefused) {
    const ChipMemory chip = factoryChip();
    EXPECT_TRUE(WithStrings(chip, {std::string(48, 'x'), "", "", ""}));
    EXPECT_FALSE(WithStrings(chip, {std::string(49, 'x'), "", "", ""}));
    EXPECT_FALSE(WithStrings(chip, {"a", "b", "", std::string(300, 'x')}));
}

TEST(ChipMemory, ABlankOrBrokenOneIsNotSound) {
    ChipMemory chip = factoryChip();
    chip[9] ^= 1;
    EXPECT_FALSE(IsSound(chip));
    chip.fill(0xFF);
    EXPECT_FALSE(IsSound(chip));
    chip[0x0E] = 0xFF; // strings that lie outside are not touched
    EXPECT_TRUE(WithStrings(chip, link));
}

} // namespace
} // namespace corvane
