#pragma once

#include "base/KOMath.h"

namespace corvane {

/// A colour of three parts, 0 to 255 in normal use. As a number, red is the low byte. Each
/// operation gives a new value.
class KORgbValue {
  public:
    constexpr KORgbValue() = default;
    constexpr KORgbValue(int r, int g, int b) : R(r), G(g), B(b) {}

    /// A system colour has to be translated first.
    [[nodiscard]] static constexpr KORgbValue FromColor(int Value) {
        return {Value & 0x7F0000FF, (Value & 0x7F00FF00) / 256, (Value & 0x7FFF0000) / 65536};
    }
    [[nodiscard]] constexpr int Value() const { return R | (G << 8) | (B << 16); }

    /// 100 percent leaves the colour, 0 gives black.
    [[nodiscard]] KORgbValue Attenuate(double percent) const {
        const int level = static_cast<int>(std::clamp(percent * 2.55 + 0.0001, 0.0, 255.0));
        return Multiply({level, level, level});
    }
    [[nodiscard]] KORgbValue Multiply(const KORgbValue& other) const {
        const auto part = [](int a, int b) {
            return RoundToInteger(static_cast<double>(a) * b / 255.0);
        };
        return {part(R, other.R), part(G, other.G), part(B, other.B)};
    }
    /// Fraction 0 gives this colour, 1 the other.
    [[nodiscard]] KORgbValue BlendWith(const KORgbValue& other, double fraction) const {
        const auto part = [fraction](int a, int b) {
            return RoundToInteger((1 - fraction) * a + fraction * b);
        };
        return {part(R, other.R), part(G, other.G), part(B, other.B)};
    }

    bool operator==(const KORgbValue&) const = default;

    int R = 0;
    int G = 0;
    int B = 0;
};

} // namespace corvane
