#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// The way to whole files. Neither operation throws.
class FileDoor {
  public:
    enum class ReadResult { Done, NotFound, Failed };

    virtual ~FileDoor() = default;
    /// Fills `bytes` with all of a regular file.
    [[nodiscard]] virtual ReadResult ReadWhole(const std::string& path, std::string& bytes) = 0;
    /// Puts the bytes in the file's place so that at every moment either the old content or the
    /// new one is there, whole. False if that failed; the old content then stands.
    [[nodiscard]] virtual bool ReplaceWhole(const std::string& path, std::string_view bytes) = 0;
};

} // namespace corvane
