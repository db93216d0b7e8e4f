// Any bytes as a light program.
#include "FuzzedDocument.h"
#include "light/LumoraDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return corvane::FuzzDocument<corvane::LumoraDocument>("Lumora\t3\t2\t0\t2\n", data, size);
}
