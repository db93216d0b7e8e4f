#pragma once

#include "kolib/update/RootInstaller.h"

namespace corvane {

/// What this build installs updates with.
[[nodiscard]] RootInstaller::Room OwnInstallRoom();

} // namespace corvane
