#include "kolib/devices/LinkMessages.h"

#include <algorithm>

namespace corvane {

namespace {
constexpr std::size_t MessageHead = 3;
constexpr std::string_view KindsOfALink = "IDP";
} // namespace

std::vector<std::uint8_t> LinkMessages::encode(char kind, std::span<const std::uint8_t> payload) {
    const std::size_t length = std::min(payload.size(), MaxPayload);
    std::vector<std::uint8_t> message;
    message.reserve(MessageHead + length);
    message.push_back(static_cast<std::uint8_t>(kind));
    message.push_back(static_cast<std::uint8_t>(length & 0xFFU));
    message.push_back(static_cast<std::uint8_t>(length >> 8));
    message.insert(message.end(), payload.begin(),
                   payload.begin() + static_cast<std::ptrdiff_t>(length));
    return message;
}

std::vector<std::uint8_t> LinkMessages::encodeStrings(const DeviceInfo& info) {
    std::vector<std::uint8_t> bytes;
    for (const std::string* text :
         {&info.Description, &info.Manufacturer, &info.ManufacturerID, &info.SerialNumber}) {
        const std::string_view upToNul = std::string_view(*text).substr(0, text->find('\0'));
        bytes.insert(bytes.end(), upToNul.begin(), upToNul.end());
        bytes.push_back(0);
    }
    return bytes;
}

std::optional<DeviceInfo> LinkMessages::decodeStrings(std::span<const std::uint8_t> payload) {
    DeviceInfo info;
    auto rest = payload.begin();
    for (std::string* text :
         {&info.Description, &info.Manufacturer, &info.ManufacturerID, &info.SerialNumber}) {
        const auto end = std::find(rest, payload.end(), std::uint8_t{0});
        if (end == payload.end())
            return std::nullopt;
        text->assign(rest, end);
        rest = end + 1;
    }
    if (rest != payload.end())
        return std::nullopt;
    return info;
}

void LinkMessages::feed(std::span<const std::uint8_t> bytes) {
    if (broken_)
        return;
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
}

std::optional<LinkMessage> LinkMessages::next() {
    const auto rest = std::span(buffer_).subspan(start_);
    if (broken_ || rest.empty())
        return std::nullopt;
    const char kind = static_cast<char>(rest[0]);
    broken_ = KindsOfALink.find(kind) == std::string_view::npos;
    if (broken_ || rest.size() < MessageHead)
        return std::nullopt;
    const std::size_t length = rest[1] + (std::size_t{rest[2]} << 8);
    broken_ = length > MaxPayload;
    if (broken_ || rest.size() < MessageHead + length)
        return std::nullopt;
    start_ += MessageHead + length;
    const auto payload = rest.subspan(MessageHead, length);
    return LinkMessage{kind, {payload.begin(), payload.end()}};
}

} // namespace corvane
