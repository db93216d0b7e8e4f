#pragma once

#include "apps/support/Program.h"

#include <string>
#include <vector>

namespace corvane {

/// Waits until a product has answered. What is wrong, or nothing.
[[nodiscard]] std::string ConnectAny(Program& program);

/// Commands on the EEPROM of any product. Each gives the exit status.

/// Prints bytes in decimal.
int ReadMemory(Program& program, int address, int length);
int WriteMemory(Program& program, int address, const std::vector<int>& bytes);

} // namespace corvane
