#include "shell/Application.h"

namespace corvane {

void Application::RunFromProgramDirectory(const std::string& program,
                                          const std::string& arguments) const {
    std::string path = programs_.ProgramDirectory();
    if (!path.empty() && path.back() != '/' && path.back() != '\\')
        path += '/';
    path += program;
    if (programs_.Start(path, arguments))
        return;
    const std::string commandLine = "\"" + path + "\"" + (arguments.empty() ? "" : " " + arguments);
    dialogs_.ShowError("Failed to start " + commandLine + ".");
}

void Application::ShutDownApplication() {
    // Whoever starts next must not find this run any more: the mark goes before it is started.
    Ending.raise();
    if (!pendingProgram_.empty())
        RunFromProgramDirectory(pendingProgram_, pendingArguments_);
}

} // namespace corvane
