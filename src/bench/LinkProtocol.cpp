#include "bench/LinkProtocol.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace corvane::bench {

std::optional<Message> MessageReader::next() {
    constexpr std::size_t head = 3; // kind, and the length in two bytes
    if (failed_ || bytes_.empty())
        return std::nullopt;
    Message message;
    message.kind = static_cast<char>(bytes_[0]);
    if (std::string_view("IODRP").find(message.kind) == std::string_view::npos) {
        failed_ = true;
        return std::nullopt;
    }
    if (bytes_.size() < head)
        return std::nullopt;
    const std::size_t end = head + bytes_[1] + bytes_[2] * std::size_t{256};
    failed_ = end - head > LongestMessage;
    if (failed_ || bytes_.size() < end)
        return std::nullopt;
    const auto last = bytes_.begin() + static_cast<std::ptrdiff_t>(end);
    message.payload.assign(bytes_.begin() + head, last);
    bytes_.erase(bytes_.begin(), last);
    return message;
}

void appendMessage(Bytes& target, char kind, ByteView payload) {
    // What is too long for one message goes into several of its kind.
    do {
        const ByteView part = payload.first(std::min(payload.size(), LongestMessage));
        target.push_back(static_cast<std::uint8_t>(kind));
        target.push_back(static_cast<std::uint8_t>(part.size() % 256));
        target.push_back(static_cast<std::uint8_t>(part.size() / 256));
        target.insert(target.end(), part.begin(), part.end());
        payload = payload.subspan(part.size());
    } while (!payload.empty());
}

Bytes packStrings(const LinkStrings& strings) {
    std::string all;
    for (const auto* text : {&strings.description, &strings.manufacturer, &strings.manufacturerId,
                             &strings.serialNumber})
        (all += *text) += '\0';
    return {all.begin(), all.end()};
}

std::optional<LinkStrings> unpackStrings(ByteView payload) {
    std::array<std::string, 4> texts;
    std::size_t text = 0;
    for (const std::uint8_t byte : payload) {
        if (text == texts.size())
            return std::nullopt;
        if (byte == 0)
            ++text;
        else
            texts[text] += static_cast<char>(byte);
    }
    if (text != texts.size())
        return std::nullopt;
    return LinkStrings{texts[0], texts[1], texts[2], texts[3]};
}

} // namespace corvane::bench
