#pragma once

namespace corvane {

inline constexpr const char* ProgramName = "Corvane";
inline constexpr const char* MakerName = "Ortaline Works";
inline constexpr const char* MakerSite = "https://www.ortaline.example/";
extern const char* const ProgramVersion; ///< Such as "2.21".

} // namespace corvane
