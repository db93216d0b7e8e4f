#pragma once

#include "kolib/update/DownloadFolder.h"
#include "kolib/update/Minisign.h"
#include "kolib/update/UpdateManifest.h"

namespace corvane {

/// Whether an open file is the very package that a manifest tells of: its size, its hash, our
/// signature, and the version and name that the signature speaks of. Empty if it is; otherwise what
/// is wrong with it.
[[nodiscard]] std::string WhatIsWrongWith(int package, std::string_view signatureText,
                                          const UpdateManifest& manifest,
                                          const Minisign::PublicKey& key);

} // namespace corvane
