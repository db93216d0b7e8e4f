#pragma once

#include "base/FileDoor.h"

#include <filesystem>
#include <string>
#include <vector>

namespace corvane {

/// A kind of document, as desktops shall know it.
struct DocumentKind {
    std::string name; ///< In lower case, without blanks.
    std::string description;
    std::string extension;     ///< Without the dot.
    bool opensProgram = false; ///< A double click on such a document starts the program.
    std::string icon;          ///< An SVG picture, whole.

    /// Its MIME type.
    [[nodiscard]] std::string type() const { return "application/x-corvane-" + name; }
    /// Name of its icon.
    [[nodiscard]] std::string iconName() const { return "application-x-corvane-" + name; }
};

/// What the desktop gets to know of the program.
struct DesktopProgram {
    /// Name of the desktop entry, of the program's icon and of its page in software centres.
    static constexpr const char* Id = "example.ortaline.Corvane";

    std::string command; ///< Program file; empty for "corvane" on the person's path.
    std::string icon;    ///< An SVG picture, whole.
    std::vector<DocumentKind> kinds;
};

/// Text of the file that names the kinds of documents, for the shared MIME-info database.
[[nodiscard]] std::string MimePackage(const std::vector<DocumentKind>& kinds);
/// Text of the desktop entry.
[[nodiscard]] std::string DesktopEntry(const DesktopProgram& program);

/// The files below a folder "share" by which desktops know the program and its documents.
class DesktopFiles {
  public:
    DesktopFiles(std::filesystem::path share, FileDoor& files)
        : share_(std::move(share)), files_(files) {}

    /// Writes what differs from what is there. True if anything did; what can't be written is not
    /// told.
    bool Write(const DesktopProgram& program);
    /// Takes all of them away again. True if there were any.
    bool Remove(const DesktopProgram& program);
    /// Lets the desktop read them anew, with its own tools, where there are any.
    void Announce() const;

  private:
    [[nodiscard]] std::vector<std::pair<std::filesystem::path, std::string>>
    contents(const DesktopProgram& program) const;

    std::filesystem::path share_;
    FileDoor& files_;
};

/// Whether the running program has been installed so that all people here know it: its desktop
/// entry stands beside it in a folder where desktops look.
[[nodiscard]] bool IsInstalledForAll(const std::filesystem::path& programFile);

} // namespace corvane
