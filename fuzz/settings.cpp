// Any bytes as a settings store: damaged, or read, written and read again as the same.
#include "system/SettingsStore.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    const auto read = ParseSettings(std::string(data, data + size));
    if (const auto again = ParseSettings(WriteSettings(read.keys));
        again.damaged || again.keys != read.keys)
        std::abort();
    return 0;
}
