#pragma once

#include "bench/Products.h"

namespace corvane::bench {

/// One message from the computer, and what can be said in return.
struct Message {
    char kind = 0;
    Bytes payload;
};

inline constexpr std::size_t LongestMessage = 4096;

/// Takes messages out of the bytes of one connection.
class MessageReader {
  public:
    void feed(ByteView bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    /// The next whole message, or nothing.
    [[nodiscard]] std::optional<Message> next();
    /// A message was too long or unknown: the connection is to be closed.
    [[nodiscard]] bool failed() const { return failed_; }

  private:
    Bytes bytes_;
    bool failed_ = false;
};

void appendMessage(Bytes& target, char kind, ByteView payload);
[[nodiscard]] Bytes packStrings(const LinkStrings& strings);
[[nodiscard]] std::optional<LinkStrings> unpackStrings(ByteView payload);

} // namespace corvane::bench
