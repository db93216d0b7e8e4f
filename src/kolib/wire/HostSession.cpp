#include "kolib/wire/HostSession.h"

#include <algorithm>
#include <array>

namespace corvane::wire {

namespace {

constexpr bool isByte(int value) {
    return value >= 0 && value <= 255;
}

void tell(const DebugCallbacks::Callback& callback, ByteView bytes) {
    if (callback && !bytes.empty())
        callback(bytes);
}

} // namespace

HostSession::HostSession(const Clock& clock, DebugCallbacks callbacks)
    : clock_(clock),
      callbacks_(std::move(callbacks)),
      endpoint_([this](ByteView bytes, bool repeat) { transmit(bytes, repeat); },
                [this](std::uint8_t channel, Bytes&& data) {
                    received_.push_back({channel, std::move(data)});
                }),
      decoder_([this](Frame&& frame, ByteView raw) { received(std::move(frame), raw); },
               [this](ByteView raw) { tell(callbacks_.outOfBand, raw); }) {}

void HostSession::attach(ByteStream* stream) {
    stream_ = stream;
    endpoint_.reset();
    decoder_.reset();
    received_.clear();
    current_ = {};
    echoed_ = false;
}

void HostSession::productReset() {
    endpoint_.reset();
}

void HostSession::pump() {
    if (stream_ == nullptr)
        return;
    std::array<std::uint8_t, 4096> buffer;
    // While nobody takes the packets the bytes are left where they are.
    for (std::size_t total = 0; total < PumpLimit && received_.size() < ReceivedLimit;) {
        const std::size_t count = stream_->read(buffer);
        if (count == 0)
            break;
        decoder_.feed(ByteView(buffer).first(count));
        total += count;
        if (count < buffer.size())
            break;
    }
    endpoint_.tick(clock_.now());
}

bool HostSession::SendHello(int value) {
    if (stream_ == nullptr || !isByte(value))
        return false;
    endpoint_.reset();
    hello_ = static_cast<std::uint8_t>(value);
    echoed_ = false;
    transmit(encodeFrame({FrameType::Hello, hello_, 0, {}}), false);
    return true;
}

bool HostSession::SendPacket(int channel, std::span<const std::uint8_t> data) {
    return stream_ != nullptr && isByte(channel) &&
           endpoint_.send(static_cast<std::uint8_t>(channel), data, clock_.now());
}

int HostSession::SendQueue(int& errorCount) {
    errorCount = endpoint_.errors();
    return static_cast<int>(endpoint_.unsent());
}

bool HostSession::ReceivePacket(int& channel, int& length) {
    current_ = {};
    if (received_.empty())
        return false;
    current_ = std::move(received_.front());
    received_.pop_front();
    channel = current_.channel;
    length = static_cast<int>(current_.data.size());
    return true;
}

void HostSession::ReceivePacketData(std::span<std::uint8_t> target) {
    std::copy_n(current_.data.begin(), std::min(target.size(), current_.data.size()),
                target.begin());
}

void HostSession::transmit(ByteView bytes, bool repeat) {
    if (stream_ == nullptr)
        return;
    tell(repeat ? callbacks_.sentAgain : callbacks_.sent, bytes);
    stream_->write(bytes);
}

void HostSession::received(Frame&& frame, ByteView raw) {
    tell(callbacks_.received, raw);
    if (frame.type == FrameType::Echo)
        echoed_ = echoed_ || frame.number == hello_;
    else
        endpoint_.received(std::move(frame), clock_.now());
}

} // namespace corvane::wire
