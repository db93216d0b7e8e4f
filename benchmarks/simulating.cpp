// Runs a light editor with its Simulator tab on show for some seconds and prints the processor time
// that it took, in percent of a core. See simulating.sh.
#include "desktop/EventLoop.h"
#include "desktop/light/LumoraView.h"
#include "support/EmptyDesk.h"
#include "support/Writing.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace {

using namespace corvane;

std::string pictureText(QtImages& images, int width, int height, std::uint32_t color) {
    images.SetImage(
        {width, height,
         std::vector<std::uint32_t>(
             static_cast<std::size_t>(width) * static_cast<std::size_t>(height), color)});
    return images.SaveImage();
}

} // namespace

int main(int argc, char** argv) {
    const bool changing = argc > 1 && std::string_view(argv[1]) == "changing";
    const int seconds = argc > 2 ? std::atoi(argv[2]) : 20;
    const DesktopApplication desktop(argc, argv);
    EmptyDesk desk;
    QtKeyboard keyboard;
    LumoraControl control(desk.place, keyboard);
    LumoraView view(control, nullptr);
    view.resize(1300, 950);
    view.show();
    LumoraDocument& document = control.document;
    setData(document, 0, "Sim Background Image", pictureText(desk.images, 1200, 800, 0xFF506070));
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        setData(document, channel, "Sim Light Image", pictureText(desk.images, 80, 80, 0xC0FFFFFF));
        for (int i = 1; i <= (changing ? 100 : 1); ++i)
            writable(document, 2 * channel - 1).InsertTrack(i, 0.02, i * 37 % 101, {}, 0);
    }
    control.TabStrip1.select(9);
    control.tripPoint.TripPointValue.type("80");
    QApplication::processEvents();
    const std::clock_t before = std::clock();
    QTimer::singleShot(seconds * 1000, &desktop, &QCoreApplication::quit);
    DesktopApplication::exec();
    const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
    std::printf("%s: %.1f percent of a core (aim: below %d)\n", changing ? "changing" : "steady",
                100 * used / seconds, changing ? 15 : 1);
}
