// Any bytes as relay settings.
#include "FuzzedDocument.h"
#include "relay/PactorDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return corvane::FuzzDocument<corvane::PactorDocument>("Pactor\t3\t2\t0\t1\n", data, size);
}
