#include "apps/support/Program.h"
#include "desktop/LinkWindow.h"
#include "shell/Startup.h"

#include <QApplication>

#include <iostream>

int main(int argc, char** argv) {
    using namespace corvane;
    std::string commandLine;
    for (int i = 1; i < argc; ++i)
        (commandLine += i > 1 ? " " : "") += argv[i];
    const Launch launch = ReadCommandLine(commandLine);
    if (launch.registerOnly)
        return 0;

    QApplication application(argc, argv);
    Program program(launch.modes);
    const Connection onLine = program.debugger.WritingLine.connect(
        [](const std::string& line) { std::cerr << line << '\n'; });
    program.link.setMaintainConnection(true);
    LinkStatus status(program.link, program.products);
    LinkWindow window(program.link, status);
    window.QWidget::show();
    return QApplication::exec();
}
