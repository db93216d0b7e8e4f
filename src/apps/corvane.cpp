#include "apps/support/Program.h"
#include "apps/support/UpdateSettings.h"
#include "desktop/EventLoop.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDialogs.h"
#include "shell/Startup.h"
#include "update/SoftwareUpdateBand.h"

int main(int argc, char** argv) {
    using namespace corvane;
    std::string commandLine;
    for (int i = 1; i < argc; ++i)
        (commandLine += i > 1 ? " " : "") += argv[i];
    const Launch launch = ReadCommandLine(commandLine);
    if (launch.registerOnly)
        return 0;

    DesktopApplication desktop(argc, argv);
    QApplication::setApplicationName("corvane");
    Program program(launch.modes);
    program.setRepaint(RepaintWithoutInput);

    QtDialogs dialogs;
    const Workplace place = program.workplace(dialogs, dialogs);
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
    // The window first: a file that can't be opened is told over it.
    window.show();
    form.Initialize(launch.fileToOpen);
    return form.control() == nullptr ? 0 : DesktopApplication::exec();
}
