#include "apps/support/SafeOutput.h"

#include <cstdint>

namespace corvane {

namespace {

constexpr const char* Digits = "0123456789ABCDEF";
constexpr std::uint32_t FirstPrintable = 0x20;
constexpr std::uint32_t Delete = 0x7F;

/// Length of the UTF-8 character that begins with this byte; 0 for none.
std::size_t lengthOf(unsigned char first) {
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF)
        return 2;
    if (first >= 0xE0 && first <= 0xEF)
        return 3;
    return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

std::uint32_t valueOf(const std::string& character) {
    const auto first = static_cast<unsigned char>(character[0]);
    std::uint32_t value = character.size() == 1 ? first : first & (0x7FU >> character.size());
    for (std::size_t i = 1; i < character.size(); ++i)
        value = (value << 6) | (static_cast<unsigned char>(character[i]) & 0x3FU);
    return value;
}

bool isPrintable(const std::string& character) {
    constexpr std::uint32_t shortest[] = {0, 0, 0x80, 0x800, 0x10000};
    const std::uint32_t value = valueOf(character);
    const auto within = [value](std::uint32_t low, std::uint32_t high) {
        return value >= low && value <= high;
    };
    return value == '\n' || value == '\t' ||
           (value >= FirstPrintable && value >= shortest[character.size()] && value <= 0x10FFFF &&
            !within(Delete, 0x9F) && !within(0xD800, 0xDFFF) &&
            // What changes the direction of the text behind it.
            !within(0x200E, 0x200F) && !within(0x202A, 0x202E) && !within(0x2066, 0x2069));
}

std::string hexadecimal(unsigned char byte) {
    return {'\\', 'x', Digits[byte >> 4U], Digits[byte & 0xFU]};
}

} // namespace

std::string InOneField(const std::string& text) {
    std::string field;
    for (const char c : text)
        field +=
            c == '\n' || c == '\t' ? hexadecimal(static_cast<unsigned char>(c)) : std::string(1, c);
    return field;
}

SafeOutput::~SafeOutput() {
    SafeOutput::sync();
    stream_.rdbuf(target_);
}

SafeOutput::int_type SafeOutput::overflow(int_type character) {
    if (!traits_type::eq_int_type(character, traits_type::eof()))
        take(static_cast<unsigned char>(traits_type::to_char_type(character)));
    return traits_type::not_eof(character);
}

int SafeOutput::sync() {
    escape();
    return target_->pubsync();
}

void SafeOutput::take(unsigned char byte) {
    const bool continues = (byte & 0xC0U) == 0x80;
    if (!begun_.empty() && !continues)
        escape();
    if (begun_.empty())
        length_ = lengthOf(byte);
    begun_ += static_cast<char>(byte);
    if (length_ == 0)
        escape();
    else if (begun_.size() == length_)
        endCharacter();
}

void SafeOutput::endCharacter() {
    if (!isPrintable(begun_))
        return escape();
    target_->sputn(begun_.data(), static_cast<std::streamsize>(begun_.size()));
    begun_.clear();
}

void SafeOutput::escape() {
    for (const char c : begun_) {
        const std::string text = hexadecimal(static_cast<unsigned char>(c));
        target_->sputn(text.data(), static_cast<std::streamsize>(text.size()));
    }
    begun_.clear();
}

} // namespace corvane
