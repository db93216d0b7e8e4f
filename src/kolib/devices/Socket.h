#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace corvane {

/// A file descriptor that is closed when this object ends.
class Handle {
  public:
    Handle() = default;
    explicit Handle(int descriptor) : descriptor_(descriptor) {}
    Handle(Handle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] bool valid() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

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
