#pragma once

#include "eeprom/GenericEEPROMProgrammer.h"
#include "support/EmptyDesk.h"
#include "support/Measure.h"

#include <cstdlib>

namespace corvane {

/// Microseconds for a request of three bytes and its reply, the mean of so many. The link must be
/// connected.
[[nodiscard]] inline double roundTripTime(EmptyDesk& desk, int rounds) {
    bool answered = false;
    const Connection onPacket =
        desk.link.PacketReceived.connect([&](const KOPacket&) { answered = true; });
    KOPacket request = desk.link.makePacket();
    request.setChannel(208);
    for (const std::uint8_t byte : {0, 0, 3})
        request.buffer().Append(byte);
    return 1000 / static_cast<double>(rounds) * milliseconds([&] {
               for (int i = 0; i < rounds; ++i) {
                   answered = false;
                   if (!request.Send())
                       std::abort();
                   while (!answered) {
                       desk.pause.pause();
                       desk.link.Update();
                   }
               }
           });
}

/// Median milliseconds for writing and verifying an image, with the bytes that passed meanwhile and
/// the replies that were waited for.
struct Programmed {
    double milliseconds = 0;
    double wireBytes = 0;
    double replies = 0;
};

[[nodiscard]] inline Programmed programOver(EmptyDesk& desk, const KOBuffer& image) {
    constexpr int repeats = 5;
    GenericEEPROMProgrammer programmer(desk.place);
    int replies = 0;
    const Connection onPacket =
        desk.link.PacketReceived.connect([&replies](const KOPacket&) { ++replies; });
    programmer.setUCBufferSize(64);
    std::vector<double> times;
    desk.bytesOnTheWire = 0;
    for (int i = 0; i < repeats; ++i)
        times.push_back(milliseconds([&] {
            if (!programmer.WriteEEPROM(0, image))
                std::abort();
        }));
    return {medianOf(times), static_cast<double>(desk.bytesOnTheWire) / repeats,
            static_cast<double>(replies) / repeats};
}

} // namespace corvane
