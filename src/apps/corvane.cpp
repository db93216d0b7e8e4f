#include "apps/support/FileTypes.h"
#include "apps/support/Program.h"
#include "apps/support/UpdateSettings.h"
#include "desktop/EventLoop.h"
#include "desktop/InstanceDoor.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDialogs.h"
#include "desktop/SystemColors.h"
#include "shell/Startup.h"
#include "system/UserFolders.h"
#include "update/SoftwareUpdateBand.h"

#include <thread>

namespace {

using namespace corvane;

/// Writes the file associations, and nothing else of a run.
int registerOnly(const RunModes& modes) {
    const KODebug debug(modes);
    const KOProductList products(ProgramVendor(), debug);
    DiskFiles files;
    SettingsStore settings(ConfigurationFolder(), files);
    RegisterFileTypes(products, settings, files);
    return 0;
}

/// What the desktop gave this start so that its click may bring a window to the front.
std::string activationToken() {
    const char* token = std::getenv("XDG_ACTIVATION_TOKEN");
    return token == nullptr ? "" : token;
}

} // namespace

int main(int argc, char** argv) {
    std::string commandLine;
    for (int i = 1; i < argc; ++i)
        (commandLine += i > 1 ? " " : "") += argv[i];
    const Launch launch = ReadCommandLine(commandLine);
    if (launch.registerOnly)
        return registerOnly(launch.modes);

    InstanceChannel channel(RuntimeFolder());
    if (channel.EarlierInstanceRuns() &&
        HandOver(channel, launch.fileToOpen, activationToken(),
                 [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); }))
        return 0;

    DesktopApplication desktop(argc, argv);
    FollowSystemColors();
    QApplication::setApplicationName("corvane");
    QApplication::setDesktopFileName(DesktopProgram::Id);
    Program program(launch.modes);
    program.setRepaint(RepaintWithoutInput);

    QtDialogs dialogs;
    Workplace place = program.workplace(dialogs, dialogs);
    place.journals = &program.journals;
    const QtKeyboard keyboard;
    const ProductControls controls(place, keyboard);
    Application application(program.programs, dialogs);
    QtUpdates updates(OwnUpdateSource());
    SoftwareUpdateBand band(updates, program.registry, program.clock);
    MainForm form(place, controls, application);
    form.setBand(band);
    LinkStatus status(program.link, program.products);
    MainWindow window(form, status);
    window.setBand(band);
    dialogs.setParent(&window);
    InstanceDoor door(channel, window, [&form](const std::string& path) { form.OpenFile(path); });
    const Connection onEnding = application.Ending.connect([&] {
        door.close();
        RegisterFileTypes(program.products, program.settings, program.files);
    });
    const Connection onTick = form.tmrUpdate.Fired.connect([&] { program.leaveIfAsked(); });
    // The window first: a file that can't be opened is told over it.
    window.show();
    form.Initialize(launch.fileToOpen);
    return form.control() == nullptr ? 0 : DesktopApplication::exec();
}
