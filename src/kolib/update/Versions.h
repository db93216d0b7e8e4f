#pragma once

#include <optional>
#include <string_view>

namespace corvane {

/// Whether a version text, up to four numbers with points between them, is higher than another.
/// Nothing if one of them is no version.
[[nodiscard]] std::optional<bool> IsNewer(std::string_view version, std::string_view than);

} // namespace corvane
