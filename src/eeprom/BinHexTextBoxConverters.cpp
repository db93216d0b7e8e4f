#include "eeprom/BinHexTextBoxConverters.h"

#include "base/Assert.h"
#include "base/NumberWithin.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr std::size_t BitsPerByte = 8;
constexpr std::string_view HexDigits = "0123456789ABCDEF";

bool only(std::string_view text, std::string_view allowed) {
    return text.find_first_not_of(allowed) == std::string_view::npos;
}

std::uint8_t number(std::string_view digits, int base) {
    unsigned value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    return static_cast<std::uint8_t>(value);
}

ByteString ofGroups(std::string_view text, std::size_t digits, int base) {
    ByteString bytes;
    bytes.reserve(text.size() / digits + 1);
    for (; !text.empty(); text.remove_prefix(std::min(digits, text.size())))
        bytes.push_back(number(text.substr(0, digits), base));
    return bytes;
}

/// The next word between blanks; empty at the end.
std::string_view takeWord(std::string_view& text) {
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t end = std::min(text.find(' ', start), text.size());
    const std::string_view word = text.substr(start, end - start);
    text.remove_prefix(end);
    return word;
}

} // namespace

std::string BinHexTextBoxASCIIConverter::FromBytes(const ByteString& bytes) const {
    return CodePage1252::toText(bytes);
}

ByteString BinHexTextBoxASCIIConverter::ToBytes(std::string_view text) const {
    std::optional<ByteString> bytes = CodePage1252::fromText(text);
    Assert(bytes.has_value());
    return std::move(*bytes);
}

bool BinHexTextBoxASCIIConverter::IsValid(std::string_view text) const {
    return CodePage1252::fromText(text).has_value();
}

std::string BinHexTextBoxBinaryConverter::FromBytes(const ByteString& bytes) const {
    std::string text;
    for (const std::uint8_t byte : bytes)
        for (int bit = BitsPerByte - 1; bit >= 0; --bit)
            text += (byte >> bit & 1) != 0 ? '1' : '0';
    if (bytes.size() == 1)
        text.erase(0, std::min(text.find('1'), text.size()));
    return text;
}

ByteString BinHexTextBoxBinaryConverter::ToBytes(std::string_view text) const {
    return ofGroups(text, BitsPerByte, 2);
}

bool BinHexTextBoxBinaryConverter::IsValid(std::string_view text) const {
    return only(text, "01") && (text.size() < BitsPerByte || text.size() % BitsPerByte == 0);
}

std::string BinHexTextBoxHexConverter::FromBytes(const ByteString& bytes) const {
    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        text += HexDigits[byte / HexDigits.size()];
        text += HexDigits[byte % HexDigits.size()];
    }
    return text;
}

ByteString BinHexTextBoxHexConverter::ToBytes(std::string_view text) const {
    return ofGroups(text, 2, 16);
}

bool BinHexTextBoxHexConverter::IsValid(std::string_view text) const {
    return only(text, "0123456789abcdefABCDEF") && text.size() % 2 == 0;
}

std::string BinHexTextBoxUInt8Converter::FromBytes(const ByteString& bytes) const {
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + std::to_string(byte);
    return text;
}

ByteString BinHexTextBoxUInt8Converter::ToBytes(std::string_view text) const {
    ByteString bytes;
    for (std::string_view word = takeWord(text); !word.empty(); word = takeWord(text))
        bytes.push_back(number(word, 10));
    return bytes;
}

bool BinHexTextBoxUInt8Converter::IsValid(std::string_view text) const {
    constexpr std::size_t mostDigits = 3;
    if (!only(text, "0123456789 "))
        return false;
    for (std::string_view word = takeWord(text); !word.empty(); word = takeWord(text))
        if (word.size() > mostDigits || !NumberWithin<int>(word, 0, 255))
            return false;
    return true;
}

const std::array<std::unique_ptr<const IBinHexTextBoxConverter>, 4>& Converters() {
    static const std::array<std::unique_ptr<const IBinHexTextBoxConverter>, 4> all{
        std::make_unique<BinHexTextBoxASCIIConverter>(),
        std::make_unique<BinHexTextBoxBinaryConverter>(),
        std::make_unique<BinHexTextBoxHexConverter>(),
        std::make_unique<BinHexTextBoxUInt8Converter>()};
    return all;
}

const IBinHexTextBoxConverter* FindConverter(std::string_view name) {
    if (name.empty())
        return Converters().back().get();
    const auto& all = Converters();
    const auto found = std::find_if(all.begin(), all.end(), [name](const auto& converter) {
        return converter->Name() == name;
    });
    return found == all.end() ? nullptr : found->get();
}

} // namespace corvane
