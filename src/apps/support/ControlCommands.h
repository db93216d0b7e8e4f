#pragma once

#include "apps/support/Program.h"

#include <optional>
#include <string>

namespace corvane {

/// Commands that do without a window what a person does in one, by the same rules. Each gives the
/// exit status.

/// Prints the seven bytes that a relay file is for the product, in decimal, or writes them raw into
/// the file `out` if it is not empty.
int CompileRelay(Program& program, const std::string& file, const std::string& out);
int ProgramRelay(Program& program, const std::string& file);
/// `answer` is that to the questions about values that are shorter or longer than their variables.
int ProgramEEPROM(Program& program, const std::string& file, std::optional<bool> answer);
/// Puts a file into a slot of the PWM product, 0 or 1.
int ProgramQuillon(Program& program, const std::string& file, std::size_t slot);
/// Reads a relay product into a new file.
int ReadRelay(Program& program, const std::string& out);
/// Reads the values of the variables of one file into another.
int ReadEEPROM(Program& program, const std::string& in, const std::string& out);

} // namespace corvane
