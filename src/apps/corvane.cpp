#include "apps/support/FileTypes.h"
#include "apps/support/Program.h"
#include "apps/support/UpdateSettings.h"
#include "desktop/EventLoop.h"
#include "desktop/InstanceDoor.h"
#include "desktop/LinkWatch.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDialogs.h"
#include "desktop/SystemColors.h"
#include "shell/Startup.h"
#include "shell/WindowSizes.h"
#include "system/UserFolders.h"
#include "update/UpdateStatusForm.h"

#include <iostream>
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

/// A desktop shows that a program starts until the program shows a window, and the window of
/// another start does not count. So one is shown for a moment, where nobody sees it.
void endStartupNotice(int argc, char** argv) {
    if (std::getenv("DESKTOP_STARTUP_ID") == nullptr)
        return;
    const DesktopApplication desktop(argc, argv);
    QWidget notice(nullptr, Qt::ToolTip);
    notice.setGeometry(-2, -2, 1, 1);
    notice.show();
    QApplication::processEvents();
}

} // namespace

int main(int argc, char** argv) {
    std::string commandLine;
    for (int i = 1; i < argc; ++i)
        (commandLine += i > 1 ? " " : "") += argv[i];
    const Launch launch = ReadCommandLine(commandLine);
    if (!launch.toTell.empty()) {
        std::cout << launch.toTell;
        return 0;
    }
    if (launch.registerOnly)
        return registerOnly(launch.modes);

    InstanceChannel channel(RuntimeFolder());
    if (channel.EarlierInstanceRuns() &&
        HandOver(channel, launch.fileToOpen, activationToken(),
                 [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); })) {
        endStartupNotice(argc, argv);
        return 0;
    }

    // Only now is there a desktop to talk to, so that a second start has long handed over.
    DesktopApplication desktop(argc, argv);
    FollowSystemColors();
    QApplication::setApplicationName("corvane");
    QApplication::setDesktopFileName(DesktopProgram::Id);
    Program program(launch.modes);
    program.setRepaint(RepaintWithoutInput);
    program.journals.InPieces = true;
    const BetweenEvents keeping([&program] { program.journals.WriteOut(); });

    QtDialogs dialogs;
    Workplace place = program.workplace(dialogs, dialogs);
    place.journals = &program.journals;
    const QtKeyboard keyboard;
    const ProductControls controls(place, keyboard);
    Application application(program.programs, dialogs);
    UpdateSource source = OwnUpdateSource();
    const bool hasUpdates = !source.url.empty();
    source.tell = [&program](const std::string& line) { program.debug.DebugWriteLine(line); };
    QtUpdates updates(std::move(source), program.files);
    SoftwareUpdateBand band(updates, program.registry, program.clock);
    UpdateStatusForm updateStatus(updates, band);
    SettingsStore windows(StateFolder() / "windows", program.files);
    WindowSizes sizes(windows);
    MainForm form(place, controls, application);
    form.setBand(band);
    if (!hasUpdates)
        form.setNoUpdates();
    form.setWindowSizes(sizes);
    LinkStatus status(program.link);
    const LinkWatch watch(program.link, program.device);
    MainWindow window(form, status);
    window.setBand(band);
    window.setUpdateStatus(updateStatus);
    dialogs.setParent(&window);
    InstanceDoor door(channel, window, [&form](const std::string& path) { form.OpenFile(path); });
    const Connection onEnding = application.Ending.connect([&] {
        door.close();
        RegisterFileTypes(program.products, program.settings, program.files);
    });
    bool ended = false;
    const Connection onClosed = form.Closed.connect([&ended] {
        ended = true;
        QCoreApplication::exit();
    });
    const Connection onTick = form.tmrUpdate.Fired.connect([&] { program.leaveIfAsked(); });
    // The window first: a file that can't be opened is told over it.
    window.show();
    form.Initialize(launch.fileToOpen);
    return ended || form.control() == nullptr ? 0 : DesktopApplication::exec();
}
