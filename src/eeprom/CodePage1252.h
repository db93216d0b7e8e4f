#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

using ByteString = std::vector<std::uint8_t>;

/// The code page 1252 between bytes and UTF-8. Its five unassigned codes stand for the control
/// characters of their number, so that every byte goes there and back.
namespace CodePage1252 {

[[nodiscard]] std::string toText(const ByteString& bytes);
/// Nothing if a character has no code, or the text is not UTF-8.
[[nodiscard]] std::optional<ByteString> fromText(std::string_view text);

} // namespace CodePage1252

/// Text that a box shows for it: control characters, which can't be seen, as their pictures, those
/// of the codes 81, 8D, 8F, 90 and 9D as circled numbers from 1 to 5.
[[nodiscard]] std::string WithVisibleControls(std::string_view text);
/// The same back.
[[nodiscard]] std::string WithControls(std::string_view shown);

} // namespace corvane
