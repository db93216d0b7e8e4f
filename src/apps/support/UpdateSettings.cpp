#include "apps/support/UpdateSettings.h"

#include "apps/support/InstallRoom.h"
#include "base/Product.h"
#include "system/UserFolders.h"

#include <QProcess>

namespace corvane {

namespace {

bool installedWhole(const std::vector<std::string>& dpkgQuery) {
    QStringList words{"--show", "--showformat=${db:Status-Status}", "corvane"};
    for (std::size_t i = dpkgQuery.size(); i > 1; --i)
        words.prepend(QString::fromStdString(dpkgQuery[i - 1]));
    QProcess query;
    query.start(QString::fromStdString(dpkgQuery.front()), words);
    return !query.waitForFinished() || query.exitCode() != 0 ||
           query.readAllStandardOutput().trimmed() == "installed";
}

} // namespace

UpdateSource OwnUpdateSource() {
    UpdateSource source = BuiltInUpdateSource();
    source.version = ProgramVersion;
    source.folder = CacheFolder() / "update";
    source.records = StateFolder() / "update";
    source.installedWhole = [] { return installedWhole(OwnInstallRoom().dpkgQuery); };
    return source;
}

} // namespace corvane
