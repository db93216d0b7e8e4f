#include "bench/LumoraMemory.h"

namespace corvane::bench {

namespace {

constexpr std::uint8_t ProportionalTag = 251;
constexpr std::uint8_t FromTripTag = 252;
constexpr std::uint8_t StateWhole = 64;

/// Where the tables stand in one controller's memory.
struct Layout {
    std::size_t tripLevels;
    std::size_t topStarts; // seven entries
    std::size_t bottomStarts;
    std::size_t hysteresis;
    std::size_t program;
    std::size_t programLength;
    std::size_t defaults;
    std::size_t turnOffLevels;
    std::size_t entrySize; // bytes that one step in the start tables stands for
    bool tags;
};

constexpr Layout imageLayout{0, 6, 13, 19, 25, 214, 239, 245, 1, true};
constexpr Layout tablesLayout{0, 6, 13, 231, BlocksOffset, 2 * BlockCount, 237, 243, 2, false};

std::vector<LightBlock> readTrack(ByteView program, std::size_t at, std::size_t end, bool tags) {
    std::vector<LightBlock> blocks;
    while (at + 1 < end && at + 1 < program.size()) {
        LightBlock block;
        block.hundredths = program[at];
        const std::uint8_t second = program[at + 1];
        if (tags && (second == ProportionalTag || second == FromTripTag)) {
            if (at + 3 >= program.size())
                break;
            block.kind = second == ProportionalTag ? LightBlock::Kind::Proportional
                                                   : LightBlock::Kind::FromTrip;
            block.current = program[at + 2];
            block.current2 = program[at + 3];
            at += 4;
        } else {
            block.current = second;
            at += 2;
        }
        blocks.push_back(block);
    }
    return blocks;
}

LightProgram read(ByteView memory, const Layout& layout) {
    LightProgram channels;
    const ByteView program = memory.subspan(layout.program, layout.programLength);
    for (std::size_t c = 0; c < channels.size(); ++c) {
        LightChannel& channel = channels[c];
        channel.tripLevel = memory[layout.tripLevels + c];
        channel.hysteresis = memory[layout.hysteresis + c];
        channel.turnOffLevel = memory[layout.turnOffLevels + c];
        channel.topWithoutSignal = memory[layout.defaults + c] == 1;
        const std::size_t top = memory[layout.topStarts + c] * layout.entrySize;
        const std::size_t bottom = memory[layout.bottomStarts + c] * layout.entrySize;
        const std::size_t end = memory[layout.topStarts + c + 1] * layout.entrySize;
        channel.top = readTrack(program, top, bottom, layout.tags);
        channel.bottom = readTrack(program, bottom, end, layout.tags);
    }
    return channels;
}

} // namespace

LightProgram readImage(ByteView image) {
    return image.size() < ImageLength ? LightProgram{} : read(image, imageLayout);
}

LightProgram readTables(ByteView tables) {
    if (tables.size() < TablesLength || tables[TablesLength - 1] != StateWhole)
        return {};
    return read(tables, tablesLayout);
}

} // namespace corvane::bench
