// Any bytes as a list of EEPROM variables.
#include "FuzzedDocument.h"
#include "eeprom/KOEEPROMDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return corvane::FuzzDocument<corvane::KOEEPROMDocument>("KOEEPROM\t3\t2\t0\t1\n", data, size);
}
