// A frame with 12 tracks of 1 000 segments against 12 of 10 (aim: below 3 times).
#include "light/LumoraSimulator.h"
#include "support/Measure.h"
#include "support/Nobody.h"
#include "support/Writing.h"
#include "system/DiskFiles.h"

#include <cstdio>

namespace {

using namespace corvane;

struct StepClock final : Clock {
    std::uint32_t milliseconds = 0;
    [[nodiscard]] std::uint32_t now() const override { return milliseconds; }
};

double frameTime(int segments) {
    constexpr int frames = 100000;
    Nobody nobody;
    DiskFiles files;
    LumoraDocument document({nobody, nobody, files});
    for (int index = 1; index <= LumoraDocument::TrackCount; ++index)
        for (int i = 1; i <= segments; ++i)
            writable(document, index).InsertTrack(i, 0.05, i % 101, {}, 0);
    StepClock clock;
    LumoraSimulator simulator(document, clock);
    simulator.takeAllSettings();
    simulator.setSlider(80);
    std::vector<double> times;
    for (int i = 0; i < 7; ++i)
        times.push_back(milliseconds([&] {
            for (int frame = 0; frame < frames; ++frame) {
                clock.milliseconds += 25;
                simulator.Update();
            }
        }));
    return medianOf(times) / frames;
}

} // namespace

int main() {
    const double many = frameTime(1000);
    std::printf("a frame with 1000 segments a track: %.5f ms\n", many);
    std::printf("to one with 10: %.2f (aim: below 3)\n", many / frameTime(10));
}
