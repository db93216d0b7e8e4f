#pragma once

#include <string>
#include <vector>

namespace corvane {

/// Who is connected to a local socket that listens at this path: the other ends' files as the
/// system names them among those that a process has open, such as "socket:[4711]". Empty if the
/// system does not tell.
[[nodiscard]] std::vector<std::string> PeersOf(const std::string& path);

} // namespace corvane
