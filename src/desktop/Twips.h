#pragma once

namespace corvane {

/// The core's sizes are twips; what is on the screen has logical pixels.
inline constexpr int TwipsPerPixel = 15;

} // namespace corvane
