#include "bench/LinkServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace corvane::bench {

namespace {

constexpr std::size_t WaitingLimit = 262144; // bytes that a computer has not read
constexpr std::size_t ConnectionLimit = 32;

sockaddr_un addressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

const sockaddr* generic(const sockaddr_un& address) {
    // NOLINTNEXTLINE(*-reinterpret-cast): the socket interface asks for it
    return reinterpret_cast<const sockaddr*>(&address);
}

/// Something that is no link, and not this program's to remove.
bool isInTheWay(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::symlink_status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_socket(status);
}

} // namespace

LinkServer::LinkServer(VirtualLink& link, std::filesystem::path folder, std::string name)
    : link_(link), folder_(std::move(folder)), socketPath_(folder_ / (std::move(name) + ".link")) {
    sigset_t handled;
    sigemptyset(&handled);
    // They come as something to read, so that one loop waits for all there is.
    for (const int signal : {SIGINT, SIGTERM, SIGUSR1})
        sigaddset(&handled, signal);
    ::sigprocmask(SIG_BLOCK, &handled, nullptr);
    signals_ = ::signalfd(-1, &handled, SFD_NONBLOCK | SFD_CLOEXEC);
}

LinkServer::~LinkServer() {
    unplug();
    ::close(signals_);
}

std::filesystem::path LinkServer::userFolder() {
    const auto variable = [](const char* name) -> std::string {
        const char* value = std::getenv(name);
        return value == nullptr ? "" : value;
    };
    if (const std::string folder = variable("CORVANE_BENCH_DIR"); !folder.empty())
        return folder;
    if (const std::string runtime = variable("XDG_RUNTIME_DIR"); !runtime.empty())
        return std::filesystem::path(runtime) / "corvane-bench";
    return "/tmp/corvane-bench-" + std::to_string(::geteuid());
}

std::string LinkServer::start() {
    if (socketPath_.native().size() >= sizeof(sockaddr_un::sun_path))
        return "The path '" + socketPath_.string() + "' is too long for a socket.";
    if (std::string problem = prepareFolder(); !problem.empty())
        return problem;
    return plugIn();
}

