// Opening a file of 65 535 blocks against merely reading and splitting it (aim: at most 2).
// Fetching that program from a product, once it is connected, against the same bytes over a bare
// socket (aim: below 3), and at 250 000 baud against the time that they take on the wire (aim:
// below 1.4).
#include "pwm/QuillonControl.h"
#include "pwm/QuillonTransfer.h"
#include "support/BareSocket.h"
#include "support/Measure.h"
#include "support/OneCore.h"
#include "support/VirtualProduct.h"

#include <cstdio>
#include <fstream>

namespace {

using namespace corvane;
constexpr int Blocks = QuillonProgram::MaxLength;

std::uint8_t blockAt(int index) {
    return static_cast<std::uint8_t>(index * 31 + index / 256);
}

void readAndSplit(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::pair<std::string, std::string>> lines;
    for (std::string line; std::getline(file, line);) {
        const std::size_t tab = line.find('\t');
        lines.emplace_back(line.substr(0, tab), line.substr(tab + 1));
    }
    if (lines.size() != Blocks + 1)
        std::abort();
}

void open(const std::string& path) {
    EmptyDesk desk("RQ");
    QuillonControl control(desk.place);
    if (!control.slot(0).program.HistoryObject().OpenHistory(path))
        std::abort();
}

/// An editor beside a product that has the program.
struct Bench {
    explicit Bench(int baud)
        : product("quillon", baud, {}), desk("RQ", VirtualLinks(clock)), control(desk.place) {
        while (!desk.link.IsConnected()) {
            desk.link.Update();
            desk.pause.pause();
        }
        for (int i = 0; i < Blocks; ++i)
            static_cast<void>(control.slot(1).program.append(blockAt(i)));
    }
    /// Puts the program into the product and connects to it.
    void prepare() {
        control.slot(1).UploadButton.press();
        if (!transfer.Connect())
            std::abort();
    }
    void download() {
        QuillonProgram& program = control.slot(0).program;
        static_cast<void>(program.HistoryObject().NewHistory());
        if (!transfer.Download(1) || program.blocks().Length() != Blocks)
            std::abort();
    }

    SystemClock clock;
    VirtualProduct product;
    EmptyDesk desk;
    QuillonControl control;
    QuillonTransfer transfer{desk.place};
    Connection onBlock = transfer.BlockReceived.connect(
        [this](std::uint8_t value) { static_cast<void>(control.slot(0).program.append(value)); });
};

} // namespace

int main() {
    StayOnOneCore();
    const LinkFolder folder;
    const std::string path = bench::LinkServer::userFolder() / "program.Quillon";
    {
        std::ofstream file(path);
        file << "Quillon\t" << Blocks << '\t' << Blocks << "\t0\t1\n";
        for (int i = 0; i < Blocks; ++i)
            file << "QuillonPWM\t" << int{blockAt(i)} << '\n';
    }
    std::printf("open %d blocks to reading and splitting: %.2f (aim: at most 2)\n", Blocks,
                ratio([&] { open(path); }, [&] { readAndSplit(path); }, 41));
    {
        Bench bench(0);
        bench.prepare();
        constexpr int pieces = (Blocks + 127) / 128;
        // A request and an acknowledgement there, a piece and an acknowledgement back.
        BareSocket bare(11 + 6, 138 + 6);
        std::printf("download %d blocks to a bare socket: %.2f (aim: below 3)\n", Blocks,
                    ratio([&] { bench.download(); },
                          [&] {
                              for (int i = 0; i < pieces; ++i)
                                  bare.round();
                          }));
    }
    {
        constexpr int baud = 250000;
        Bench bench(baud);
        bench.prepare();
        bench.desk.bytesOnTheWire = 0;
        const double taken = milliseconds([&] { bench.download(); });
        const double onTheWire = static_cast<double>(bench.desk.bytesOnTheWire) * 10 / baud * 1000;
        std::printf("download at %d baud to the wire's time (%.0f ms): %.2f (aim: below 1.4)\n",
                    baud, onTheWire, taken / onTheWire);
    }
}
