// Compiling a full program; programming a full image into a lumora-1.2 at 250 000 baud without a
// write time as a ratio to the time that its bytes take on the wire (aim: below 1.5), and with 4 ms
// a byte as a ratio to 255 times 4 ms (aim: below 1.2).
#include "light/LumoraImage.h"
#include "support/LinkWork.h"
#include "support/OneCore.h"
#include "support/VirtualProduct.h"
#include "support/Writing.h"

#include <cstdio>
#include <cstdlib>

namespace {

using namespace corvane;

KOBuffer fullImage() {
    Nobody nobody;
    DiskFiles files;
    LumoraDocument document({nobody, nobody, files});
    for (int i = 1; i <= 95; ++i)
        writable(document, 1).InsertTrack(i, 0.5, i, {}, 0);
    LumoraImageCompiler compiler(document);
    static_cast<void>(compiler.compile());
    return compiler.image();
}

Programmed programInto(int baud, std::chrono::microseconds writeTime) {
    const VirtualProduct controller("lumora-1.2", baud, writeTime);
    const SystemClock clock;
    EmptyDesk desk("KO", VirtualLinks(clock));
    if (!desk.link.Connect(desk.link.Class(), true))
        std::abort();
    return programOver(desk, fullImage());
}

} // namespace

int main() {
    StayOnOneCore();
    const LinkFolder folder;
    std::printf("compiling a full program: %.3f ms\n",
                medianOf({milliseconds([] { static_cast<void>(fullImage()); }),
                          milliseconds([] { static_cast<void>(fullImage()); }),
                          milliseconds([] { static_cast<void>(fullImage()); })}));
    constexpr int baud = 250000;
    const Programmed paced = programInto(baud, std::chrono::microseconds(0));
    const double onTheWire = paced.wireBytes * 10 / baud * 1000;
    std::printf("programming to the wire's time (%.1f ms): %.2f (aim: below 1.5)\n", onTheWire,
                paced.milliseconds / onTheWire);
    const Programmed slow = programInto(0, std::chrono::milliseconds(4));
    std::printf("programming with 4 ms a byte to 255 x 4 ms: %.2f (aim: below 1.2)\n",
                slow.milliseconds / (255 * 4));
}
