// What was given when this was built.
#include "apps/support/UpdateSettings.h"

namespace corvane {

UpdateSource BuiltInUpdateSource() {
    UpdateSource source;
    source.url = CORVANE_UPDATE_URL;
    source.key = CORVANE_UPDATE_KEY;
    return source;
}

} // namespace corvane
