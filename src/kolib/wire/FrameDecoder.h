#pragma once

#include "kolib/wire/Frame.h"

#include <functional>

namespace corvane::wire {

/// Takes frames out of a stream of bytes that may be cut anywhere and damaged anywhere. Holds at
/// most one frame's bytes.
class FrameDecoder {
  public:
    /// A valid frame, with its bytes as they came, the end mark included.
    using FrameHandler = std::function<void(Frame&&, ByteView raw)>;
    /// Bytes that were thrown away: what was collected before an end mark and is no frame, or a
    /// stretch of a collection that is too long to be one.
    using GarbageHandler = std::function<void(ByteView raw)>;

    FrameDecoder(FrameHandler onFrame, GarbageHandler onGarbage)
        : onFrame_(std::move(onFrame)), onGarbage_(std::move(onGarbage)) {}

    void feed(ByteView bytes);
    /// Forgets a half-received frame.
    void reset();

  private:
    void collect(ByteView bytes);
    void finish();

    FrameHandler onFrame_;
    GarbageHandler onGarbage_;
    Bytes collected_;
    bool overlong_ = false;
};

} // namespace corvane::wire
