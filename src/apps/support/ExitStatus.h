#pragma once

#include "link/JobOutcome.h"

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

/// Says how a job ended, unless a message has told it, and gives the exit status.
inline int Report(const JobOutcome& outcome) {
    if (outcome.done())
        std::cout << outcome.text << '\n';
    else if (!outcome.told)
        Fail(outcome.cure.empty() ? outcome.text : outcome.text + " " + outcome.cure);
    return outcome.done() ? ExitStatus::Done : ExitStatus::Failed;
}

} // namespace corvane
