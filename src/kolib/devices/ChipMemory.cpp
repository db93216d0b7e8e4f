#include "kolib/devices/ChipMemory.h"

#include <algorithm>
#include <string>

namespace corvane {

namespace {

constexpr std::size_t ConfigurationByte = 0x0A;
constexpr std::uint8_t ShowsSerialNumber = 0x08;
// Where the places of the three strings stand: offset and length in bytes.
constexpr std::array<std::size_t, 3> Places{0x0E, 0x10, 0x12};
constexpr std::size_t FirstByte = 0x18; // of the room for strings
constexpr std::size_t Checksum = 0x7E;  // and with it the end of that room
constexpr std::uint8_t OffsetMask = 0x7F;
constexpr std::uint8_t InMemory = 0x80; // mark of an offset
constexpr std::uint8_t StringDescriptor = 3;
constexpr std::size_t HeadLength = 2;

std::uint16_t checksumOf(const ChipMemory& memory) {
    std::uint16_t sum = 0xAAAA;
    for (std::size_t i = 0; i < Checksum; i += 2) {
        sum = static_cast<std::uint16_t>(sum ^ (memory[i] | memory[i + 1] << 8));
        sum = static_cast<std::uint16_t>(sum << 1 | sum >> 15);
    }
    return sum;
}

void clearString(ChipMemory& memory, std::size_t place) {
    const std::size_t from = memory[place] & OffsetMask;
    const std::size_t end = std::min<std::size_t>(from + memory[place + 1], Checksum);
    for (std::size_t i = std::max(from, FirstByte); i < end; ++i)
        memory[i] = 0;
}

} // namespace

bool IsSound(const ChipMemory& memory) {
    return checksumOf(memory) == (memory[Checksum] | memory[Checksum + 1] << 8);
}

std::optional<ChipMemory> WithStrings(const ChipMemory& memory, const DeviceInfo& info) {
    ChipMemory changed = memory;
    for (const std::size_t place : Places)
        clearString(changed, place);
    std::size_t at = FirstByte;
    const std::array<const std::string*, 3> texts{&info.Manufacturer, &info.Description,
                                                  &info.SerialNumber};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::size_t length = HeadLength + 2 * texts[i]->size();
        if (at + length > Checksum)
            return std::nullopt;
        changed[Places[i]] = static_cast<std::uint8_t>(at | InMemory);
        changed[Places[i] + 1] = static_cast<std::uint8_t>(length);
        changed[at++] = static_cast<std::uint8_t>(length);
        changed[at++] = StringDescriptor;
        for (const char c : *texts[i]) {
            changed[at++] = static_cast<std::uint8_t>(c);
            changed[at++] = 0;
        }
    }
    changed[ConfigurationByte] |= ShowsSerialNumber;
    const std::uint16_t sum = checksumOf(changed);
    changed[Checksum] = static_cast<std::uint8_t>(sum & 0xFFU);
    changed[Checksum + 1] = static_cast<std::uint8_t>(sum >> 8);
    return changed;
}

} // namespace corvane
