// An FT232R with a product behind it, plugged into the kernel's virtual host controller (vhci-hcd),
// to which it speaks USB/IP over a pair of sockets. Started is plugged in; its end is an
// unplugging.
#include "usb/Ft232.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace corvane::usb;

enum Command : std::uint32_t { Submit = 1, Unlink = 2, SubmitDone = 3, UnlinkDone = 4 };
using Words = std::array<std::uint32_t, 12>; // of a message's head, as they are on the wire
constexpr std::size_t Sequence = 1, Direction = 3, Endpoint = 4, Status = 5, Length = 6;
constexpr std::size_t SetupWord = 10; // and the next: the eight bytes of a control request
constexpr int FullSpeed = 2;

/// The computer's end.
class Host {
  public:
    explicit Host(int socket) : socket_(socket) {}

    [[nodiscard]] int socket() const { return socket_; }
    /// Something has come, or the other end has closed.
    [[nodiscard]] bool calls() const {
        char first = 0;
        return ::recv(socket_, &first, 1, MSG_PEEK | MSG_DONTWAIT) >= 0;
    }
    bool receive(void* target, std::size_t count) const {
        return ::recv(socket_, target, count, MSG_WAITALL) == static_cast<ssize_t>(count);
    }
    void answer(Command command, std::uint32_t sequence, int status, std::size_t length,
                const Bytes& data) const {
        Words head{};
        head[0] = htonl(command);
        head[Sequence] = htonl(sequence);
        head[Status] = htonl(static_cast<std::uint32_t>(status));
        head[Length] = htonl(static_cast<std::uint32_t>(length));
        Bytes message(sizeof head);
        std::memcpy(message.data(), head.data(), sizeof head);
        message.insert(message.end(), data.begin(), data.end());
        static_cast<void>(::send(socket_, message.data(), message.size(), MSG_NOSIGNAL));
    }

  private:
    int socket_;
};

/// Where the chip's memory is kept between two pluggings.
struct MemoryFile {
    std::string path;

    void load(Memory& memory) const {
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
        if (bytes.size() == memory.size())
            std::copy(bytes.begin(), bytes.end(), memory.begin());
    }
    void store(const Memory& memory) const {
        std::ofstream file(path, std::ios::binary);
        std::copy(memory.begin(), memory.end(), std::ostreambuf_iterator<char>(file));
    }
};

/// Writes what has happened to the chip since the last time.
class Log {
  public:
    explicit Log(const std::string& path) : file_(path, std::ios::app) {}

    void write(const Ft232& chip) {
        for (; powerSeen_ < chip.power.size(); ++powerSeen_)
            file_ << chip.power[powerSeen_].at.count() / 1000 << " ms: power "
                  << (chip.power[powerSeen_].on ? "on" : "off") << " ("
                  << chip.power[powerSeen_].why << ")" << std::endl;
        for (; faultsSeen_ < chip.violations.size(); ++faultsSeen_)
            file_ << "violation: " << chip.violations[faultsSeen_] << std::endl;
        if (chip.vendorRequests != requestsSeen_)
            file_ << "requests: " << (requestsSeen_ = chip.vendorRequests) << std::endl;
        if (chip.memoryReads != readsSeen_)
            file_ << "memory read: " << (readsSeen_ = chip.memoryReads) << std::endl;
        if (chip.overruns != overrunsSeen_)
            file_ << "overrun: " << (overrunsSeen_ = chip.overruns) << " bytes" << std::endl;
    }

  private:
    std::ofstream file_;
    std::size_t powerSeen_ = 0;
    std::size_t faultsSeen_ = 0;
    std::size_t overrunsSeen_ = 0;
    int requestsSeen_ = 0;
    int readsSeen_ = 0;
};

/// The chip's time, which stands still while this machine is too busy to let the chip run: a real
/// one need not wait for its turn.
class ChipClock {
  public:
    [[nodiscard]] Time now() const { return now_; }
    /// After a wait that should have taken so long.
    void goOn(Time wait) {
        const auto real = std::chrono::steady_clock::now();
        now_ += std::min(std::chrono::duration_cast<Time>(real - real_),
                         wait + std::chrono::milliseconds(1));
        real_ = real;
    }

