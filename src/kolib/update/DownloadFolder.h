#pragma once

#include "base/Handle.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace corvane {

/// Where a package is fetched and kept: a folder of the user's own, closed to others. All that lies
/// in it is reached from the open folder and only if it is a plain file of the user's own with one
/// name, so that a symbolic link leads nowhere, and nobody else's file is written or deleted.
class DownloadFolder {
  public:
    static constexpr const char* Part = "update.part";
    static constexpr const char* Package = "update.deb";
    static constexpr const char* Signature = "update.deb.minisig";

    /// Nothing is touched before it is opened.
    explicit DownloadFolder(std::filesystem::path path) : path_(std::move(path)) {}

    /// Opens the folder, and makes it if need be. False if it is a link, somebody else's, or can't
    /// be had; `whyNot` then tells.
    [[nodiscard]] bool open(std::string& whyNot);

    /// What has come of a package, for appending; a new file if there is none that may be used.
    [[nodiscard]] Handle openPart() const;
    /// One of the three, for reading. Not valid if there is none that may be used.
    [[nodiscard]] Handle openToRead(const char* name) const;
    /// The signature's text; empty if there is none, or it is longer than one can be.
    [[nodiscard]] std::string signatureText() const;
    /// The part becomes the package, with this signature. False if the disk has no room.
    [[nodiscard]] bool keep(std::string_view signature) const;
    /// Removes all three, whatever they are; what a link leads to stays.
    void clear() const;

  private:
    std::filesystem::path path_;
    Handle folder_;
};

} // namespace corvane
