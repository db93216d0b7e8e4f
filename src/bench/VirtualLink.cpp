#include "bench/VirtualLink.h"

#include "base/KODebug.h"

#include <algorithm>

namespace corvane::bench {

VirtualLink::VirtualLink(Bench bench, Faults faults, int baud, unsigned seed, Log log)
    : shown_(bench.strings),
      stored_(std::move(bench.strings)),
      firmware_(std::move(bench.firmware)),
      log_(std::move(log)),
      wire_{faults, baud, std::mt19937(seed), 0},
      toProduct_(wire_, watcher("to product: ")),
      toComputer_(wire_, watcher("to computer: ")) {
    if (firmware_)
        product_ = std::make_unique<ProductSession>(
            *firmware_, [this](ByteView bytes) { toComputer_.send(bytes, now_); });
}

void VirtualLink::plugIn(Time now) {
    now_ = now;
    shown_ = stored_;
    wire_.frames = 0;
    powerCycle();
}

void VirtualLink::fromComputer(ByteView bytes, Time now) {
    now_ = now;
    toProduct_.send(bytes, now);
}

Bytes VirtualLink::run(Time now) {
    now_ = now;
    // What has arrived first, then the clock: a repeat that is due at this moment is not due any
    // more if its acknowledgement is there.
    const Bytes bytes = toProduct_.arrived(now);
    if (product_) {
        product_->received(bytes, now);
        product_->tick(now);
    }
    return toComputer_.arrived(now);
}

std::optional<Time> VirtualLink::nextEvent() const {
    std::optional<Time> next;
    const auto consider = [&next](std::optional<Time> other) {
        if (other)
            next = next ? std::min(*next, *other) : other;
    };
    consider(toProduct_.nextArrival());
    consider(toComputer_.nextArrival());
    if (product_)
        consider(product_->nextTick());
    return next;
}

void VirtualLink::powerCycle() {
    // What is on the wires is lost with the power of whoever sends or hears it.
    toProduct_.clear();
    toComputer_.clear();
    if (product_)
        product_->powerCycle(now_);
    if (log_)
        log_("power cycle");
}

FaultyLine::Watcher VirtualLink::watcher(std::string direction) {
    return [this, direction = std::move(direction)](ByteView frame, std::string_view fate) {
        if (!log_)
            return;
        std::string line = direction + describeFrame(frame);
        if (!fate.empty())
            line += " (" + std::string(fate) + ")";
        log_(line);
    };
}

std::string describeFrame(ByteView raw) {
    const bool ended = !raw.empty() && raw.back() == 0;
    const auto frame = wire::decodeFrame(ended ? raw.first(raw.size() - 1) : raw);
    if (!frame)
        return "no frame: " + DecimalBytes(raw);
    const std::string number = std::to_string(frame->number);
    switch (frame->type) {
    case wire::FrameType::Data: {
        std::string text = "DATA " + number + " on channel " + std::to_string(frame->channel);
        if (!frame->data.empty())
            text += ": " + DecimalBytes(frame->data);
        return text;
    }
    case wire::FrameType::Ack:
        return "ACK " + number;
    case wire::FrameType::Hello:
        return "HELLO " + number;
    case wire::FrameType::Echo:
        return "ECHO " + number;
    }
    return {};
}

} // namespace corvane::bench
