#include "base/Numbers.h"

#include "base/KOMath.h"

#include <array>
#include <charconv>
#include <limits>

namespace corvane {

namespace {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Hands out a text's characters without its blanks.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) { skipBlanks(); }

    [[nodiscard]] char peek() const { return text_.empty() ? '\0' : text_.front(); }
    void advance() {
        text_.remove_prefix(1);
        skipBlanks();
    }
    /// Appends the digits that follow, and tells whether there was one.
    bool takeDigits(std::string& target) {
        bool any = false;
        for (; isDigit(peek()); advance(), any = true)
            target += peek();
        return any;
    }

  private:
    void skipBlanks() {
        while (!text_.empty() && (peek() == ' ' || peek() == '\t' || peek() == '\n'))
            text_.remove_prefix(1);
    }

    std::string_view text_;
};

bool takeSign(Scanner& scanner, std::string& target) {
    const char sign = scanner.peek();
    if (sign != '+' && sign != '-')
        return false;
    if (sign == '-')
        target += sign;
    scanner.advance();
    return sign == '-';
}

/// The exponent that follows, or nothing if what follows is none.
std::string exponentOf(Scanner scanner) {
    std::string exponent;
    if (scanner.peek() != 'e' && scanner.peek() != 'E')
        return exponent;
    scanner.advance();
    exponent = "e";
    takeSign(scanner, exponent);
    return scanner.takeDigits(exponent) ? exponent : std::string();
}

/// With a point, whatever the person's language has.
std::string written(double value, std::chars_format format, int precision) {
    constexpr std::size_t longest = 400; // of a double's digits, and some decimals
    std::array<char, longest> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format, precision).ptr;
    return {buffer.data(), end};
}

} // namespace

double ReadNumber(std::string_view text) {
    Scanner scanner(text);
    std::string digits;
    const bool negative = takeSign(scanner, digits);
    bool any = scanner.takeDigits(digits);
    if (scanner.peek() == '.') {
        scanner.advance();
        digits += '.';
        any = scanner.takeDigits(digits) || any;
    }
    if (!any)
        return 0;
    digits += exponentOf(scanner);
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range) {
        if (digits.find("e-") != std::string::npos || digits.find_first_of("123456789") > 300)
            return 0;
        return negative ? std::numeric_limits<double>::lowest()
                        : std::numeric_limits<double>::max();
    }
    return value;
}

std::int32_t ReadInteger(std::string_view text) {
    // Nearly always a plain short number.
    if (!text.empty() && text.size() < 9) {
        std::int32_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error == std::errc() && end == text.data() + text.size())
            return value;
    }
    return RoundToInteger(ReadNumber(text));
}

std::string WriteNumber(double value) {
    std::string text = written(value, std::chars_format::general, 15);
    const std::size_t start = text.front() == '-' ? 1 : 0;
    if (text.compare(start, 2, "0.") == 0)
        text.erase(start, 1);
    return text == "-0" ? "0" : text;
}

std::string WriteFixed(double value, int decimals) {
    return written(value, std::chars_format::fixed, decimals);
}

std::uint32_t ReadHexadecimal(std::string_view text) {
    std::uint32_t value = 0;
    for (const char c : text) {
        const std::size_t digit = std::string_view("0123456789abcdef0123456789ABCDEF").find(c);
        if (digit == std::string_view::npos)
            break;
        value = (value << 4U) | static_cast<std::uint32_t>(digit % 16);
    }
    return value;
}

std::string WriteHexadecimal(std::uint32_t value) {
    std::string text;
    for (; value != 0 || text.empty(); value >>= 4U)
        text.insert(text.begin(), "0123456789ABCDEF"[value % 16]);
    return text;
}

} // namespace corvane
