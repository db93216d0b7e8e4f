#include "shell/Startup.h"

#include "base/Product.h"
#include "base/Text.h"

#include <algorithm>
#include <filesystem>

namespace corvane {

namespace {

constexpr int MaxPasses = 10;

/// Says the same from every folder and in every program.
std::string fullPath(const std::string& file) {
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(file, error);
    if (error || file.empty())
        return file;
    // What ".." means is the file system's to say.
    const bool climbs = std::find(full.begin(), full.end(), "..") != full.end();
    return climbs ? full.string() : full.lexically_normal().string();
}

std::string fileFrom(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
        text = text.substr(1, text.size() - 2);
    return fullPath(std::string(Trim(text)));
}

constexpr const char* HelpText = R"(Usage: corvane [FILE | OPTION]

Opens a document, or a new light program, in a window. If Corvane runs already, its window opens the
document.

  -debug      write the log of the link into a window of its own
  -program    write the strings of Corvane links into blank chips, one after the other
  -program2   the same for any link device, whatever it holds
  -eeprom     start with the EEPROM editor
  -register   let documents open this program, and end at once
  --help      print this, and end
  --version   print the version, and end

An option stands alone.
)";

} // namespace

Launch ReadCommandLine(std::string_view commandLine) {
    Launch launch;
    const std::string option = LowerCase(commandLine);
    if (option == "-debug" || option == "-debug2")
        launch.modes.DebugMode = true;
    else if (option == "-program")
        launch.modes.ProgramMode = true;
    else if (option == "-program2")
        launch.modes.ProgramMode = launch.modes.ProgramAnyDevice = true;
    else if (option == "-eeprom")
        launch.modes.EEPROMMode = true;
    else if (option == "-register")
        launch.registerOnly = true;
    else if (option == "--help")
        launch.toTell = HelpText;
    else if (option == "--version")
        launch.toTell = std::string(ProgramName) + " " + ProgramVersion + "\n";
    else if (option != "-slow") // accepted for old habits; nothing follows from it
        launch.fileToOpen = fileFrom(commandLine);
    return launch;
}

bool HandOver(const InstanceChannel& channel, const std::string& fileToOpen,
              const std::string& activationToken,
              const std::function<void(std::chrono::milliseconds)>& sleep) {
    for (int counter = 0; counter >= -MaxPasses && counter <= MaxPasses;) {
        const bool found = channel.Post({InstanceRecord::Foreground, activationToken});
        if (found && !fileToOpen.empty() && channel.Deliver({InstanceRecord::Path, fileToOpen}))
            return true;
        counter += found ? 1 : -1;
        sleep(HandOverPass);
        if (counter > MaxPasses)
            return fileToOpen.empty(); // a file that nobody takes is opened here
    }
    return false;
}

void RegisterAllFileAssociations(const KOProductList& products, SettingsStore& store) {
    for (int index = 1; index <= products.Size(); ++index)
        products.ByIndex(index).RegisterFileAssociations(store);
}

} // namespace corvane
