// What a restart of Corvane begins with: installs an update that waits, and starts the program.
#include "apps/support/UpdateSettings.h"
#include "desktop/EventLoop.h"
#include "desktop/QtDialogs.h"
#include "kolib/update/Minisign.h"
#include "system/DiskFiles.h"
#include "system/KORegistry.h"
#include "system/Programs.h"
#include "system/UserFolders.h"
#include "update/UpdateInstaller.h"

#include <QProcess>

#include <fstream>
#include <sstream>

namespace {

using namespace corvane;

std::string contentOf(const std::filesystem::path& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

bool isOurs(const UpdateSource& source) {
    const auto key = Minisign::readKey(source.key);
    const auto signature = Minisign::readSignature(contentOf(source.signature()));
    return key && signature && Minisign::verifyFile(*key, *signature, source.package());
}

/// With the dialog of the system that asks for the password of somebody who may.
bool install(const UpdateSource& source) {
    return QProcess::execute("pkexec",
                             {"dpkg", "--install", QString::fromStdString(source.package())}) == 0;
}

} // namespace

int main(int argc, char** argv) {
    DesktopApplication desktop(argc, argv);
    const UpdateSource source = OwnUpdateSource();
    DiskFiles files;
    SettingsStore settings(ConfigurationFolder(), files);
    const KORegistry registry(settings);
    QtDialogs dialogs;
    UpdateInstaller({registry, dialogs, source.package(), source.signature(),
                     [&source] { return isOurs(source); }, [&source] { return install(source); }})
        .run();
    std::string arguments;
    for (int i = 1; i < argc; ++i)
        (arguments += i > 1 ? " " : "") += argv[i];
    SystemPrograms programs;
    return programs.Start(programs.ProgramDirectory() + "corvane", arguments) ? 0 : 1;
}
