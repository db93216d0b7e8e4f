#pragma once

#include <filesystem>

namespace corvane {

/// Where this user's files of the program belong, whether or not the folders exist: each in a
/// folder "corvane" below what the desktop's environment names, or below its usual place.
[[nodiscard]] std::filesystem::path ConfigurationFolder();
/// Where what can be fetched again is kept.
[[nodiscard]] std::filesystem::path CacheFolder();
/// Where what should outlive the program, but is neither a document nor a setting, is kept.
[[nodiscard]] std::filesystem::path StateFolder();
/// Where documents of the desktop's own are kept that describe the program to it: "share" of the
/// user. Not below "corvane".
[[nodiscard]] std::filesystem::path DataFolder();
/// What lasts as long as the person is logged in, where the system has such a place. Only a folder
/// of the user's own is taken, so that nobody else can stand in the way.
[[nodiscard]] std::filesystem::path RuntimeFolder();

/// Makes a folder and those above it, closed to others. False if it can't be had.
[[nodiscard]] bool MakePrivateFolder(const std::filesystem::path& folder);

} // namespace corvane
