#pragma once

#include "base/FileDoor.h"

namespace corvane {

/// The files of this machine. Replacing writes to a new file in the same folder, forces it to the
/// disk and renames it over the old one; permissions stay, and a symbolic link is followed.
class DiskFiles final : public FileDoor {
  public:
    /// Larger files are refused, so that no file can use up the memory.
    static constexpr std::size_t SizeLimit = 1U << 30U; // bytes

    [[nodiscard]] ReadResult ReadWhole(const std::string& path, std::string& bytes) override;
    [[nodiscard]] bool ReplaceWhole(const std::string& path, std::string_view bytes) override;
};

} // namespace corvane
