// Compiling a full program; programming a full image into a lumora-1.2 at 250 000 baud without a
// write time as a ratio to the time that its bytes take on the wire (aim: below 1.5), and with 4 ms
// a byte as a ratio to 255 times 4 ms (aim: below 1.2).
#include "bench/LinkServer.h"
#include "bench/VirtualLink.h"
#include "eeprom/GenericEEPROMProgrammer.h"
#include "kolib/devices/LinkDevices.h"
#include "kolib/devices/VirtualLinkSource.h"
#include "kolib/images/QtImages.h"
#include "kolib/text/TextFiles.h"
#include "light/LumoraImage.h"
#include "support/Measure.h"
#include "support/Nobody.h"
#include "system/DiskFiles.h"
#include "system/SystemClock.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace corvane;

struct DevicePause final : Pause {
    explicit DevicePause(KODevice& openDevice) : device(openDevice) {}
    void pause() override { device.WaitForData(1); }
    KODevice& device;
};

/// A virtual controller in a process of its own.
class Controller {
  public:
    Controller(int baud, std::chrono::microseconds writeTime) {
        child_ = ::fork();
        if (child_ != 0)
            return;
        std::string error;
        bench::Setup setup;
        setup.writeTime = writeTime;
        auto made = bench::makeBench("lumora-1.2", setup, error);
        bench::VirtualLink link(std::move(*made), {}, baud, 1, nullptr);
        bench::LinkServer server(link, bench::LinkServer::userFolder(), "programming");
        if (server.start().empty())
            server.run();
        ::_exit(0);
    }
    ~Controller() {
        ::kill(child_, SIGTERM);
        ::waitpid(child_, nullptr, 0);
    }
    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

  private:
    pid_t child_ = -1;
};

KOBuffer fullImage() {
    Nobody nobody;
    DiskFiles files;
    TextFiles text(files);
    LumoraDocument document({nobody, nobody, text});
    for (int i = 1; i <= 95; ++i)
        document.track(1).InsertTrack(i, 0.5, i, {}, 0);
    LumoraImageCompiler compiler(document);
    static_cast<void>(compiler.compile());
    return compiler.image();
}

/// Median milliseconds for writing and verifying an image, and the bytes that passed meanwhile.
struct Programmed {
    double milliseconds = 0;
    double wireBytes = 0;
};

Programmed programInto(int baud, std::chrono::microseconds writeTime) {
    const Controller controller(baud, writeTime);
    Nobody nobody;
    SystemClock clock;
    RunModes modes;
    KODebug debug(modes);
    KODebugger debugger;
    std::size_t bytes = 0;
    const auto count = [&bytes](std::span<const std::uint8_t> frame) { bytes += frame.size(); };
    wire::HostSession packets(clock, {count, count, count, {}});
    std::vector<std::unique_ptr<LinkSource>> sources;
    sources.push_back(std::make_unique<VirtualLinkSource>(VirtualLinkSource::userFolder(), clock));
    LinkDevices device(std::move(sources), packets, debug);
    KOProductList products("KO", debug);
    DevicePause pause(device);
    KOCommLink link({device, packets, products, modes, clock, debug, pause});
    DiskFiles files;
    TextFiles text(files);
    QtImages images;
    SystemPrograms programs;
    SettingsStore store("/nonexistent", files);
    KORegistry registry(store);
    const Workplace place{link,     device, products, modes, clock,  pause,    debug,
                          debugger, nobody, nobody,   text,  images, programs, registry};
    GenericEEPROMProgrammer programmer(place);
    const Connection onPacket = link.PacketReceived.connect(
        [&](const KOPacket& packet) { programmer.ProcessPacket(packet); });
    if (!link.Connect(link.Class(), true))
        std::abort();
    programmer.setUCBufferSize(64);
    const KOBuffer image = fullImage();
    std::vector<double> times;
    constexpr int repeats = 5;
    bytes = 0;
    for (int i = 0; i < repeats; ++i)
        times.push_back(milliseconds([&] {
            if (!programmer.WriteEEPROM(0, image))
                std::abort();
        }));
    return {medianOf(times), static_cast<double>(bytes) / repeats};
}

} // namespace

int main() {
    std::string folder = "/tmp/corvane-programming-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return 1;
    ::setenv("CORVANE_BENCH_DIR", folder.c_str(), 1);
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
    ::rmdir(folder.c_str());
}
