#pragma once

#include "bench/Eeprom.h"

#include <memory>
#include <string_view>

namespace corvane::bench {

/// The strings in the EEPROM of a link device.
struct LinkStrings {
    std::string description;
    std::string manufacturer;
    std::string manufacturerId;
    std::string serialNumber;

    bool operator==(const LinkStrings&) const = default;
};

/// How a bench is set up.
struct Setup {
    std::uint8_t firmwareMajor = 3;
    std::uint8_t firmwareMinor = 7;
    std::filesystem::path eepromFile = {}; ///< Empty for a memory that is forgotten at the end.
    std::size_t eepromSize = 256;          ///< Of the product "eeprom", 1 to 65536 bytes.
    std::string misbehaviour = {};         ///< Of a quillon or eeprom, as its firmware reads it.
    Time writeTime = std::chrono::milliseconds(4); ///< Of one EEPROM byte.
    int stick = 50;                                ///< Percent of the transmitter's range.
    bool signal = true;                            ///< The transmitter is heard.
};

/// A link device and what hangs on it.
struct Bench {
    LinkStrings strings;
    std::unique_ptr<Firmware> firmware; ///< Nothing for a link with no product.
};

/// What a bench can stand for, in the order of the help text.
[[nodiscard]] const std::vector<std::string_view>& productNames();

/// Nothing if the name is unknown. A memory file that can't be used is told in `error`.
[[nodiscard]] std::optional<Bench> makeBench(std::string_view product, const Setup& setup,
                                             std::string& error);

} // namespace corvane::bench
