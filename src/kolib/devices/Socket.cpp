#include "kolib/devices/Socket.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace corvane {

namespace {
constexpr std::size_t WaitingLimit = 65536; // bytes
constexpr bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}
} // namespace

Socket::Socket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    Handle handle(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!handle.valid())
        return;
    // NOLINTNEXTLINE(*-reinterpret-cast): the socket interface asks for it
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (::connect(handle.get(), generic, sizeof address) == 0)
        handle_ = std::move(handle);
}

std::size_t Socket::receive(std::span<std::uint8_t> target) {
    if (!connected())
        return 0;
    if (!waiting_.empty())
        flush();
    const ssize_t count = ::recv(handle_.get(), target.data(), target.size(), MSG_DONTWAIT);
    if (count > 0)
        return static_cast<std::size_t>(count);
    closed_ = count == 0 || !wouldBlock(errno);
    return 0;
}

void Socket::send(std::span<const std::uint8_t> bytes) {
    if (!connected() || waiting_.size() + bytes.size() > WaitingLimit)
        return;
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
    flush();
}

bool Socket::waitForData(int milliseconds) const {
    pollfd descriptor{handle_.get(), POLLIN, 0};
    return connected() && ::poll(&descriptor, 1, milliseconds) > 0;
}

void Socket::flush() {
    const ssize_t count =
        ::send(handle_.get(), waiting_.data(), waiting_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0)
        waiting_.erase(waiting_.begin(), waiting_.begin() + count);
    else if (count < 0 && !wouldBlock(errno))
        closed_ = true;
}

} // namespace corvane
