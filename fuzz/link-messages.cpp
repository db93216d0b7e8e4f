#include "bench/LinkProtocol.h"
#include "kolib/devices/LinkMessages.h"

#include <cstdlib>

// Whatever comes over the socket of a virtual link, at either end.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    LinkMessages messages;
    bench::MessageReader reader;
    const std::size_t step = size == 0 ? 1 : data[0] + std::size_t{1};
    for (std::size_t at = 0; at < size; at += step) {
        const std::span<const std::uint8_t> part(data + at, std::min(step, size - at));
        messages.feed(part);
        while (const auto message = messages.next()) {
            const auto strings = LinkMessages::decodeStrings(message->payload);
            if (strings && LinkMessages::encodeStrings(*strings) != message->payload)
                std::abort();
        }
        reader.feed(part);
        while (const auto message = reader.next()) {
            const auto strings = bench::unpackStrings(message->payload);
            if (strings && bench::packStrings(*strings) != message->payload)
                std::abort();
        }
    }
    return 0;
}
