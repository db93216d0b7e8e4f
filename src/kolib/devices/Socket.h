#pragma once

#include "base/Handle.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace corvane {

/// A connection to a local stream socket that never blocks. What can't be sent at once waits, up
/// to a limit; past that it is lost, as on a line that nobody reads.
class Socket {
  public:
    Socket() = default;
    /// Not connected if nobody listens at the path.
    explicit Socket(const std::string& path);

    [[nodiscard]] bool connected() const { return handle_.valid() && !closed_; }
    [[nodiscard]] int descriptor() const { return handle_.get(); }
    /// What has arrived, perhaps nothing. Notices the other end's closing.
    [[nodiscard]] std::size_t receive(std::span<std::uint8_t> target);
    void send(std::span<const std::uint8_t> bytes);
    /// Waits for something to read, at most this long. True if there is something.
    [[nodiscard]] bool waitForData(int milliseconds) const;

  private:
    void flush();

    Handle handle_;
    bool closed_ = false;
    std::vector<std::uint8_t> waiting_;
};

} // namespace corvane
