#include "apps/support/UpdateSettings.h"

#include "system/UserFolders.h"

namespace corvane {

UpdateSource OwnUpdateSource() {
    UpdateSource source;
    source.url = CORVANE_UPDATE_URL;
    source.key = CORVANE_UPDATE_KEY;
    source.version = CORVANE_VERSION;
    source.folder = CacheFolder() / "update";
    return source;
}

} // namespace corvane
