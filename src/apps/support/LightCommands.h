#pragma once

#include "apps/support/Program.h"
#include "light/LumoraDocument.h"

#include <optional>

namespace corvane {

/// Opens a light program; what is wrong with it is told.
[[nodiscard]] bool OpenLight(Program& program, LumoraDocument& document, const std::string& file);

/// Commands on light programs. Each gives the exit status.

/// Prints what would go into a controller: for the newer one the bytes in decimal, or raw into the
/// file `out` if it is not empty; for the older one a line a transfer.
int CompileLight(Program& program, const std::string& file, bool older, const std::string& out,
                 std::optional<bool> answer);
/// Puts a program into the controller on the link.
int ProgramLight(Program& program, const std::string& file, std::optional<bool> answer);

} // namespace corvane
