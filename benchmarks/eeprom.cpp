// Opening an EEPROM document of 4 000 variables against 2 000 (aim: at most 2.3); one change of an
// address among 4 000 against among 40, with the real list on the screen (aim: below 60).
#include "desktop/EventLoop.h"
#include "desktop/eeprom/EEPROMEditorView.h"
#include "support/EmptyDesk.h"
#include "support/Measure.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <malloc.h>

namespace {

using namespace corvane;

std::string fileOf(const std::filesystem::path& folder, int count) {
    const std::string path = folder / (std::to_string(count) + ".ko_eeprom");
    std::ofstream file(path);
    file << "KOEEPROM\t" << count << '\t' << count << "\t0\t1\n";
    for (int i = 1; i <= count; ++i)
        file << "KOEEPROMListAdd\t" << i << '\t' << i * 7919 % 65536 << "\t2\tvariable " << i
             << "\t0102\tHex\n";
    return path;
}

void open(const std::string& file) {
    EmptyDesk desk;
    EEPROMEditorControl control(desk.place);
    if (!control.HistoryObject()->OpenHistory(file))
        std::abort();
}

/// What the allocator gives back to the system after one run and fetches again in the next depends
/// on where its thresholds lie between the two sizes. Let it keep all.
void keepMemory() {
    constexpr int plenty = 1 << 28; // bytes
    ::mallopt(M_TRIM_THRESHOLD, plenty);
    ::mallopt(M_MMAP_THRESHOLD, plenty / 8);
}

/// An EEPROM editor with its view and nothing else.
struct Bench {
    EmptyDesk desk;
    EEPROMEditorControl control{desk.place};
    EEPROMEditorView view{control, nullptr};

    explicit Bench(const std::string& file) {
        view.resize(1200, 800);
        view.show();
        QApplication::processEvents();
        if (!control.HistoryObject()->OpenHistory(file))
            std::abort();
        QApplication::processEvents();
    }
    void move() {
        TextBox& address = control.Entry(1).txtAddress;
        for (const char* place : {"60000", "10"}) {
            address.type(place);
            address.leave();
            QApplication::processEvents();
        }
    }
};

double millisecondsOfAPage(Bench& bench) {
    constexpr int pages = 50;
    const int page = bench.control.VScroll.LargeChange();
    bench.control.VScroll.setValue(0);
    return milliseconds([&] {
               for (int i = 1; i <= pages; ++i) {
                   bench.control.VScroll.setValue(i * page);
                   QApplication::processEvents();
               }
           }) /
           pages;
}

double millisecondsOfAMove(Bench& bench, int moves) {
    return milliseconds([&] {
               for (int i = 0; i < moves; ++i)
                   bench.move();
           }) /
           (2 * moves);
}

} // namespace

int main(int argc, char** argv) {
    const DesktopApplication desktop(argc, argv);
    keepMemory();
    std::string name = "/tmp/corvane-eeprom-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        return 1;
    const std::string small = fileOf(name, 40);
    const std::string half = fileOf(name, 2000);
    const std::string whole = fileOf(name, 4000);
    std::printf("open 4000 variables to 2000: %.2f (aim: at most 2.3)\n",
                ratio([&] { open(whole); }, [&] { open(half); }, 41));
    Bench few(small);
    Bench many(whole);
    const double fewTime = millisecondsOfAMove(few, 200);
    const double manyTime = millisecondsOfAMove(many, 50);
    std::printf("an address among 4000 variables to among 40: %.2f (aim: below 60); %.2f ms\n",
                manyTime / fewTime, manyTime);
    std::printf("scrolling by a page: %.2f ms\n", millisecondsOfAPage(many));
    std::filesystem::remove_all(name);
}
