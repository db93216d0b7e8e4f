#pragma once

#include <string>

namespace corvane {

/// The other program that has this device node open, such as "minicom (process 1234)". Empty if
/// there is none, or if the system does not tell this user.
[[nodiscard]] std::string HolderOf(const std::string& node);

} // namespace corvane
