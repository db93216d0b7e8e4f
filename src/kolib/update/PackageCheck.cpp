#include "kolib/update/PackageCheck.h"

#include <sys/stat.h>

namespace corvane {

std::string WhatIsWrongWith(int package, std::string_view signatureText,
                            const UpdateManifest& manifest, const Minisign::PublicKey& key) {
    struct stat status {};
    if (package < 0 || ::fstat(package, &status) != 0)
        return "the package is missing";
    if (status.st_size != manifest.size)
        return "the package has " + std::to_string(status.st_size) + " bytes and not " +
               std::to_string(manifest.size);
    if (Minisign::sha256Of(package) != manifest.sha256)
        return "the package is another one than the manifest tells of";
    const auto signature = Minisign::readSignature(signatureText);
    if (!signature)
        return "the package's signature is none";
    if (signature->trustedComment != manifest.packageComment())
        return "the package's signature is that of \"" + signature->trustedComment +
               "\" and not of \"" + manifest.packageComment() + "\"";
    if (!Minisign::verifyFile(key, *signature, package))
        return "the package is not signed by us";
    return {};
}

} // namespace corvane
