#include "apps/support/InstallRoom.h"

namespace corvane {

RootInstaller::Room OwnInstallRoom() {
    RootInstaller::Room room;
    room.key = CORVANE_UPDATE_KEY;
    room.folder = "/var/lib/corvane";
    return room;
}

} // namespace corvane
