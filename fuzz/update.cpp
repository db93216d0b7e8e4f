// Any bytes as what an update server may send: a manifest, a signature, a version, a key.
#include "kolib/update/Minisign.h"
#include "kolib/update/UpdateManifest.h"
#include "kolib/update/UtcTime.h"
#include "kolib/update/Versions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    const std::string text(data, data + size);
    if (const auto manifest = UpdateManifest::read(text))
        if (!IsNewer(manifest->version, "2.21") || manifest->size > UpdateManifest::MaxSize)
            __builtin_trap();
    static_cast<void>(IsNewer(text, "2.21"));
    if (const auto time = ReadUtc(text))
        if (WriteUtc(*time) != text)
            __builtin_trap();
    static_cast<void>(Minisign::readKey(text));
    if (const auto signature = Minisign::readSignature(text))
        if (Minisign::verify({}, *signature, text)) // by nobody's key
            __builtin_trap();
    return 0;
}
