#include "light/LumoraTrackElement.h"

#include "base/KOMath.h"
#include "base/Numbers.h"

#include <random>

namespace corvane {

namespace {

float anyLevel() {
    static std::minstd_rand random(std::random_device{}());
    return std::uniform_real_distribution<float>(0, 1)(random);
}

} // namespace

void LumoraTrackElement::fitInto(bool binary, bool topTrack) {
    binary_ = binary;
    topTrack_ = topTrack;
    brightness_ = ClampBrightness(brightness_);
    brightness2_ = ClampBrightness(brightness2_);
    time_ = ClampTime(time_);
    if (binary)
        functionCode_.clear();
}

int LumoraTrackElement::ClampBrightness(int value) const {
    if (binary_)
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
    const float lo = topTrack_ ? x : 0.0F;
    const float hi = topTrack_ ? 1.0F : x;
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

} // namespace corvane
