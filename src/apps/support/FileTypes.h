#pragma once

#include "link/KOProductList.h"
#include "system/DesktopFiles.h"

namespace corvane {

/// What desktops shall know of the program and its products' documents. An empty command means the
/// program on the person's path. Needs the program's pictures.
[[nodiscard]] DesktopProgram DescribeForDesktop(const KOProductList& products,
                                                const std::string& command);

/// Lets documents open the running program: in the settings, and in the user's data folder unless
/// the system knows the program anyhow. Writes only what has changed.
void RegisterFileTypes(const KOProductList& products, SettingsStore& store, FileDoor& files);

} // namespace corvane
