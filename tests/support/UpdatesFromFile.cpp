// Stands for what is otherwise built in: address, key and places stand in a file beside the
// program, a line each.
#include "support/UpdatesFromFile.h"

#include "apps/support/InstallRoom.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace corvane {

UpdatesFromFile UpdatesFromFile::read() {
    UpdatesFromFile settings;
    std::ifstream file(std::filesystem::read_symlink("/proc/self/exe").parent_path() / "updates");
    for (std::string* value :
         {&settings.url, &settings.key, &settings.authority, &settings.folder, &settings.root})
        std::getline(file, *value);
    return settings;
}

RootInstaller::Room OwnInstallRoom() {
    const UpdatesFromFile settings = UpdatesFromFile::read();
    const std::string database = "--admindir=" + settings.root + "/var/lib/dpkg";
    RootInstaller::Room room;
    room.key = settings.key;
    room.folder = settings.folder;
    room.owner = ::geteuid();
    room.dpkg = {"/usr/bin/dpkg",
                 "--force-not-root",
                 "--force-script-chrootless",
                 "--instdir=" + settings.root,
                 database,
                 "--log=/dev/null"};
    room.dpkgQuery.push_back(database);
    return room;
}

} // namespace corvane
