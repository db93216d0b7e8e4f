#pragma once

#include "apps/support/Program.h"
#include "link/JobOutcome.h"

#include <string>
#include <vector>

namespace corvane {

/// Waits until a product has answered, be it a known one or not.
[[nodiscard]] JobOutcome ReachAny(Program& program);

/// Commands on the EEPROM of any product. Each gives the exit status.

/// Prints bytes in decimal.
int ReadMemory(Program& program, int address, int length);
int WriteMemory(Program& program, int address, const std::vector<int>& bytes);

} // namespace corvane
