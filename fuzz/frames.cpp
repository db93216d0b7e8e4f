#include "kolib/wire/Endpoint.h"
#include "kolib/wire/FrameDecoder.h"

#include <cstdlib>

using namespace corvane::wire;

// Whatever comes over the wire: the decoder finds frames that encode to the same bytes again, and
// the transport behind it answers without harm.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::size_t delivered = 0;
    Endpoint endpoint([](ByteView, bool) {},
                      [&](std::uint8_t, Bytes&& bytes) { delivered += bytes.size(); });
    FrameDecoder decoder(
        [&](Frame&& frame, ByteView raw) {
            const Bytes again = encodeFrame(frame);
            if (!std::equal(again.begin(), again.end(), raw.begin(), raw.end()))
                std::abort();
            endpoint.received(std::move(frame), 0);
        },
        [](ByteView) {});
    // The first byte decides how the rest is cut.
    const std::size_t step = size == 0 ? 1 : data[0] + std::size_t{1};
    for (std::size_t at = 0; at < size; at += step)
        decoder.feed({data + at, std::min(step, size - at)});
    if (delivered > size)
        std::abort();
    return 0;
}
