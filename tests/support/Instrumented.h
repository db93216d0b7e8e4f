#pragma once

namespace corvane {

/// Whether this is the build that looks after each access, in which all takes many times as long.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool Instrumented = true;
#elif defined(__has_feature)
inline constexpr bool Instrumented = __has_feature(address_sanitizer);
#else
inline constexpr bool Instrumented = false;
#endif

} // namespace corvane
