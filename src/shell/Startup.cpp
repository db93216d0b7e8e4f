#include "shell/Startup.h"

#include "base/Text.h"
#include "link/KOCommLink.h"
#include "system/File.h"

#include <filesystem>

namespace corvane {

namespace {

std::string fileFrom(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
        text = text.substr(1, text.size() - 2);
    return std::string(Trim(text));
}

constexpr int MaxPasses = 10;

/// The other instance has a working folder of its own.
std::string fullPath(const std::string& file) {
    std::error_code error;
    const std::string full = std::filesystem::absolute(file, error).string();
    return error ? file : full;
}

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
    else if (option != "-slow") // accepted for old habits; nothing follows from it
        launch.fileToOpen = fileFrom(commandLine);
    return launch;
}

std::string FirstControlClass(const Launch& launch, const KOProductList& products) {
    const KOProductProfile* product = products.ByExtension(KOIOExtension(launch.fileToOpen));
    return product != nullptr ? product->Class : StartClass(launch.modes);
}

bool HandOver(const InstanceChannel& channel, const std::string& fileToOpen,
              const std::string& activationToken,
              const std::function<void(std::chrono::milliseconds)>& sleep) {
    for (int counter = 0; counter >= -MaxPasses && counter <= MaxPasses;) {
        const bool found = channel.Post({InstanceRecord::Foreground, activationToken});
        if (found && !fileToOpen.empty() &&
            channel.Deliver({InstanceRecord::Path, fullPath(fileToOpen)}))
            return true;
        counter += found ? 1 : -1;
        sleep(HandOverPass);
        if (counter > MaxPasses)
            return true;
    }
    return false;
}

void RegisterAllFileAssociations(const KOProductList& products, SettingsStore& store) {
    for (int index = 1; index <= products.Size(); ++index)
        products.ByIndex(index).RegisterFileAssociations(store);
}

} // namespace corvane
