#include "apps/support/UpdateSettings.h"

#include "base/Product.h"
#include "system/UserFolders.h"

namespace corvane {

UpdateSource OwnUpdateSource() {
    UpdateSource source;
    source.url = CORVANE_UPDATE_URL;
    source.key = CORVANE_UPDATE_KEY;
    source.version = ProgramVersion;
    source.folder = CacheFolder() / "update";
    return source;
}

} // namespace corvane
