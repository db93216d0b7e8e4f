#pragma once

#include "base/RunModes.h"
#include "link/KOProductList.h"
#include "system/InstanceChannel.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace corvane {

/// What the command line asks for.
struct Launch {
    RunModes modes;
    bool registerOnly = false; ///< Write the file associations and end.
    std::string toTell;        ///< Text to print, and end; empty for none.
    std::string fileToOpen;    ///< Full path; empty for none.
};

/// Reads a whole command line: one option alone, or else a file, in double quotes or not. A file's
/// name is completed by the working folder.
[[nodiscard]] Launch ReadCommandLine(std::string_view commandLine);

/// Hands the file over to the instance that runs already and shows that one's window. An instance
/// that begins or ends is waited for, in passes of `HandOverPass` and 11 at most. True if it has
/// been found and has dealt with the file, so that this process must end; otherwise it opens the
/// file itself.
inline constexpr std::chrono::milliseconds HandOverPass{500};
[[nodiscard]] bool HandOver(const InstanceChannel& channel, const std::string& fileToOpen,
                            const std::string& activationToken,
                            const std::function<void(std::chrono::milliseconds)>& sleep);

/// Lets documents of all products open this program, as far as they are meant to.
void RegisterAllFileAssociations(const KOProductList& products, SettingsStore& store);

} // namespace corvane
