#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace corvane {

/// A number that is the whole of `text`, with a point for decimals in any locale; nothing if it is
/// anything else, or outside `lowest` to `highest`.
template<class Number>
[[nodiscard]] std::optional<Number> NumberWithin(std::string_view text, Number lowest,
                                                 Number highest) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !(value >= lowest) ||
        !(value <= highest))
        return std::nullopt;
    return value;
}

} // namespace corvane
