#pragma once

#include "base/Handle.h"
#include "kolib/update/Minisign.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace corvane {

/// The privileged side of an update, which trusts nobody: takes a signature and a package as one
/// stream of bytes and no path, copies the package to where only it can write, verifies it there,
/// and lets the system's package manager install that copy. Knows no toolkit, reads no setting and
/// no variable of the environment.
class RootInstaller {
  public:
    /// What differs between a system and a test; fixed when the program is built.
    struct Room {
        std::string key;    ///< The publisher's public key in minisign's format.
        std::string folder; ///< For the copy. Made if need be, but not the folder above it.
        uid_t owner = 0;    ///< Who must own the folder.
        std::vector<std::string> dpkg{"/usr/bin/dpkg"};
        std::vector<std::string> dpkgQuery{"/usr/bin/dpkg-query"};
        std::vector<std::string> dpkgDeb{"/usr/bin/dpkg-deb"};
    };
    enum class Outcome {
        Installed = 0, ///< Or, of a step on the way there: go on.
        Refused = 1,   ///< This package is not one to be installed here.
        Failed = 2     ///< The system could not.
    };

    explicit RootInstaller(Room room) : room_(std::move(room)) {}

    /// `input` holds the four lines of the signature and then the package. Only a package of ours
    /// is installed, only of exactly this version, and only over a lower one; or over the same one
    /// if the system was interrupted while installing that.
    [[nodiscard]] Outcome install(const std::string& version, int input);
    /// Why it was refused or failed.
    [[nodiscard]] const std::string& why() const { return why_; }

  private:
    Outcome refuse(const std::string& why);
    Outcome fail(const std::string& why);
    [[nodiscard]] Outcome openFolder();
    [[nodiscard]] std::optional<Minisign::Signature> readSignature(int input);
    [[nodiscard]] Outcome copy(int input);
    [[nodiscard]] Outcome fits(const std::string& version);
    [[nodiscard]] Outcome handOver();
    [[nodiscard]] std::string copyPath() const { return room_.folder + "/update.deb"; }

    Room room_;
    Handle folder_;
    Handle copy_;
    std::string why_;
};

} // namespace corvane
