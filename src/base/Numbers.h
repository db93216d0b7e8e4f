#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

/// The number at the start of a text, as a person or another program may have written it: blanks,
/// tabs and line feeds are passed over wherever they stand, and the longest decimal number counts,
/// a point and an exponent included. 0 if there is none; never infinite.
[[nodiscard]] double ReadNumber(std::string_view text);

/// The same, rounded to the nearest integer, ties to even.
[[nodiscard]] std::int32_t ReadInteger(std::string_view text);

/// Decimal text with up to 15 significant digits, no trailing zeros and no digit before the point
/// below 1, such as ".05" and "2.5".
[[nodiscard]] std::string WriteNumber(double value);

/// So many digits behind the point, up to 15, such as "0.05".
[[nodiscard]] std::string WriteFixed(double value, int decimals);

/// The hexadecimal number at the start of a text, at most its last 32 bits; 0 if there is none.
[[nodiscard]] std::uint32_t ReadHexadecimal(std::string_view text);
/// Capitals, no prefix, no leading zeros.
[[nodiscard]] std::string WriteHexadecimal(std::uint32_t value);

} // namespace corvane
