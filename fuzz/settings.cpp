// Any bytes as a settings store: damaged, or read, written and read again as the same.
#include "system/SettingsStore.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    if (const auto keys = ParseSettings(std::string(data, data + size)))
        if (ParseSettings(WriteSettings(*keys)) != keys)
            std::abort();
    return 0;
}
