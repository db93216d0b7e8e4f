#include "kolib/wire/HostSession.h"

#include <algorithm>
#include <array>

namespace corvane::wire {

namespace {

constexpr std::int32_t LongestRoundTrip = 5000; // ms, beyond which the clock is wrong

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
    decoder_.reset();
    current_ = {};
    lastRoundTrip_ = 0;
    leave();
}

void HostSession::productReset() {
    leave();
}

void HostSession::leave() {
    state_ = State::NoSession;
    endpoint_.reset();
    received_.clear();
}

bool HostSession::takeIn() {
    std::array<std::uint8_t, 4096> buffer;
    std::size_t total = 0;
    // While nobody takes the packets the bytes are left where they are.
    while (total < PumpLimit && received_.size() < ReceivedLimit) {
        const std::size_t count = stream_->read(buffer);
        if (count == 0)
            break;
        decoder_.feed(ByteView(buffer).first(count));
        total += count;
        if (count < buffer.size())
            break;
    }
    return total > 0;
}

void HostSession::pump() {
    if (stream_ == nullptr)
        return;
    static_cast<void>(takeIn());
    if (state_ == State::EchoAwaited)
        repeatHello();
    else
        endpoint_.tick(clock_.now());
}

bool HostSession::SendHello(int value) {
    if (stream_ == nullptr || !isByte(value))
        return false;
    // What has been received stays until the echo: it belongs to the session that was.
    endpoint_.resetAndHold();
    state_ = State::EchoAwaited;
    hello_ = static_cast<std::uint8_t>(value);
    helloSendings_ = 0;
    sayHello(false);
    return true;
}

void HostSession::sayHello(bool repeat) {
    ++helloSendings_;
    lastHello_ = clock_.now();
    transmit(encodeFrame({FrameType::Hello, hello_, 0, {}}), repeat);
}

bool HostSession::ReceivedHello() {
    // So many waits of a millisecond in which nothing comes, however much else is on its way.
    for (int waits = 0; state_ == State::EchoAwaited && waits < EchoWithin &&
                        Elapsed(clock_.now(), lastHello_) < EchoWithin;) {
        stream_->waitForData(1);
        if (!takeIn())
            ++waits;
    }
    return state_ == State::InSession;
}

/// Whoever has packets to send relies on a session whose hello or echo may have been lost. The
/// hello goes out again only when the one before can't be on its way any more: two of them under
/// way would leave one echo for somebody later.
void HostSession::repeatHello() {
    if (endpoint_.unsent() == 0 ||
        Elapsed(clock_.now(), lastHello_) < std::max(Endpoint::RepeatAfter, 2 * lastRoundTrip_))
        return;
    if (helloSendings_ < Endpoint::Sendings)
        return sayHello(true);
    endpoint_.giveUp();
    helloSendings_ = 0;
}

void HostSession::sessionBegins() {
    if (state_ == State::EchoAwaited)
        lastRoundTrip_ = std::min(Elapsed(clock_.now(), lastHello_), LongestRoundTrip);
    state_ = State::InSession;
    received_.clear();
    // The product counts from the beginning, and so its first number may be the last one before.
    endpoint_.forgetAccepted();
    endpoint_.release(clock_.now());
}

bool HostSession::SendPacket(int channel, std::span<const std::uint8_t> data) {
    return state_ != State::NoSession && isByte(channel) &&
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
    // The product has started over wherever an echo stands in the stream, also at a late one.
    if (frame.type == FrameType::Echo) {
        if (state_ != State::NoSession && frame.number == hello_)
            sessionBegins();
    } else if (state_ == State::InSession) {
        endpoint_.received(std::move(frame), clock_.now());
    }
}

} // namespace corvane::wire
