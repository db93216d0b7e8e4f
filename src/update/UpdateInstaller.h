#pragma once

#include "controls/Dialogs.h"
#include "system/KORegistry.h"

#include <filesystem>
#include <functional>

namespace corvane {

/// Installs an update that waits for it. What was not verified is not run, and whatever comes of
/// it, mark and files are gone afterwards.
class UpdateInstaller {
  public:
    struct Surroundings {
        const KORegistry& registry;
        Dialogs& dialogs;
        std::filesystem::path package;
        std::filesystem::path signature;
        /// Whether the package carries our signature.
        std::function<bool()> isOurs;
        /// Hands the package to the system, which asks for the rights. False if it was not
        /// installed.
        std::function<bool()> install;
    };

    explicit UpdateInstaller(Surroundings surroundings) : with_(std::move(surroundings)) {}

    /// True if an update was installed. A failure has been told.
    bool run();

  private:
    [[nodiscard]] bool takeMark() const;

    Surroundings with_;
};

} // namespace corvane
