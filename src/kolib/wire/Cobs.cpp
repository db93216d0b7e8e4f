#include "kolib/wire/Cobs.h"

#include <algorithm>

namespace corvane::wire {

namespace {
constexpr std::size_t MaxRun = 254; // data bytes in one block
}

Bytes cobsEncode(ByteView data) {
    Bytes out;
    out.reserve(data.size() + data.size() / MaxRun + 1);
    // A block is a code byte, 1 more than the data bytes behind it. Every block but a full one
    // stands for a 0 behind its data, except at the very end.
    std::size_t position = 0;
    for (;;) {
        const ByteView rest = data.subspan(position);
        const auto zero = std::find(rest.begin(), rest.end(), std::uint8_t{0});
        const auto run =
            std::min<std::size_t>(static_cast<std::size_t>(zero - rest.begin()), MaxRun);
        out.push_back(static_cast<std::uint8_t>(run + 1));
        out.insert(out.end(), rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(run));
        position += run;
        if (position == data.size())
            return out;
        if (run < MaxRun)
            ++position; // the 0 itself
    }
}

std::optional<Bytes> cobsDecode(ByteView encoded) {
    if (encoded.empty())
        return std::nullopt;
    Bytes out;
    out.reserve(encoded.size());
    std::size_t position = 0;
    while (position < encoded.size()) {
        const std::size_t run = encoded[position] - std::size_t{1};
        ++position;
        if (encoded[position - 1] == 0 || run > encoded.size() - position)
            return std::nullopt;
        const ByteView block = encoded.subspan(position, run);
        if (std::find(block.begin(), block.end(), std::uint8_t{0}) != block.end())
            return std::nullopt;
        out.insert(out.end(), block.begin(), block.end());
        position += run;
        if (run < MaxRun && position < encoded.size())
            out.push_back(0);
    }
    return out;
}

} // namespace corvane::wire
