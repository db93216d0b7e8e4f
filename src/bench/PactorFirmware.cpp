#include "bench/PactorFirmware.h"

#include <algorithm>

namespace corvane::bench {

namespace {

// What lies where in the memory.
constexpr std::size_t TripPoint = 0; // 0 to 255, like all levels
constexpr std::size_t Hysteresis = 1;
constexpr std::size_t IndicatorAbove = 2;
constexpr std::size_t IndicatorBelow = 3;
constexpr std::size_t RelayAbove = 4;
constexpr std::size_t RelayBelow = 5;
constexpr std::size_t RelayWithoutSignal = 6;

constexpr Time BlinkTime = std::chrono::milliseconds(50);

} // namespace

void PactorFirmware::powerOn(Time now) {
    MemoryFirmware::powerOn(now);
    side_ = Side::None;
    compare();
}

void PactorFirmware::packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) {
    MemoryFirmware::packet(channel, data, now, reply);
    compare();
}

void PactorFirmware::tick(Time now, Reply& reply) {
    MemoryFirmware::tick(now, reply);
    compare();
}

void PactorFirmware::setStick(int percent, Time) {
    stick_ = std::clamp(percent, 0, 100);
    compare();
}

void PactorFirmware::setSignal(bool present, Time) {
    signal_ = present;
    compare();
}

void PactorFirmware::compare() {
    const int level = (stick_ * 255 + 50) / 100;
    const int tripPoint = memory().at(TripPoint);
    // Nothing to hold on to after the power has come.
    const int band = side_ == Side::None ? 0 : memory().at(Hysteresis);
    if (level < tripPoint - band)
        side_ = Side::Below;
    else if (level >= tripPoint + band)
        side_ = Side::Above;
}

std::vector<Output> PactorFirmware::at(Time now) const {
    const auto output = [](const char* name, bool on) {
        return Output{name, on ? 1 : 0, 1, on ? "on" : "off", {}};
    };
    const bool above = side_ == Side::Above;
    if (signal_)
        return {output("Indicator", isOn(above ? IndicatorAbove : IndicatorBelow)),
                output("Relay", isOn(above ? RelayAbove : RelayBelow))};
    Output blinking = output("Indicator", now / BlinkTime % 2 == 0);
    blinking.text = "blinks";
    return {blinking, output("Relay", isOn(RelayWithoutSignal))};
}

} // namespace corvane::bench
