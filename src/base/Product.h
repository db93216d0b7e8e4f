#pragma once

namespace corvane {

inline constexpr const char* ProgramName = "Corvane";
inline constexpr const char* MakerName = "Ortaline Works";
inline constexpr const char* MakerSite = "https://www.ortaline.example/";
inline constexpr const char* ProgramVersion = "2.21";

} // namespace corvane
