#pragma once

#include <filesystem>

namespace corvane {

/// A folder of the user's own that nobody else may enter; no symbolic link to one.
[[nodiscard]] bool IsPrivateFolder(const std::filesystem::path& folder);

} // namespace corvane
