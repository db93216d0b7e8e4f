#include "system/SignalGuard.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <iostream>

namespace corvane {

namespace {

constexpr std::array Guarded{SIGINT, SIGTERM, SIGHUP, SIGPIPE};
volatile std::sig_atomic_t notedSignal = 0;
std::array<struct sigaction, Guarded.size()> before{};

void note(int signal) {
    if (notedSignal == 0)
        notedSignal = signal;
}

} // namespace

void SignalGuard::hold() {
    if (holds_)
        return;
    holds_ = true;
    struct sigaction noting {};
    noting.sa_handler = &note;
    for (std::size_t i = 0; i < Guarded.size(); ++i) {
        ::sigaction(Guarded[i], nullptr, &before[i]);
        if (before[i].sa_handler == SIG_DFL) // whoever lets them be ignored still does
            ::sigaction(Guarded[i], &noting, nullptr);
    }
}

void SignalGuard::letGo() {
    if (!holds_)
        return;
    holds_ = false;
    for (std::size_t i = 0; i < Guarded.size(); ++i)
        ::sigaction(Guarded[i], &before[i], nullptr);
    if (notedSignal == 0)
        return;
    // What was printed must come out first, since the signal ends the process without it.
    std::cout.flush();
    std::fflush(nullptr);
    // Now the usual handlers stand again, and the process ends as whoever sent it expects.
    static_cast<void>(std::raise(notedSignal));
}

bool SignalGuard::noted() const {
    return notedSignal != 0;
}

} // namespace corvane
