#include "base/KODebug.h"

namespace corvane {

void KODebug::DebugWriteBytes(std::string_view prefix, std::span<const std::uint8_t> bytes) const {
    if (enabled() && !bytes.empty())
        DebugWriteLine(std::string(prefix) + DecimalBytes(bytes));
}

std::string DecimalBytes(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size() * 4);
    for (const std::uint8_t byte : bytes) {
        if (!text.empty())
            text += ' ';
        text += std::to_string(byte);
    }
    return text;
}

} // namespace corvane
