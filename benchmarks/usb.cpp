// A link on USB beside a virtual one: the round trip of a request, and programming 255 bytes at
// 250 000 baud as a ratio to their time on the wire and a millisecond a reply, which the chip's
// latency timer may take (aim: below 1.3). Real libusb and libftdi over an emulated chip. Then the
// processor time of the window beside a link that another program holds, and beside one that may
// not be opened (aim: below 0.5 percent of a core).
#include "kolib/devices/UsbLinkSource.h"
#include "support/LinkWork.h"
#include "support/Process.h"
#include "support/VirtualProduct.h"
#include "usb/UsbBus.h"

#include <cstdio>
#include <thread>

namespace {

using namespace corvane;
using namespace std::chrono_literals;

constexpr int Baud = 250000;
constexpr int Rounds = 500;

KOBuffer anyImage() {
    KOBuffer image;
    for (int i = 0; i < 255; ++i)
        image.Append(static_cast<std::uint8_t>(i * 37));
    return image;
}

void measure(const char* what, EmptyDesk& desk) {
    if (!desk.link.Connect(desk.link.Class(), true))
        std::abort();
    const double round = roundTripTime(desk, Rounds);
    const Programmed run = programOver(desk, anyImage());
    desk.link.DisconnectAndBlock(false);
    const double wire = run.wireBytes * 10 / Baud * 1000;
    std::printf("%-12s round trip %5.2f ms, programming %6.2f ms; wire %5.1f ms, replies %2.0f: "
                "%.2f of wire and replies\n",
                what, round / 1000, run.milliseconds, wire, run.replies,
                run.milliseconds / (wire + run.replies));
}

double ticksOf(int process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string word;
    double user = 0;
    double system = 0;
    for (int i = 1; i <= 13; ++i)
        file >> word;
    file >> user >> system;
    return user + system;
}

void measureWindow(const char* what) {
    constexpr auto time = 10s;
    Process window("corvane", {});
    std::this_thread::sleep_for(3s);
    const double before = ticksOf(window.id());
    std::this_thread::sleep_for(time);
    const double seconds =
        (ticksOf(window.id()) - before) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    std::printf("the window beside a link that %s: %.2f percent of a core (aim: below 0.5)\n", what,
                100 * seconds / static_cast<double>(time.count()));
}

} // namespace

int main() {
    const LinkFolder folder;
    const SystemClock clock;
    usb::UsbBus bus;
    {
        const VirtualProduct product("lumora-1.2", Baud, {});
        EmptyDesk desk("KO", VirtualLinks(clock));
        measure("virtual link", desk);
    }
    usb::Ft232& chip = bus.plugIn("lumora-1.2");
    {
        EmptyDesk::Sources sources;
        sources.push_back(std::make_unique<UsbLinkSource>(clock));
        EmptyDesk desk("KO", std::move(sources));
        measure("USB", desk);
    }
    std::printf("bytes lost in the chip: %zu\n", bus.with([&] { return chip.overruns; }));
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("XDG_RUNTIME_DIR", std::getenv("CORVANE_BENCH_DIR"), 1);
    bus.claimElsewhere(chip, true);
    measureWindow("another program holds");
    bus.claimElsewhere(chip, false);
    bus.setRights(chip, false);
    measureWindow("may not be opened");
}
