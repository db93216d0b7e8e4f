#pragma once

#include "kolib/KODevice.h"

#include <array>
#include <cstdint>
#include <optional>

namespace corvane {

/// What an FT232R keeps in its EEPROM: 64 words, low byte first, the last one a checksum.
using ChipMemory = std::array<std::uint8_t, 128>;

/// Whether the chip takes this for its own; if not it works as if it were blank.
[[nodiscard]] bool IsSound(const ChipMemory& memory);

/// The same with other strings, which the chip then shows, and all else as it was. Of the info the
/// manufacturer ID is not kept. Nothing if the strings do not fit.
[[nodiscard]] std::optional<ChipMemory> WithStrings(const ChipMemory& memory,
                                                    const DeviceInfo& info);

} // namespace corvane
