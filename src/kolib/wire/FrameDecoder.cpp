#include "kolib/wire/FrameDecoder.h"

#include <algorithm>

namespace corvane::wire {

void FrameDecoder::feed(ByteView bytes) {
    while (!bytes.empty()) {
        const auto mark = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
        const auto length = static_cast<std::size_t>(mark - bytes.begin());
        collect(bytes.first(length));
        if (mark == bytes.end())
            return;
        finish();
        bytes = bytes.subspan(length + 1);
    }
}

void FrameDecoder::reset() {
    collected_.clear();
    overlong_ = false;
}

void FrameDecoder::collect(ByteView bytes) {
    if (bytes.empty())
        return;
    if (!overlong_ && collected_.size() + bytes.size() > MaxCollected) {
        overlong_ = true;
        if (!collected_.empty())
            onGarbage_(collected_);
        collected_.clear();
    }
    if (overlong_)
        onGarbage_(bytes);
    else
        collected_.insert(collected_.end(), bytes.begin(), bytes.end());
}

void FrameDecoder::finish() {
    if (overlong_ || collected_.empty()) {
        reset();
        return;
    }
    // The handlers may reset or feed this decoder, so it is made ready for the next frame first.
    Bytes raw;
    raw.swap(collected_);
    if (std::optional<Frame> frame = decodeFrame(raw)) {
        raw.push_back(0);
        onFrame_(std::move(*frame), raw);
    } else {
        onGarbage_(raw);
    }
    if (collected_.empty()) {
        raw.clear();
        collected_.swap(raw); // keeps the allocation
    }
}

} // namespace corvane::wire
