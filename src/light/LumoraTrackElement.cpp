#include "light/LumoraTrackElement.h"

#include "base/KOMath.h"
#include "base/Numbers.h"
#include "light/LumoraTrack.h"

#include <random>

namespace corvane {

namespace {

float anyLevel() {
    static std::minstd_rand random(std::random_device{}());
    return std::uniform_real_distribution<float>(0, 1)(random);
}

} // namespace

LumoraTrackElement::LumoraTrackElement(LumoraTrack& track, double time, int brightness,
                                       std::string functionCode, int brightness2)
    : track_(track),
      brightness_(ClampBrightness(brightness)),
      brightness2_(ClampBrightness(brightness2)),
      functionCode_(std::move(functionCode)),
      time_(ClampTime(time)) {}

void LumoraTrackElement::setBrightness(int value) {
    const int clamped = ClampBrightness(value);
    if (clamped == brightness_)
        return;
    brightness_ = clamped;
    track_.elementChanged(*this);
}

void LumoraTrackElement::setBrightness2(int value) {
    const int clamped = ClampBrightness(value);
    if (clamped == brightness2_)
        return;
    brightness2_ = clamped;
    track_.elementChanged(*this);
}

void LumoraTrackElement::setFunctionCode(const std::string& code) {
    std::string taken = Binary() ? std::string() : code;
    if (taken == functionCode_)
        return;
    track_.functionChanges(functionCode_, taken);
    functionCode_ = std::move(taken);
    track_.elementChanged(*this);
}

void LumoraTrackElement::setTime(double value) {
    const double clamped = ClampTime(value);
    if (clamped == time_)
        return;
    time_ = clamped;
    track_.elementChanged(*this);
}

bool LumoraTrackElement::Binary() const {
    return track_.Binary();
}

int LumoraTrackElement::ClampBrightness(int value) const {
    if (Binary())
        return value >= 50 ? 100 : 0;
    return std::clamp(value, 0, 100);
}

double LumoraTrackElement::ClampTime(double seconds) {
    if (!(seconds >= MinTime))
        return MinTime;
    if (seconds > MaxTime)
        return MaxTime;
    return std::floor(seconds * 100 + 0.00001) / 100;
}

std::string LumoraTrackElement::FormatTime(double seconds) {
    return WriteFixed(ClampTime(seconds), 2);
}

float LumoraTrackElement::EvaluateFunction(float t, float x) const {
    if (functionCode_.empty())
        return 1.0F;
    const float u = 1.0F - t;
    if (functionCode_ == Proportional)
        return u;
    if (functionCode_ != ProportionalFromTrip)
        return anyLevel();
    const float lo = track_.topTrack() ? x : 0.0F;
    const float hi = track_.topTrack() ? 1.0F : x;
    if (std::abs(hi - lo) < 0.001F || u < lo || u > hi)
        return OutOfRange;
    return (u - lo) / (hi - lo);
}

int LumoraTrackElement::EvaluateBrightness(int input, int tripPoint) const {
    const float level = EvaluateFunction(static_cast<float>(1 - input / 100.0),
                                         static_cast<float>(tripPoint / 100.0));
    if (level == OutOfRange)
        return 0;
    return RoundToInteger(brightness2_ + level * static_cast<float>(brightness_ - brightness2_));
}

void LumoraTrackElement::clampAgain() {
    setBrightness(brightness_);
    setBrightness2(brightness2_);
}

} // namespace corvane
