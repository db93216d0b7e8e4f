// Opening 20 000 segment insertions against 10 000 (aim: at most 2.2); one edit in a track of 5 000
// segments against one of 50, the repainting included (aim: below 5); painting a window full of
// blocks out of 12 000 against out of 120 (aim: below 1.5).
#include "desktop/EventLoop.h"
#include "desktop/light/LumoraView.h"
#include "desktop/light/TracksCanvas.h"
#include "support/EmptyDesk.h"
#include "support/Measure.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

namespace {

using namespace corvane;
constexpr int Repeats = 7;

/// A light editor with its view and nothing else.
struct Bench {
    EmptyDesk desk;
    QtKeyboard keyboard;
    LumoraControl control{desk.place, keyboard};
    LumoraView view{control, nullptr};

    Bench() {
        view.resize(1200, 800);
        view.show();
        QApplication::processEvents();
    }
    void fill(int channel, int count) {
        std::vector<LumoraPlacedElement> segments;
        for (int i = 1; i <= count; ++i)
            segments.push_back({i, {i % 101, 0.5}});
        auto change = std::make_unique<LumoraUndoableTrackChange>();
        change->InitializeGroup(control.document, true, channel, false, std::move(segments));
        control.document.HistoryObject().Record(std::move(change));
    }
    void edit() {
        SegmentBlock* block = control.tracks.track(1).block();
        for (const char* time : {"0.70", "0.50"}) {
            block->txtTime.type(time);
            block->txtTime.leave();
            QApplication::processEvents();
        }
    }
    void paint() {
        view.canvas().update();
        QApplication::processEvents();
    }
};

std::string documentOf(const std::string& folder, int insertions) {
    std::mt19937 random(5);
    std::vector<int> counts(12);
    std::string lines;
    for (int i = 0; i < insertions; ++i) {
        const auto track = static_cast<std::size_t>(random() % 12);
        const int at = 1 + static_cast<int>(random() % static_cast<unsigned>(++counts[track]));
        lines += "LumoraTrackInsert\t" + std::to_string(track / 2 + 1) + "\t" +
                 std::to_string(track % 2) + "\t" + std::to_string(at) + "\t50\t.5\n";
    }
    const std::string path = folder + "/" + std::to_string(insertions) + ".lumora";
    const std::string count = std::to_string(insertions);
    if (!DiskFiles().ReplaceWhole(path, "Lumora\t" + count + "\t" + count + "\t0\t2\n" + lines))
        std::abort();
    return path;
}

/// Median time of opening a file in a new editor.
double openTime(const std::string& path) {
    std::vector<double> times;
    for (int i = 0; i < Repeats; ++i) {
        Bench bench;
        times.push_back(milliseconds([&] {
            if (!bench.control.document.HistoryObject().OpenHistory(path))
                std::abort();
        }));
    }
    return medianOf(times);
}

/// Median time of an edit in a track of so many segments, on the screen alone.
double editTime(int segments) {
    constexpr int rounds = 100;
    Bench bench;
    bench.fill(1, segments);
    bench.control.tracks.FocusOn(1, 3);
    std::vector<double> times;
    for (int i = 0; i < Repeats; ++i)
        times.push_back(milliseconds([&] {
            for (int round = 0; round < rounds; ++round)
                bench.edit();
        }));
    return medianOf(times);
}

/// Median time of painting six tracks of so many segments each.
double paintTime(int segments) {
    constexpr int rounds = 50;
    Bench bench;
    for (int channel = 1; channel <= 6; ++channel)
        bench.fill(channel, segments);
    bench.control.TabStrip1.select(7);
    bench.control.tripPoint.TripPointValue.type("100"); // the filled tracks show
    std::vector<double> times;
    for (int i = 0; i < Repeats; ++i)
        times.push_back(milliseconds([&] {
            for (int round = 0; round < rounds; ++round)
                bench.paint();
        }));
    return medianOf(times);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const DesktopApplication desktop(argc, argv);
    std::string folder = "/tmp/corvane-light-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return 1;
    std::printf("open 20000 insertions to 10000: %.2f (aim: at most 2.2)\n",
                openTime(documentOf(folder, 20000)) / openTime(documentOf(folder, 10000)));
    std::filesystem::remove_all(folder);
    std::printf("edit in 5000 segments to 50: %.2f (aim: below 5)\n",
                editTime(5000) / editTime(50));
    std::printf("paint out of 12000 blocks to out of 120: %.2f (aim: below 1.5)\n",
                paintTime(2000) / paintTime(20));
}
