#pragma once

#include <string>
#include <string_view>

namespace corvane {

class LumoraTrack;

/// One timed step of a track: for `time` seconds the light stands at `brightness`, or, with a
/// function, at a level between `brightness2` and `brightness` that follows the input. Lives in its
/// track, which hears of every change. Values out of range are brought to the nearer limit.
class LumoraTrackElement {
  public:
    // Function codes. Any other text is kept, and gives a level that changes from call to call.
    static constexpr std::string_view Normal{};
    static constexpr std::string_view Proportional = "P";
    static constexpr std::string_view ProportionalFromTrip = "PT";

    static constexpr double MinTime = 0.01; ///< seconds
    static constexpr double MaxTime = 2.5;

    LumoraTrackElement(LumoraTrack& track, double time, int brightness, std::string functionCode,
                       int brightness2);
    LumoraTrackElement(const LumoraTrackElement&) = delete;
    LumoraTrackElement& operator=(const LumoraTrackElement&) = delete;

    /// Percent; with a function the level at the top of its range.
    [[nodiscard]] int brightness() const { return brightness_; }
    void setBrightness(int value);
    /// Percent at the bottom of the function's range.
    [[nodiscard]] int brightness2() const { return brightness2_; }
    void setBrightness2(int value);
    /// A two-level segment takes no function.
    [[nodiscard]] const std::string& functionCode() const { return functionCode_; }
    void setFunctionCode(const std::string& code);
    /// Seconds, in steps of 0.01.
    [[nodiscard]] double time() const { return time_; }
    void setTime(double value);

    [[nodiscard]] LumoraTrack& track() const { return track_; }
    /// Only fully on and fully off: a mode of the track.
    [[nodiscard]] bool Binary() const;
    [[nodiscard]] int ClampBrightness(int value) const;
    [[nodiscard]] static double ClampTime(double seconds);
    /// With two digits behind the point.
    [[nodiscard]] static std::string FormatTime(double seconds);

    /// Where on the way from `brightness2` (0) to `brightness` (1) the level stands. `t` counts
    /// from 0 at the top of the range to 1 at the bottom, `x` is the trip level as a fraction.
    /// `OutOfRange` if the level belongs to the other track.
    [[nodiscard]] float EvaluateFunction(float t, float x) const;
    static constexpr float OutOfRange = 2.0F;
    /// The level in percent for an input and a trip point in percent.
    [[nodiscard]] int EvaluateBrightness(int input, int tripPoint) const;

    /// Takes the levels anew after the track's mode has changed.
    void clampAgain();

  private:
    LumoraTrack& track_;
    int brightness_;
    int brightness2_;
    std::string functionCode_;
    double time_;
};

} // namespace corvane
