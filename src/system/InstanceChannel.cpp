#include "system/InstanceChannel.h"

#include "base/PrivateFolder.h"
#include "system/UserFolders.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int Backlog = 64;
constexpr auto TransferTime = milliseconds(1000); // for a whole record
constexpr std::size_t HeadLength = 8;             // two numbers of 32 bits, low byte first
constexpr std::size_t MostCallers = 64;           // that have not sent all they want to

using Head = std::array<std::uint8_t, HeadLength>;

void putNumber(Head& head, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i)
        head[at + i] = static_cast<std::uint8_t>(number >> (8 * i));
}

std::uint32_t numberIn(const Head& head, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number |= static_cast<std::uint32_t>(head[at + i]) << (8 * i);
    return number;
}

Head headOf(const std::string& bytes) {
    Head head{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), HeadLength), head.begin());
    return head;
}

/// By way of the open folder, since the path of a socket may only be about a hundred bytes long.
sockaddr_un markIn(const Handle& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path =
        "/proc/self/fd/" + std::to_string(folder.get()) + "/" + InstanceChannel::MarkName;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

const sockaddr* generic(const sockaddr_un& address) {
    // NOLINTNEXTLINE(*-reinterpret-cast): the socket interface asks for it
    return reinterpret_cast<const sockaddr*>(&address);
}

bool isOwnUser(const Handle& peer) {
    ucred who{};
    socklen_t length = sizeof who;
    return ::getsockopt(peer.get(), SOL_SOCKET, SO_PEERCRED, &who, &length) == 0 &&
           who.uid == ::geteuid();
}

void watch(const Handle& events, const Handle& socket) {
    epoll_event readable{};
    readable.events = EPOLLIN;
    ::epoll_ctl(events.get(), EPOLL_CTL_ADD, socket.get(), &readable);
}

std::uint64_t fileNumber(const Handle& folder, const char* name) {
    struct stat status {};
    return ::fstatat(folder.get(), name, &status, AT_SYMLINK_NOFOLLOW) == 0 ? status.st_ino : 0;
}

/// Moves bytes by `step`, which is given how many are done, until all are or time is up.
template<class Step>
bool transfer(const Handle& socket, short event, std::size_t size, Step step) {
    const auto end = steady_clock::now() + TransferTime;
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = step(done);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
            continue;
        }
        const auto left =
            std::chrono::duration_cast<milliseconds>(end - steady_clock::now()).count();
        pollfd descriptor{socket.get(), event, 0};
        if (count == 0 || (errno != EAGAIN && errno != EINTR) || left <= 0 ||
            ::poll(&descriptor, 1, static_cast<int>(left)) < 0)
            return false;
    }
    return true;
}

bool sendAll(const Handle& socket, const void* bytes, std::size_t size) {
    const auto* from = static_cast<const char*>(bytes);
    return transfer(socket, POLLOUT, size, [&](std::size_t done) {
        return ::send(socket.get(), from + done, size - done, MSG_NOSIGNAL);
    });
}

} // namespace

