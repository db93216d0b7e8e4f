#pragma once

#include <array>
#include <cstdlib>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace corvane {

/// Another process at the end of a socket, which answers so many bytes with so many.
class BareSocket {
  public:
    BareSocket(std::size_t request, std::size_t reply) : request_(request), reply_(reply) {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
            std::abort();
        child_ = ::fork();
        descriptor_ = ends[child_ == 0 ? 1 : 0];
        ::close(ends[child_ == 0 ? 0 : 1]);
        while (child_ == 0) {
            if (!receive(request_.size()) || !send(reply_))
                ::_exit(0);
        }
    }
    ~BareSocket() {
        ::close(descriptor_);
        ::waitpid(child_, nullptr, 0);
    }
    BareSocket(const BareSocket&) = delete;
    BareSocket& operator=(const BareSocket&) = delete;

    void round() {
        if (!send(request_) || !receive(reply_.size()))
            std::abort();
    }

  private:
    [[nodiscard]] bool send(const std::vector<char>& bytes) const {
        return ::write(descriptor_, bytes.data(), bytes.size()) ==
               static_cast<ssize_t>(bytes.size());
    }
    [[nodiscard]] bool receive(std::size_t count) const {
        std::array<char, 4096> buffer;
        while (count > 0) {
            pollfd descriptor{descriptor_, POLLIN, 0};
            ::poll(&descriptor, 1, -1);
            const ssize_t got = ::read(descriptor_, buffer.data(), std::min(count, buffer.size()));
            if (got <= 0)
                return false;
            count -= static_cast<std::size_t>(got);
        }
        return true;
    }

    std::vector<char> request_;
    std::vector<char> reply_;
    int descriptor_ = -1;
    pid_t child_ = -1;
};

} // namespace corvane