  private:
    std::chrono::steady_clock::time_point real_ = std::chrono::steady_clock::now();
    Time now_{0};
};

bool attach(int port, int socket) {
    std::ofstream file("/sys/devices/platform/vhci_hcd.0/attach");
    file << port << ' ' << socket << ' ' << 0x10000 + port << ' ' << FullSpeed << std::flush;
    return file.good();
}

/// Takes one message of the computer. False if it has closed.
bool serve(const Host& host, Ft232& chip, Time now) {
    Words head{};
    if (!host.receive(head.data(), sizeof head))
        return false;
    const std::uint32_t sequence = ntohl(head[Sequence]);
    if (ntohl(head[0]) == Unlink) {
        const bool was = chip.cancel(ntohl(head[Status]));
        host.answer(UnlinkDone, sequence, was ? -ECONNRESET : 0, 0, {});
        return true;
    }
    const bool in = ntohl(head[Direction]) != 0;
    const std::size_t length = ntohl(head[Length]);
    Bytes data(in ? 0 : length);
    if (!data.empty() && !host.receive(data.data(), data.size()))
        return false;
    if (ntohl(head[Endpoint]) == 0) {
        Bytes setup(8);
        std::memcpy(setup.data(), &head[SetupWord], setup.size());
        const Ended ended = chip.control(sequence, setup, now);
        host.answer(SubmitDone, sequence, ended.status, in ? ended.length : length, ended.data);
    } else if (in) {
        chip.submitIn(sequence, length);
    } else {
        chip.submitOut(sequence, data, now);
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    int port = 0;
    MemoryFile store;
    std::string log;
    std::string product;
    std::string kind = "stock";
    bool forgetful = false;
    int writeTime = 0;
    CLI::App app("An FT232R on the kernel's virtual host controller.");
    app.add_option("--port", port, "Socket that it is plugged into");
    app.add_option("--memory", store.path, "File that keeps its EEPROM")->required();
    app.add_option("--log", log, "File for what happens to it")->required();
    app.add_option("--product", product, "What hangs on it, as corvane-bench knows it");
    app.add_option("--kind", kind, "What its EEPROM holds if the file is missing")
        ->check(CLI::IsMember({"stock", "link", "empty"}));
    app.add_flag("--forgetful", forgetful, "It takes words for its EEPROM and does not keep them");
    app.add_option("--write-time", writeTime, "Milliseconds that the product takes for a byte");
    CLI11_PARSE(app, argc, argv);

    Memory memory = kind == "link"    ? stockMemory("Ortaline Works", "Corvane", "KO1234567")
                    : kind == "empty" ? emptyMemory()
                                      : stockMemory("FTDI", "FT232R USB UART", "A600XYZ1");
    store.load(memory);
    store.store(memory);
    Ft232 chip(memory, product, std::chrono::milliseconds(writeTime));
    chip.faults.forgetsMemory = forgetful;

    std::array<int, 2> pair{};
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &endings, nullptr);
    const int ended = ::signalfd(-1, &endings, SFD_CLOEXEC);
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0 ||
        !attach(port, pair[1])) {
        std::perror("vhci_hcd");
        return 1;
    }
    ::close(pair[1]);
    const Host host(pair[0]);
    Log told(log);
    ChipClock clock;
    const auto run = [&] {
        for (const Ended& transfer : chip.run(clock.now()))
            host.answer(SubmitDone, static_cast<std::uint32_t>(transfer.id), transfer.status,
                        transfer.length, transfer.data);
    };
    chip.plugIn(clock.now());
    for (;;) {
        const Time wait = chip.nextEvent(clock.now()) - clock.now();
        const timespec limit{0, static_cast<long>(wait.count() * 1000)};
        std::array<pollfd, 2> descriptors{{{host.socket(), POLLIN, 0}, {ended, POLLIN, 0}}};
        ::ppoll(descriptors.data(), descriptors.size(), &limit, nullptr);
        if (descriptors[1].revents != 0)
            return 0;
        clock.goOn(wait);
        run();
        while (host.calls())
            if (!serve(host, chip, clock.now()))
                return 0;
        run();
        if (chip.memory != memory)
            store.store(memory = chip.memory);
        told.write(chip);
    }
}
