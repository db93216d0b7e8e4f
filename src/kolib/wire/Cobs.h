#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace corvane::wire {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Consistent overhead byte stuffing: the same data without a single 0 in it. Adds one byte, and
/// one more for each full 254 bytes. No end mark is added.
[[nodiscard]] Bytes cobsEncode(ByteView data);

/// The reverse, or nothing if `encoded` is empty, holds a 0, or ends within a block.
[[nodiscard]] std::optional<Bytes> cobsDecode(ByteView encoded);

} // namespace corvane::wire
