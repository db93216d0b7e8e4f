// The round trip of a request and its reply over a virtual link, as a ratio to the same bytes
// going round over a bare socket between two processes. Aim: below 3.
#include "support/BareSocket.h"
#include "support/Measure.h"
#include "support/OneCore.h"
#include "support/VirtualProduct.h"

#include <cstdio>
#include <cstdlib>

namespace {

using namespace corvane;
using Microseconds = std::chrono::duration<double, std::micro>;
constexpr int Rounds = 2000;
constexpr int Repeats = 7;

template<class Round>
double microsecondsPerRound(Round round) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < Rounds; ++i)
        round();
    return Microseconds(std::chrono::steady_clock::now() - start).count() / Rounds;
}

} // namespace

int main() {
    StayOnOneCore();
    const LinkFolder folder;
    BareSocket bare(16, 16);
    const VirtualProduct product("lumora-1.2", 0, {});
    const SystemClock clock;
    EmptyDesk desk("KO", VirtualLinks(clock));
    KOCommLink& link = desk.link;
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
                desk.pause.pause();
                link.Update();
            }
        });
        ratios.push_back(linkTime / bareTime);
        std::printf("bare socket %6.2f us   virtual link %6.2f us   ratio %.2f\n", bareTime,
                    linkTime, ratios.back());
    }
    link.DisconnectAndBlock(false);
    std::printf("median ratio %.2f (aim: below 3)\n", medianOf(ratios));
    return 0;
}
