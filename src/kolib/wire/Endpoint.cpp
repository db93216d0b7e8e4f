#include "kolib/wire/Endpoint.h"

#include "base/Clock.h"

#include <algorithm>
#include <utility>

namespace corvane::wire {

void Endpoint::reset() {
    queue_.clear();
    sendings_ = 0;
    nextNumber_ = 0;
    lastAccepted_.reset();
    errors_ = 0;
    held_ = false;
}

void Endpoint::resetAndHold() {
    reset();
    held_ = true;
}

void Endpoint::release(std::uint32_t now) {
    if (std::exchange(held_, false) && !queue_.empty())
        sendFirst(now);
}

void Endpoint::giveUp() {
    errors_ += static_cast<int>(queue_.size());
    queue_.clear();
}

bool Endpoint::send(std::uint8_t channel, ByteView data, std::uint32_t now) {
    if (queue_.size() > QueueLimit || data.size() > MaxDataLength)
        return false;
    queue_.push_back({FrameType::Data, nextNumber_++, channel, Bytes(data.begin(), data.end())});
    // Only the first of the queue is under way; the next one waits for its acknowledgement.
    if (queue_.size() == 1 && !held_)
        sendFirst(now);
    return true;
}

void Endpoint::received(Frame&& frame, std::uint32_t now) {
    if (frame.type == FrameType::Ack) {
        if (!queue_.empty() && queue_.front().number == frame.number)
            dropFirst(now);
    } else if (frame.type == FrameType::Data) {
        // Also one that was accepted before: the acknowledgement is what may have been lost. And
        // before it is delivered, since whoever takes it may answer at once.
        transmit_(encodeFrame({FrameType::Ack, frame.number, 0, {}}), false);
        if (lastAccepted_ == frame.number)
            return;
        lastAccepted_ = frame.number;
        deliver_(frame.channel, std::move(frame.data));
    }
}

void Endpoint::tick(std::uint32_t now) {
    if (held_ || queue_.empty() || Elapsed(now, lastSending_) < RepeatAfter)
        return;
    if (sendings_ < Sendings) {
        ++sendings_;
        lastSending_ = now;
        transmit_(encoded_, true);
    } else {
        ++errors_;
        dropFirst(now);
    }
}

std::optional<std::int32_t> Endpoint::untilTick(std::uint32_t now) const {
    if (held_ || queue_.empty())
        return std::nullopt;
    return std::max(0, RepeatAfter - Elapsed(now, lastSending_));
}

void Endpoint::sendFirst(std::uint32_t now) {
    encoded_ = encodeFrame(queue_.front());
    sendings_ = 1;
    lastSending_ = now;
    transmit_(encoded_, false);
}

void Endpoint::dropFirst(std::uint32_t now) {
    queue_.pop_front();
    if (!queue_.empty())
        sendFirst(now);
}

} // namespace corvane::wire
