#pragma once

#include "base/Numbers.h"
#include "base/TextLines.h"

namespace corvane {

/// The first line of a document's file. The changes follow it, a line each.
struct DocumentHead {
    std::string typeCode;
    std::int32_t length = 0;    ///< Changes in all.
    std::int32_t position = 0;  ///< Those that are applied.
    std::int32_t stopPoint = 0; ///< Those that can't be undone.
    std::int32_t version = 0;   ///< Of the format of what wrote it.

    /// Takes the next line. False if there is none or it has too few arguments.
    [[nodiscard]] bool read(KOIOReader& reader) {
        constexpr std::size_t numbers = 4;
        std::vector<std::string> values;
        if (reader.More())
            reader.ReadArray(typeCode, values);
        if (values.size() < numbers)
            return false;
        length = ReadInteger(values[0]);
        position = ReadInteger(values[1]);
        stopPoint = ReadInteger(values[2]);
        version = ReadInteger(values[3]);
        return true;
    }
    /// Appends it. False if no file can hold it.
    [[nodiscard]] bool write(std::string& target) const {
        return KOIOWriter(target).WriteArray(typeCode,
                                             {std::to_string(length), std::to_string(position),
                                              std::to_string(stopPoint), std::to_string(version)});
    }
    /// Whether so many lines behind it can be its changes.
    [[nodiscard]] bool isSound(std::size_t lines) const {
        return position >= 0 && position <= length && static_cast<std::size_t>(length) <= lines;
    }
};

} // namespace corvane
