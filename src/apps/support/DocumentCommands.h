#pragma once

#include "apps/support/Program.h"

#include <string>

namespace corvane {

/// Commands on document files. Each prints its result to the output, or what is wrong to the error
/// output, and gives the exit status.

/// Opens a document and prints what its header says.
int CheckDocument(Program& program, const std::string& file);
/// Opens a document and saves it under another name.
int ConvertDocument(Program& program, const std::string& from, const std::string& to);
/// Prints a line for each journal of a program that is gone: name, type code, changes, file.
int ListLostDocuments(Program& program);
/// Saves what the journal of this name holds as a document, and puts the journal aside.
int RecoverDocument(Program& program, const std::string& name, const std::string& to);

} // namespace corvane
