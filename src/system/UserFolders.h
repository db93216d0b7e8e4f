#pragma once

#include <filesystem>

namespace corvane {

/// Where this user's files of the program belong, whether or not the folders exist: each in a
/// folder "corvane" below what the desktop's environment names, or below its usual place.
[[nodiscard]] std::filesystem::path ConfigurationFolder();
/// Where what can be fetched again is kept.
[[nodiscard]] std::filesystem::path CacheFolder();

/// Makes a folder and those above it, closed to others. False if it can't be had.
[[nodiscard]] bool MakePrivateFolder(const std::filesystem::path& folder);

} // namespace corvane
