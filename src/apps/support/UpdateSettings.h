#pragma once

#include "kolib/update/QtUpdates.h"

namespace corvane {

/// Where this build's updates come from. Empty address and key for one that has none.
[[nodiscard]] UpdateSource OwnUpdateSource();

/// The address and the key alone.
[[nodiscard]] UpdateSource BuiltInUpdateSource();

} // namespace corvane
