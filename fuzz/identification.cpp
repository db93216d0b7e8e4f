#include "link/KOProductList.h"

#include <cstdlib>

// Whatever a product says of itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    static const RunModes modes{.DebugMode = true};
    static KODebugger debugger;
    static KODebug debug(modes);
    debug.SetDebugger(&debugger);
    static const KOProductList products("KO", debug);
    KOBuffer record;
    for (std::size_t i = 0; i < size; ++i)
        record.Append(data[i]);
    Version type;
    Version firmware;
    const KOProductProfile* product = products.ByIdentificationBuffer(record, type, firmware);
    if (product != nullptr && (size < 5 || type.Major() != product->deviceMajorID))
        std::abort();
    return 0;
}
