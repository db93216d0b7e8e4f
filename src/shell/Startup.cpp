#include "shell/Startup.h"

#include "base/Text.h"
#include "link/KOCommLink.h"
#include "system/File.h"

namespace corvane {

namespace {

std::string fileFrom(std::string_view text) {
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"')
        text = text.substr(1, text.size() - 2);
    return std::string(Trim(text));
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

} // namespace corvane
