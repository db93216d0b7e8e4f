// The round trip of a request and its reply over a virtual link, as a ratio to the same bytes
// going round over a bare socket between two processes. Aim: below 3.
#include "support/BareSocket.h"
#include "support/LinkWork.h"
#include "support/OneCore.h"
#include "support/VirtualProduct.h"

#include <cstdio>

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
    if (!desk.link.Connect(desk.link.Class(), true))
        return 1;

    std::vector<double> ratios;
    for (int i = 0; i < Repeats; ++i) {
        const double bareTime = microsecondsPerRound([&] { bare.round(); });
        const double linkTime = roundTripTime(desk, Rounds);
        ratios.push_back(linkTime / bareTime);
        std::printf("bare socket %6.2f us   virtual link %6.2f us   ratio %.2f\n", bareTime,
                    linkTime, ratios.back());
    }
    desk.link.DisconnectAndBlock(false);
    std::printf("median ratio %.2f (aim: below 3)\n", medianOf(ratios));
    return 0;
}
