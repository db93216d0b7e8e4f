#include "system/DesktopFiles.h"

#include "system/Programs.h"
#include "system/UserFolders.h"

#include <cstdlib>
#include <sstream>

namespace corvane {

namespace fs = std::filesystem;

namespace {

const std::string entryFile = std::string("applications/") + DesktopProgram::Id + ".desktop";
constexpr const char* packageFile = "mime/packages/corvane.xml";

/// A word of a command in a desktop entry: in quotes, and escaped once more as text of the entry.
std::string quoted(const std::string& word) {
    std::string inQuotes = "\"";
    for (const char c : word) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            inQuotes += '\\';
        inQuotes += c;
        if (c == '%')
            inQuotes += '%';
    }
    std::string text;
    for (const char c : inQuotes + '"')
        text += c == '\\' ? "\\\\" : std::string(1, c);
    return text;
}

} // namespace

std::string MimePackage(const std::vector<DocumentKind>& kinds) {
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n";
    for (const DocumentKind& kind : kinds)
        xml += "  <mime-type type=\"" + kind.type() + "\">\n    <comment>" + kind.description +
               "</comment>\n    <sub-class-of type=\"text/plain\"/>\n    <icon name=\"" +
               kind.iconName() + "\"/>\n    <glob pattern=\"*." + kind.extension +
               "\"/>\n  </mime-type>\n";
    return xml + "</mime-info>\n";
}

std::string DesktopEntry(const DesktopProgram& program) {
    std::string types;
    for (const DocumentKind& kind : program.kinds)
        if (kind.opensProgram)
            types += kind.type() + ";";
    std::string entry = "[Desktop Entry]\n"
                        "Type=Application\n"
                        "Name=Corvane\n"
                        "GenericName=Light Programs and Device Settings\n"
                        "Comment=Draw light programs for model machines and set up their devices\n";
    entry += "Exec=" + (program.command.empty() ? "corvane" : quoted(program.command)) + " %f\n";
    entry += "Icon=" + std::string(DesktopProgram::Id) + "\n";
    entry += "MimeType=" + types + "\n";
    return entry + "Categories=Utility;Electronics;Engineering;\n"
                   "Keywords=model;lights;RC;controller;EEPROM;relay;\n"
                   "StartupNotify=true\n"
                   "StartupWMClass=corvane\n"
                   "Terminal=false\n";
}

std::vector<std::pair<fs::path, std::string>>
DesktopFiles::contents(const DesktopProgram& program) const {
    const fs::path icons = share_ / "icons/hicolor/scalable";
    std::vector<std::pair<fs::path, std::string>> all{
        {share_ / packageFile, MimePackage(program.kinds)},
        {share_ / entryFile, DesktopEntry(program)},
        {icons / "apps" / (std::string(DesktopProgram::Id) + ".svg"), program.icon}};
    for (const DocumentKind& kind : program.kinds)
        all.emplace_back(icons / "mimetypes" / (kind.iconName() + ".svg"), kind.icon);
    return all;
}

bool DesktopFiles::Write(const DesktopProgram& program) {
    bool changed = false;
    for (const auto& [file, content] : contents(program)) {
        std::string present;
        // Written only if it differs: a change has the desktop build its caches anew.
        if (files_.ReadWhole(file, present) == FileDoor::ReadResult::Done && present == content)
            continue;
        changed = (MakePrivateFolder(file.parent_path()) && files_.ReplaceWhole(file, content)) ||
                  changed;
    }
    return changed;
}

bool DesktopFiles::Remove(const DesktopProgram& program) {
    bool changed = false;
    std::error_code error;
    for (const auto& [file, content] : contents(program))
        changed = fs::remove(file, error) || changed;
    return changed;
}

void DesktopFiles::Announce() const {
    for (const auto& [tool, folder] : {std::pair("update-mime-database", "mime"),
                                       std::pair("update-desktop-database", "applications")})
        RunQuietly({tool, (share_ / folder).string()});
}

bool IsInstalledForAll(const fs::path& programFile) {
    const fs::path share = programFile.parent_path().parent_path().parent_path() / "share";
    std::error_code error;
    if (!fs::exists(share / entryFile, error))
        return false;
    const char* folders = std::getenv("XDG_DATA_DIRS");
    std::istringstream all(folders != nullptr && *folders != '\0' ? folders
                                                                  : "/usr/local/share:/usr/share");
    for (std::string folder; std::getline(all, folder, ':');)
        if (fs::equivalent(folder, share, error))
            return true;
    return false;
}

} // namespace corvane
