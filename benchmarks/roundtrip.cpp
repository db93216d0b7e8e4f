// The round trip of a request and its reply over a virtual link, as a ratio to the same bytes
// going round over a bare socket between two processes. Aim: below 3.
#include "bench/LinkServer.h"
#include "kolib/devices/LinkDevices.h"
#include "kolib/devices/VirtualLinkSource.h"
#include "link/KOCommLink.h"
#include "system/SystemClock.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace corvane;
using Microseconds = std::chrono::duration<double, std::micro>;
constexpr int Rounds = 2000;
constexpr int Repeats = 7;

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

template<class Round>
double microsecondsPerRound(Round round) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < Rounds; ++i)
        round();
    return Microseconds(std::chrono::steady_clock::now() - start).count() / Rounds;
}

/// Another process that sends back what it gets.
class BareSocket {
  public:
    BareSocket() {
        std::array<int, 2> ends{};
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0)
            std::abort();
        child_ = ::fork();
        if (child_ == 0) {
            ::close(ends[0]);
            std::array<char, 64> buffer;
            for (;;) {
                pollfd descriptor{ends[1], POLLIN, 0};
                ::poll(&descriptor, 1, -1);
                const ssize_t count = ::read(ends[1], buffer.data(), buffer.size());
                if (count <= 0 ||
                    ::write(ends[1], buffer.data(), static_cast<std::size_t>(count)) < 0)
                    ::_exit(0);
            }
        }
        ::close(ends[1]);
        descriptor_ = ends[0];
    }
    ~BareSocket() {
        ::close(descriptor_);
        ::waitpid(child_, nullptr, 0);
    }
    BareSocket(const BareSocket&) = delete;
    BareSocket& operator=(const BareSocket&) = delete;

    void round() const {
        std::array<char, 16> buffer{};
        if (::write(descriptor_, buffer.data(), buffer.size()) < 0)
            std::abort();
        pollfd descriptor{descriptor_, POLLIN, 0};
        ::poll(&descriptor, 1, -1);
        if (::read(descriptor_, buffer.data(), buffer.size()) <= 0)
            std::abort();
    }

  private:
    int descriptor_ = -1;
    pid_t child_ = -1;
};

class BenchProcess {
  public:
    BenchProcess() {
        child_ = ::fork();
        if (child_ != 0)
            return;
        std::string error;
        auto made = bench::makeBench("lumora-1.2", {}, error);
        bench::VirtualLink link(std::move(*made), {}, 0, 1, nullptr);
        bench::LinkServer server(link, bench::LinkServer::userFolder(), "roundtrip");
        if (server.start().empty())
            server.run();
        ::_exit(0);
    }
    ~BenchProcess() {
        ::kill(child_, SIGTERM);
        ::waitpid(child_, nullptr, 0);
    }
    BenchProcess(const BenchProcess&) = delete;
    BenchProcess& operator=(const BenchProcess&) = delete;

  private:
    pid_t child_ = -1;
};

struct DevicePause final : Pause {
    explicit DevicePause(KODevice& openDevice) : device(openDevice) {}
    void pause() override { device.WaitForData(1); }
    KODevice& device;
};

} // namespace

int main() {
    std::string folder = "/tmp/corvane-roundtrip-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return 1;
    ::setenv("CORVANE_BENCH_DIR", folder.c_str(), 1);
    double ratio = 0;
    {
        const BareSocket bare;
        const BenchProcess benchProcess;
        const SystemClock clock;
        const RunModes modes;
        const KODebug debug(modes);
        wire::HostSession packets(clock, {});
        std::vector<std::unique_ptr<LinkSource>> sources;
        sources.push_back(std::make_unique<VirtualLinkSource>(folder, clock));
        LinkDevices device(std::move(sources), packets, debug);
        const KOProductList products("KO", debug);
        DevicePause pause(device);
        KOCommLink link({device, packets, products, modes, clock, debug, pause});
        bool answered = false;
        const Connection onPacket =
            link.PacketReceived.connect([&](const KOPacket&) { answered = true; });
        if (!link.Connect(link.Class(), true))
            return 1;
        KOPacket request = link.makePacket();
        request.setChannel(208);
        for (const std::uint8_t byte : {0, 0, 3})
            request.buffer().Append(byte);

        std::vector<double> ratios;
        for (int i = 0; i < Repeats; ++i) {
            const double bareTime = microsecondsPerRound([&] { bare.round(); });
            const double linkTime = microsecondsPerRound([&] {
                answered = false;
                if (!request.Send())
                    std::abort();
                while (!answered) {
                    pause.pause();
                    link.Update();
                }
            });
            ratios.push_back(linkTime / bareTime);
            std::printf("bare socket %6.2f us   virtual link %6.2f us   ratio %.2f\n", bareTime,
                        linkTime, ratios.back());
        }
        link.DisconnectAndBlock(false);
        ratio = medianOf(ratios);
    }
    std::filesystem::remove_all(folder);
    std::printf("median ratio %.2f (aim: below 3)\n", ratio);
    return 0;
}
