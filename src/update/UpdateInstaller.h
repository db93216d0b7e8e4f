#pragma once

#include "controls/Dialogs.h"
#include "kolib/update/UpdateRecord.h"
#include "system/KORegistry.h"

#include <functional>

namespace corvane {

/// What became of an installation.
struct InstallOutcome {
    enum class Kind {
        Done,
        Refused,    ///< The package is not one to be installed.
        NotNow,     ///< The rights were not given, or the system could not; another time it may.
        Interrupted ///< Nobody knows how far it has come.
    };

    Kind kind = Kind::Done;
    std::string why; ///< Empty if it is done.
};

/// Installs an update that waits for it: one that the settings carry the mark of and the record
/// calls ready. What was not verified is not handed on, and whatever comes of it, the mark is gone
/// afterwards and the record says how it stands.
class UpdateInstaller {
  public:
    struct Surroundings {
        const KORegistry& registry;
        Dialogs& dialogs;
        UpdateRecordFile& record;
        /// Whether it has come another way since.
        std::function<bool(const UpdateManifest& update)> isInstalled;
        /// What is wrong with the package that lies there; empty if it is good.
        std::function<std::string(const UpdateManifest& update)> whatIsWrong;
        /// Hands the package to the system, which asks for the rights.
        std::function<InstallOutcome(const UpdateManifest& update)> install;
        /// Deletes the package.
        std::function<void()> clear;
        /// Lets a moment pass in which the program that was left may end.
        std::function<void()> wait;
    };

    explicit UpdateInstaller(Surroundings surroundings) : with_(std::move(surroundings)) {}

    /// True if an update was installed. A failure has been told.
    bool run();

  private:
    [[nodiscard]] bool takeMark() const;
    [[nodiscard]] bool acquire() const;
    InstallOutcome install(const UpdateManifest& update, UpdateRecord& record) const;
    void tell(const InstallOutcome& outcome) const;

    Surroundings with_;
};

} // namespace corvane
