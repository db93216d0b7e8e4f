#include "eeprom/CodePage1252.h"

#include "base/TextLines.h"

#include <algorithm>
#include <array>

namespace corvane {

namespace {

/// The characters of the codes 128 to 159; the others are those of their number.
constexpr std::array<char32_t, 32> upperControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
constexpr char32_t FirstUpper = 0x80;

constexpr std::array<char32_t, 5> unassigned{0x81, 0x8D, 0x8F, 0x90, 0x9D};
constexpr char32_t FirstPicture = 0x2400; // of the control characters from 0
constexpr char32_t DeletePicture = 0x2421;
constexpr char32_t Delete = 0x7F;
constexpr char32_t FirstCircled = 0x2460;

void append(std::string& text, char32_t c) {
    const auto put = [&text](char32_t bits) { text += static_cast<char>(bits); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

/// Takes a character off the front of well-formed UTF-8.
char32_t takeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    char32_t c = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i)
        c = c << 6 | (static_cast<unsigned char>(text[i]) & 0x3F);
    text.remove_prefix(length);
    return c;
}

template<class Map>
std::string mapped(std::string_view text, Map map) {
    if (!IsUtf8(text))
        return std::string(text);
    std::string result;
    while (!text.empty())
        append(result, map(takeCharacter(text)));
    return result;
}

template<class Table>
std::size_t placeIn(const Table& table, char32_t c) {
    return static_cast<std::size_t>(std::find(table.begin(), table.end(), c) - table.begin());
}

} // namespace

std::string CodePage1252::toText(const ByteString& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        const std::size_t upper = byte - FirstUpper;
        append(text, byte >= FirstUpper && upper < upperControls.size() ? upperControls[upper]
                                                                        : char32_t{byte});
    }
    return text;
}

std::optional<ByteString> CodePage1252::fromText(std::string_view text) {
    if (!IsUtf8(text))
        return std::nullopt;
    ByteString bytes;
    while (!text.empty()) {
        const char32_t c = takeCharacter(text);
        const std::size_t upper = placeIn(upperControls, c);
        if (upper < upperControls.size())
            bytes.push_back(static_cast<std::uint8_t>(FirstUpper + upper));
        else if (c < FirstUpper || (c >= FirstUpper + upperControls.size() && c <= 0xFF))
            bytes.push_back(static_cast<std::uint8_t>(c));
        else
            return std::nullopt;
    }
    return bytes;
}

std::string WithVisibleControls(std::string_view text) {
    return mapped(text, [](char32_t c) -> char32_t {
        const std::size_t circled = placeIn(unassigned, c);
        if (circled < unassigned.size())
            return FirstCircled + static_cast<char32_t>(circled);
        return c < ' ' ? FirstPicture + c : c == Delete ? DeletePicture : c;
    });
}

std::string WithControls(std::string_view shown) {
    return mapped(shown, [](char32_t c) -> char32_t {
        if (c >= FirstCircled && c < FirstCircled + unassigned.size())
            return unassigned[c - FirstCircled];
        if (c >= FirstPicture && c < FirstPicture + ' ')
            return c - FirstPicture;
        return c == DeletePicture ? Delete : c;
    });
}

} // namespace corvane
