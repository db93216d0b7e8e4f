#pragma once

#include <iostream>
#include <string>

namespace corvane {

/// How a console command ends.
namespace ExitStatus {
inline constexpr int Done = 0;
inline constexpr int Failed = 1;
inline constexpr int WrongUsage = 2;
} // namespace ExitStatus

/// Says what is wrong on the error output.
inline int Fail(const std::string& reason) {
    std::cerr << "corvanectl: " << reason << '\n';
    return ExitStatus::Failed;
}

} // namespace corvane
