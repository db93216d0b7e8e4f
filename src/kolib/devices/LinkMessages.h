#pragma once

#include "kolib/KODevice.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// A message on the socket of a virtual link.
struct LinkMessage {
    char kind = 0;
    std::vector<std::uint8_t> payload;
};

/// The computer's side of the messages of a virtual link: kind (1 byte), length (2, low byte
/// first), that many bytes.
class LinkMessages {
  public:
    static constexpr std::size_t MaxPayload = 4096;

    [[nodiscard]] static std::vector<std::uint8_t> encode(char kind,
                                                          std::span<const std::uint8_t> payload);
    /// The four strings, each ended by a NUL. A NUL within a string ends it early.
    [[nodiscard]] static std::vector<std::uint8_t> encodeStrings(const DeviceInfo& info);
    /// Nothing unless there are exactly four ended strings.
    [[nodiscard]] static std::optional<DeviceInfo>
    decodeStrings(std::span<const std::uint8_t> payload);

    void feed(std::span<const std::uint8_t> bytes);
    /// The next whole message. Nothing while it is not whole, or once the stream is broken.
    [[nodiscard]] std::optional<LinkMessage> next();
    /// A message was too long or of a kind that no link sends; the connection must be closed.
    [[nodiscard]] bool broken() const { return broken_; }

  private:
    std::vector<std::uint8_t> buffer_;
    std::size_t start_ = 0;
    bool broken_ = false;
};

} // namespace corvane
