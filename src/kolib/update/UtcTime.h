#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// Reads "2026-12-01T00:00:00Z" as seconds since 1970. Nothing for any other form, and for a day or
/// an hour that there is not.
[[nodiscard]] std::optional<std::int64_t> ReadUtc(std::string_view text);
/// The same form for seconds since 1970, up to the year 9999.
[[nodiscard]] std::string WriteUtc(std::int64_t seconds);
/// What this machine's clock says, in seconds since 1970.
[[nodiscard]] std::int64_t UtcNow();

} // namespace corvane
