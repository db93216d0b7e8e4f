#pragma once

#include "light/LumoraDocument.h"
#include "link/KOBuffer.h"

namespace corvane {

/// What the controllers' bytes are made of. The rounding is part of the format.
namespace LumoraEncoding {

/// A percentage, 0 to 100, as a byte.
[[nodiscard]] std::uint8_t percent(int value);
/// A time in hundredths of a second, 1 to 250.
[[nodiscard]] std::uint8_t time(double seconds);
/// A brightness in percent as a current in mA, of at most `maxCurrent`.
[[nodiscard]] int current(int maxCurrent, int brightness);
/// The half width of the band round the trip point, so narrow that the band stays within 0 to 255.
[[nodiscard]] std::uint8_t hysteresis(const LumoraChannelSettings& settings);

/// Limits both ends to 800 to 2200 microseconds and makes the second the higher one.
void normaliseRange(int& xmitMin, int& xmitMax);

// One byte a channel.
[[nodiscard]] KOBuffer BuildTripPoints(const LumoraDocument& document);
[[nodiscard]] KOBuffer BuildHysteresis(const LumoraDocument& document);
[[nodiscard]] KOBuffer BuildDefaults(const LumoraDocument& document);
[[nodiscard]] KOBuffer BuildTurnOffPoints(const LumoraDocument& document);

/// The first channel with a segment whose function no controller knows; 0 if there is none.
[[nodiscard]] int channelWithUnknownFunction(const LumoraDocument& document);

} // namespace LumoraEncoding

/// What came of compiling a program.
struct LumoraCompiled {
    enum class Outcome { Done, TooLarge, Canceled };
    Outcome outcome = Outcome::Done;
    int segments = 0; ///< That the program needs, also above the limit.
};

/// Makes the 255 bytes that the newer controller keeps. No segment may have an unknown function.
class LumoraImageCompiler {
  public:
    static constexpr int ImageLength = 255;

    explicit LumoraImageCompiler(const LumoraDocument& document) : document_(document) {}

    /// The image is complete only if the program fits.
    [[nodiscard]] LumoraCompiled compile();
    [[nodiscard]] const KOBuffer& image() const { return image_; }

  private:
    bool CompileProgramImage();
    bool CompileTrackImage(int trackIndex);

    const LumoraDocument& document_;
    KOBuffer program_;
    KOBuffer programL_;
    KOBuffer programH_;
    KOBuffer image_;
    int segments_ = 0;
};

} // namespace corvane
