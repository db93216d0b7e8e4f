#pragma once

#include "base/RunModes.h"
#include "link/KOProductList.h"

#include <string>
#include <string_view>

namespace corvane {

/// What the command line asks for.
struct Launch {
    RunModes modes;
    bool registerOnly = false; ///< Write the file associations and end.
    std::string fileToOpen;    ///< Empty for none.
};

/// Reads a whole command line: one option alone, or else a file, in double quotes or not.
[[nodiscard]] Launch ReadCommandLine(std::string_view commandLine);

/// The class of the control to show first: that of the file's product, if its extension belongs
/// to one, and otherwise what the run modes say.
[[nodiscard]] std::string FirstControlClass(const Launch& launch, const KOProductList& products);

} // namespace corvane
