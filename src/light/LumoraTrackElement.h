#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// One timed step of a track: for `time` seconds the light stands at `brightness`, or, with a
/// function, at a level between `brightness2` and `brightness` that follows the input. A value; the
/// track that takes it brings what is out of range to the nearer limit.
class LumoraTrackElement {
  public:
    // Function codes. Any other text is kept, and gives a level that changes from call to call.
    static constexpr std::string_view Normal{};
    static constexpr std::string_view Proportional = "P";
    static constexpr std::string_view ProportionalFromTrip = "PT";

    static constexpr double MinTime = 0.01; ///< seconds
    static constexpr double MaxTime = 2.5;

    LumoraTrackElement() = default;
    LumoraTrackElement(int brightness, double time, std::string functionCode = {},
                       int brightness2 = 0)
        : brightness_(brightness),
          brightness2_(brightness2),
          time_(time),
          functionCode_(std::move(functionCode)) {}
    bool operator==(const LumoraTrackElement&) const = default;

    /// Percent; with a function the level at the top of its range.
    [[nodiscard]] int brightness() const { return brightness_; }
    void setBrightness(int value) { brightness_ = value; }
    /// Percent at the bottom of the function's range.
    [[nodiscard]] int brightness2() const { return brightness2_; }
    void setBrightness2(int value) { brightness2_ = value; }
    /// A two-level segment takes no function.
    [[nodiscard]] const std::string& functionCode() const { return functionCode_; }
    void setFunctionCode(std::string code) { functionCode_ = std::move(code); }
    /// Seconds, in steps of 0.01.
    [[nodiscard]] double time() const { return time_; }
    void setTime(double value) { time_ = value; }

    /// Only fully on and fully off: a mode of the track.
    [[nodiscard]] bool Binary() const { return binary_; }
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

    /// Brings the values within the limits of a track of these modes.
    void fitInto(bool binary, bool topTrack);

  private:
    int brightness_ = 0;
    int brightness2_ = 0;
    double time_ = 1;
    std::string functionCode_;
    bool binary_ = false;
    bool topTrack_ = false;
};

/// A segment and its place in a track, from 1.
struct LumoraPlacedElement {
    int index = 0;
    LumoraTrackElement element;
};

} // namespace corvane
