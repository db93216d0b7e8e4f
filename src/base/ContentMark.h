#pragma once

#include "base/FileDoor.h"

#include <cstdint>

namespace corvane {

/// A short text that stands for a content: another content has almost surely another one. Never
/// empty.
[[nodiscard]] inline std::string ContentMark(std::string_view bytes) {
    std::uint64_t sum = 14695981039346656037U; // FNV-1a
    for (const char c : bytes)
        sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211U;
    return std::to_string(bytes.size()) + "-" + std::to_string(sum);
}

/// The same of a file as it is now; empty if there is no such file or it can't be read.
[[nodiscard]] inline std::string FileMark(FileDoor& files, const std::string& path) {
    std::string bytes;
    return files.ReadWhole(path, bytes) == FileDoor::ReadResult::Done ? ContentMark(bytes)
                                                                      : std::string();
}

} // namespace corvane