std::string LinkServer::prepareFolder() const {
    if (::mkdir(folder_.c_str(), 0700) != 0 && errno != EEXIST)
        return "The folder '" + folder_.string() + "' can't be made: " + std::strerror(errno) + ".";
    struct stat status {};
    if (::lstat(folder_.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != ::geteuid() || (status.st_mode & 077U) != 0)
        return "The folder '" + folder_.string() +
               "' must be yours and closed to others (mode 0700).";
    return {};
}

bool LinkServer::somebodyListens() const {
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(socketPath_);
    const bool listens = ::connect(probe, generic(address), sizeof address) == 0;
    ::close(probe);
    return listens;
}

std::string LinkServer::plugIn() {
    if (somebodyListens())
        return "A link of this name is plugged in already. Choose another with --name.";
    if (isInTheWay(socketPath_))
        return "'" + socketPath_.string() + "' is no link. Choose another name with --name.";
    // Made under another name first: whoever sees the link's name finds somebody listening.
    const std::filesystem::path hidden = folder_ / (".new" + std::to_string(::getpid()));
    ::unlink(hidden.c_str());
    listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(hidden);
    if (listener_ < 0 || ::bind(listener_, generic(address), sizeof address) != 0 ||
        ::listen(listener_, 16) != 0 || ::rename(hidden.c_str(), socketPath_.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        ::unlink(hidden.c_str());
        return "The socket '" + socketPath_.string() + "' can't be made: " + reason + ".";
    }
    link_.plugIn(now());
    return {};
}

void LinkServer::unplug() {
    if (listener_ < 0)
        return;
    // The name goes after whoever listens, so that nobody connects to what is being taken away.
    ::close(listener_);
    listener_ = -1;
    if (!isInTheWay(socketPath_))
        ::unlink(socketPath_.c_str());
    for (Connection& connection : connections_)
        connection.ended = true;
    dropEnded();
}

void LinkServer::run() {
    while (handleSignals() && attendScreen()) {
        if (listener_ >= 0) {
            if (knocked_)
                accept();
            // What the computer sends is with the product before that takes its step.
            for (Connection& connection : connections_)
                if (connection.readable)
                    receive(connection);
            const Bytes bytes = link_.run(now());
            Connection* computer = opened();
            if (computer != nullptr && !bytes.empty() && computer->waiting.size() < WaitingLimit)
                appendMessage(computer->waiting, 'D', bytes);
            for (Connection& connection : connections_)
                flush(connection);
            dropEnded();
            if (link_.unplugged())
                unplug();
        }
        wait();
    }
}

bool LinkServer::handleSignals() {
    signalfd_siginfo signal{};
    while (signalled_ && ::read(signals_, &signal, sizeof signal) == sizeof signal) {
        if (signal.ssi_signo != SIGUSR1)
            return false;
        if (listener_ >= 0)
            unplug();
        else
            static_cast<void>(plugIn()); // another link took the name: stays unplugged
    }
    return true;
}

bool LinkServer::attendScreen() {
    if (screen_ == nullptr)
        return true;
    if (typed_ && !screen_->readKeys(now()))
        return false;
    screen_->draw(now());
    return true;
}

void LinkServer::accept() {
    for (;;) {
        const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0)
            return;
        if (connections_.size() < ConnectionLimit)
            connections_.emplace_back().descriptor = descriptor;
        else
            ::close(descriptor); // left in the queue it would wake the loop for ever
    }
}

void LinkServer::receive(Connection& connection) {
    std::array<std::uint8_t, 16384> buffer;
    const ssize_t count = ::recv(connection.descriptor, buffer.data(), buffer.size(), 0);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
        connection.ended = true;
    if (count <= 0)
        return;
    connection.reader.feed(ByteView(buffer).first(static_cast<std::size_t>(count)));
    while (const std::optional<Message> message = connection.reader.next())
        act(connection, *message);
    connection.ended = connection.ended || connection.reader.failed();
}

void LinkServer::act(Connection& connection, const Message& message) {
    switch (message.kind) {
    case 'I':
        appendMessage(connection.waiting, 'I', packStrings(link_.strings()));
        break;
    case 'O':
        // Like a device that another program has: whoever comes second is told by the end.
        connection.ended = opened() != nullptr && !connection.open;
        connection.open = !connection.ended;
        break;
    case 'D':
        if (connection.open)
            link_.fromComputer(message.payload, now());
        break;
    case 'R':
        if (connection.open)
            link_.powerCycle();
        break;
    case 'P': {
        const auto strings = unpackStrings(message.payload);
        if (strings)
            link_.program(*strings);
        appendMessage(connection.waiting, 'P', Bytes{strings ? std::uint8_t{1} : std::uint8_t{0}});
        break;
    }
    default:
        connection.ended = true;
    }
}

void LinkServer::flush(Connection& connection) {
    if (connection.waiting.empty() || connection.ended)
        return;
    const ssize_t count = ::send(connection.descriptor, connection.waiting.data(),
                                 connection.waiting.size(), MSG_NOSIGNAL);
    if (count > 0)
        connection.waiting.erase(connection.waiting.begin(), connection.waiting.begin() + count);
    else if (count < 0 && errno != EAGAIN && errno != EINTR)
        connection.ended = true;
}

void LinkServer::dropEnded() {
    std::erase_if(connections_, [](const Connection& connection) {
        if (connection.ended)
            ::close(connection.descriptor);
        return connection.ended;
    });
}

Time LinkServer::now() const {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now() - start_);
}

void LinkServer::wait() {
    constexpr std::size_t firstConnection = 3;
    const int keyboard = screen_ == nullptr ? -1 : screen_->keyboard();
    std::vector<pollfd> descriptors{
        {signals_, POLLIN, 0}, {listener_, POLLIN, 0}, {keyboard, POLLIN, 0}};
    for (const Connection& connection : connections_) {
        const int events = connection.waiting.empty() ? POLLIN : POLLIN | POLLOUT;
        descriptors.push_back({connection.descriptor, static_cast<short>(events), 0});
    }
    timespec limit{};
    std::optional<Time> next = listener_ >= 0 ? link_.nextEvent() : std::nullopt;
    if (screen_ != nullptr)
        next = next ? std::min(*next, screen_->nextDrawing()) : screen_->nextDrawing();
    if (next) {
        const auto wait = std::max(Time{0}, *next - now());
        limit.tv_sec = static_cast<time_t>(wait.count() / 1'000'000);
        limit.tv_nsec = static_cast<long>(wait.count() % 1'000'000 * 1000);
    }
    ::ppoll(descriptors.data(), descriptors.size(), next ? &limit : nullptr, nullptr);
    signalled_ = descriptors[0].revents != 0;
    knocked_ = descriptors[1].revents != 0;
    typed_ = descriptors[2].revents != 0;
    std::size_t index = firstConnection;
    for (Connection& connection : connections_)
        connection.readable = (descriptors[index++].revents & ~POLLOUT) != 0;
}

LinkServer::Connection* LinkServer::opened() {
    const auto found = std::find_if(connections_.begin(), connections_.end(),
                                    [](const auto& c) { return c.open && !c.ended; });
    return found == connections_.end() ? nullptr : &*found;
}

} // namespace corvane::bench
