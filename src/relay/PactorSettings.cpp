#include "relay/PactorSettings.h"

#include "base/Assert.h"
#include "base/KOMath.h"

namespace corvane {

namespace {

// As a single-precision number it lies a little below 2.55, which decides what halves become.
constexpr double BytePerPercent = 2.55F;

std::uint8_t byteOf(int percent) {
    return static_cast<std::uint8_t>(RoundToInteger(percent * BytePerPercent));
}

int percentOf(std::uint8_t byte) {
    return RoundToInteger(byte / BytePerPercent);
}

} // namespace

KOBuffer PactorSettings::toImage() const {
    KOBuffer image;
    image.Append(byteOf(tripPoint));
    image.Append(byteOf(hysteresis));
    for (const bool on : indicator)
        image.Append(on ? 1 : 0);
    for (const bool on : relay)
        image.Append(on ? 1 : 0);
    return image;
}

PactorSettings PactorSettings::fromImage(const KOBuffer& image) {
    Assert(image.Length() == ImageLength);
    PactorSettings settings;
    int index = 0;
    settings.tripPoint = percentOf(image.Data(++index));
    settings.hysteresis = percentOf(image.Data(++index));
    for (bool& on : settings.indicator)
        on = image.Data(++index) == 1;
    for (bool& on : settings.relay)
        on = image.Data(++index) == 1;
    return settings;
}

} // namespace corvane
