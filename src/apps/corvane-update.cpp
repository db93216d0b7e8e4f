// What a restart of Corvane begins with: installs an update that waits, and starts the program.
#include "apps/support/UpdateSettings.h"
#include "desktop/EventLoop.h"
#include "desktop/QtDialogs.h"
#include "kolib/update/Versions.h"
#include "system/DiskFiles.h"
#include "system/KORegistry.h"
#include "system/Programs.h"
#include "system/UserFolders.h"
#include "update/UpdateInstaller.h"

#include <QProcess>

#include <chrono>
#include <thread>
#include <unistd.h>

namespace {

using namespace corvane;

std::string whatIsWrong(const DownloadFolder& folder, const UpdateSource& source,
                        const UpdateManifest& update) {
    if (IsNewer(source.version, update.version).value_or(true))
        return update.version + " is not newer than " + source.version;
    const auto key = Minisign::readKey(source.key);
    const Handle package = folder.openToRead(DownloadFolder::Package);
    return key ? WhatIsWrongWith(package.get(), folder.signatureText(), update, *key)
               : "this build of Corvane has no updates";
}

/// As bytes, not as a path: what is installed is what is handed over here.
void handOver(QProcess& process, const std::string& signature, int package) {
    const auto write = [&process](const char* bytes, qint64 count) {
        return process.write(bytes, count) == count && process.waitForBytesWritten(-1);
    };
    std::vector<char> piece(1U << 16U);
    if (!write(signature.data(), static_cast<qint64>(signature.size())))
        return;
    for (ssize_t count = 0; (count = ::read(package, piece.data(), piece.size())) > 0;)
        if (!write(piece.data(), count))
            return;
}

/// With the dialog of the system that asks for the password of somebody who may.
InstallOutcome install(const DownloadFolder& folder, const std::string& programs,
                       const UpdateManifest& update) {
    using Kind = InstallOutcome::Kind;
    constexpr int dismissed = 126;
    constexpr int notAllowed = 127;
    const Handle package = folder.openToRead(DownloadFolder::Package);
    std::string signature = folder.signatureText();
    if (!signature.ends_with('\n'))
        signature += '\n';
    QProcess process;
    process.start("pkexec", {QString::fromStdString(programs + "corvane-install-update"),
                             QString::fromStdString(update.version)});
    if (!process.waitForStarted())
        return {Kind::NotNow, "the rights can't be asked for, since pkexec is not installed"};
    handOver(process, signature, package.get());
    process.closeWriteChannel();
    process.waitForFinished(-1);
    const std::string said = process.readAllStandardError().trimmed().toStdString();
    if (process.exitStatus() != QProcess::NormalExit)
        return {Kind::Interrupted, "the installation was interrupted"};
    switch (process.exitCode()) {
    case 0:
        return {};
    case 1:
        return {Kind::Refused, said};
    case dismissed:
        return {Kind::NotNow, "no password was given"};
    case notAllowed:
        return {Kind::NotNow, "the rights were not given"};
    default:
        return {Kind::NotNow, said};
    }
}

} // namespace

int main(int argc, char** argv) {
    DesktopApplication desktop(argc, argv);
    const UpdateSource source = OwnUpdateSource();
    DiskFiles files;
    SettingsStore settings(ConfigurationFolder(), files);
    const KORegistry registry(settings);
    UpdateRecordFile record(source.records, files);
    DownloadFolder folder(source.folder);
    QtDialogs dialogs;
    SystemPrograms programs;
    UpdateInstaller({registry, dialogs, record,
                     [&](const UpdateManifest& update) {
                         return update.version == source.version && source.installedWhole();
                     },
                     [&](const UpdateManifest& update) {
                         std::string wrong;
                         return folder.open(wrong) ? whatIsWrong(folder, source, update) : wrong;
                     },
                     [&](const UpdateManifest& update) {
                         return install(folder, programs.ProgramDirectory(), update);
                     },
                     [&] { folder.clear(); },
                     [] { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }})
        .run();
    std::string arguments;
    for (int i = 1; i < argc; ++i)
        (arguments += i > 1 ? " " : "") += argv[i];
    return programs.Start(programs.ProgramDirectory() + "corvane", arguments) ? 0 : 1;
}
