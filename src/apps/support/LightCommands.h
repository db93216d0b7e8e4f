#pragma once

#include "apps/support/DocumentJob.h"
#include "apps/support/Program.h"
#include "light/LumoraDocument.h"

namespace corvane {

/// Opens a light program; what is wrong with it is told.
[[nodiscard]] bool OpenLight(Program& program, LumoraDocument& document, const std::string& file);

/// Prints bytes in decimal, or writes them raw into the file `out` if it is not empty.
int GiveBytes(Program& program, const KOBuffer& bytes, const std::string& out);

/// Commands on light programs. Each gives the exit status.

/// Prints what would go into a controller, or writes it into a file: for the newer one the bytes,
/// for the older one a line a transfer.
int CompileLight(Program& program, const DocumentJob& job);
/// Puts a program into the controller on the link.
int ProgramLight(Program& program, const DocumentJob& job);

} // namespace corvane