Handle InstanceChannel::openFolder() const {
    if (!MakePrivateFolder(folder_) || !IsPrivateFolder(folder_))
        return {};
    return Handle(::open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool InstanceChannel::takeLock() {
    const Handle folder = openFolder();
    Handle lock(
        ::openat(folder.get(), "instance.lock", O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK; // without a lock file there is nobody to find
    lock_ = std::move(lock);
    return true;
}

bool InstanceChannel::EarlierInstanceRuns() {
    // One that gave up waiting for another may run without the lock.
    return !takeLock() || call().valid();
}

Handle InstanceChannel::call() const {
    const Handle folder = openFolder();
    Handle socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const sockaddr_un address = markIn(folder);
    if (!folder.valid() || ::connect(socket.get(), generic(address), sizeof address) != 0 ||
        !isOwnUser(socket))
        return {};
    return socket;
}

Handle InstanceChannel::send(const InstanceRecord& record) const {
    Handle socket = call();
    Head head{};
    putNumber(head, 0, record.dwData);
    putNumber(head, 4, static_cast<std::uint32_t>(record.lpData.size()));
    const bool sent = socket.valid() && record.lpData.size() <= MaxData &&
                      sendAll(socket, head.data(), head.size()) &&
                      sendAll(socket, record.lpData.data(), record.lpData.size());
    return sent ? std::move(socket) : Handle();
}

bool InstanceChannel::Post(const InstanceRecord& record) const {
    return send(record).valid();
}

bool InstanceChannel::Deliver(const InstanceRecord& record) const {
    const Handle socket = send(record);
    if (!socket.valid())
        return false;
    pollfd descriptor{socket.get(), POLLIN, 0};
    while (::poll(&descriptor, 1, -1) < 0 && errno == EINTR) {
    }
    char word = 0;
    return ::recv(socket.get(), &word, 1, 0) == 1; // nothing if the other end just lets go
}

void InstanceChannel::Delivery::confirm() const {
    constexpr char dealtWith = 1;
    static_cast<void>(sendAll(sender, &dealtWith, 1)); // one that is gone needs no answer
}

bool InstanceChannel::Mark() {
    const Handle folder = openFolder();
    Handle listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const sockaddr_un address = markIn(folder);
    if (!folder.valid())
        return false;
    ::unlinkat(folder.get(), MarkName, 0); // of one that was killed, or hangs
    if (::bind(listener.get(), generic(address), sizeof address) != 0 ||
        ::listen(listener.get(), Backlog) != 0)
        return false;
    events_ = Handle(::epoll_create1(EPOLL_CLOEXEC));
    watch(events_, listener);
    listener_ = std::move(listener);
    mark_ = fileNumber(folder, MarkName);
    return true;
}

void InstanceChannel::Unmark() {
    if (listener_.valid()) {
        const Handle folder = openFolder();
        if (fileNumber(folder, MarkName) == mark_) // not that of one that took our place
            ::unlinkat(folder.get(), MarkName, 0);
    }
    // The lock goes last: whoever waits for it finds no mark of ours any more.
    callers_.clear();
    events_ = Handle();
    listener_ = Handle();
    lock_ = Handle();
}

void InstanceChannel::acceptCallers() {
    while (listener_.valid()) {
        Handle socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket.valid())
            return;
        if (!isOwnUser(socket))
            continue;
        // Whoever has been silent for longest makes room.
        if (callers_.size() == MostCallers)
            callers_.pop_front();
        watch(events_, socket);
        callers_.push_back({std::move(socket), steady_clock::now()});
    }
}

InstanceChannel::Reading InstanceChannel::read(Caller& caller) {
    std::array<char, 4096> buffer;
    for (;;) {
        const bool headed = caller.bytes.size() >= HeadLength;
        const std::size_t length = headed ? numberIn(headOf(caller.bytes), 4) : 0;
        const std::size_t wanted = HeadLength + length;
        if (length > MaxData)
            return Reading::Useless;
        if (headed && caller.bytes.size() == wanted)
            return Reading::Whole;
        const ssize_t count = ::recv(caller.socket.get(), buffer.data(),
                                     std::min(buffer.size(), wanted - caller.bytes.size()), 0);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
            return Reading::Useless;
        if (count < 0)
            return Reading::Unfinished;
        caller.bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

std::optional<InstanceChannel::Delivery> InstanceChannel::Receive() {
    acceptCallers();
    for (auto caller = callers_.begin(); caller != callers_.end();) {
        const Reading reading = read(*caller);
        if (reading == Reading::Unfinished && steady_clock::now() - caller->since < TransferTime) {
            ++caller;
            continue;
        }
        std::optional<Delivery> delivery;
        if (reading == Reading::Whole) {
            ::epoll_ctl(events_.get(), EPOLL_CTL_DEL, caller->socket.get(), nullptr);
            delivery =
                Delivery{{numberIn(headOf(caller->bytes), 0), caller->bytes.substr(HeadLength)},
                         std::move(caller->socket)};
        }
        caller = callers_.erase(caller);
        if (delivery)
            return delivery;
    }
    return std::nullopt;
}

} // namespace corvane
