#pragma once

#include "apps/support/DocumentJob.h"
#include "apps/support/Program.h"

#include <string>

namespace corvane {

/// Commands that do without a window what a person does in one, by the same rules. Each gives the
/// exit status.

/// Prints the seven bytes that a relay file is for the product, in decimal, or writes them raw.
int CompileRelay(Program& program, const DocumentJob& job);
int ProgramRelay(Program& program, const DocumentJob& job);
/// The questions are about values that are shorter or longer than their variables.
int ProgramEEPROM(Program& program, const DocumentJob& job);
/// Puts a file into a slot of the PWM product.
int ProgramQuillon(Program& program, const DocumentJob& job);
/// Reads a relay product into a new file.
int ReadRelay(Program& program, const std::string& out);
/// Reads the values of the variables of one file into another.
int ReadEEPROM(Program& program, const std::string& in, const std::string& out);

} // namespace corvane
