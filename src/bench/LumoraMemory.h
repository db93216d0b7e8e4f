#pragma once

#include "bench/FaultyLine.h"

#include <array>

namespace corvane::bench {

/// One step of a light program as the controller reads it from its own memory.
struct LightBlock {
    enum class Kind { Plain, Proportional, FromTrip };
    Kind kind = Kind::Plain;
    int hundredths = 0; ///< How long it lasts, 1 to 255 hundredths of a second.
    int current = 0;    ///< mA; with a function at the top of the range.
    int current2 = 0;   ///< mA at the bottom of the range.
};

/// What a light controller's memory says of one channel.
struct LightChannel {
    int tripLevel = 0; ///< 0 to 255, like all levels.
    int hysteresis = 0;
    int turnOffLevel = 0;
    bool topWithoutSignal = false;
    std::vector<LightBlock> top;
    std::vector<LightBlock> bottom;
};

using LightProgram = std::array<LightChannel, 6>;

/// Length of the newer controller's image, and of the older one's tables as it keeps them.
inline constexpr std::size_t ImageLength = 255;
inline constexpr std::size_t TablesLength = 250;

/// Reads the newer controller's image. Tables that lead nowhere give tracks without blocks.
[[nodiscard]] LightProgram readImage(ByteView image);
/// Reads the older controller's tables; all tracks are empty while the program state says that
/// they are not whole.
[[nodiscard]] LightProgram readTables(ByteView tables);

/// Where the older controller keeps each kind of table: kind, place and length.
struct TablePlace {
    std::uint8_t kind;
    std::size_t offset;
    std::size_t length;
    std::uint8_t dumpChannel; ///< 0 if it is not part of a dump.
};
inline constexpr std::size_t BlocksOffset = 19;
inline constexpr std::size_t BlockCount = 106;
inline constexpr std::uint8_t BlocksKind = 5;
inline constexpr std::array tablePlaces{
    TablePlace{1, 0, 6, 25},   TablePlace{3, 6, 7, 26},
    TablePlace{4, 13, 6, 27},  TablePlace{BlocksKind, BlocksOffset, 2 * BlockCount, 28},
    TablePlace{2, 231, 6, 29}, TablePlace{7, 237, 6, 30},
    TablePlace{8, 243, 6, 31}, TablePlace{6, 249, 1, 0}};

} // namespace corvane::bench
