#include "bench/ProductSession.h"

#include <algorithm>

namespace corvane::bench {

namespace {

constexpr std::uint8_t IdentificationChannel = 0;
constexpr std::uint8_t SilenceChannel = 1;
constexpr std::uint8_t ExitAcknowledgeChannel = 126;
constexpr std::uint8_t ExitChannel = 127;
constexpr Time LongestSilence = std::chrono::seconds(1);

} // namespace

ProductSession::ProductSession(Firmware& firmware, Transmit transmit)
    : firmware_(firmware),
      transmit_(std::move(transmit)),
      endpoint_(
          [this](ByteView bytes, bool) {
              lastSent_ = now_;
              transmit_(bytes);
          },
          [this](std::uint8_t channel, Bytes&& data) { packet(channel, data); }),
      decoder_([this](wire::Frame&& received, ByteView) { frame(std::move(received)); },
               [](ByteView) {}) {}

void ProductSession::received(ByteView bytes, Time now) {
    now_ = now;
    decoder_.feed(bytes);
}

void ProductSession::tick(Time now) {
    now_ = now;
    firmware_.tick(now, *this);
    if (!inSession_)
        return;
    endpoint_.tick(milliseconds());
    if (leaving_ && endpoint_.unsent() == 0)
        inSession_ = false;
    else if (now - lastSent_ >= LongestSilence)
        send(SilenceChannel, {});
}

std::optional<Time> ProductSession::nextTick() const {
    std::optional<Time> next = firmware_.nextTick();
    if (inSession_) {
        Time mine = lastSent_ + LongestSilence;
        if (const auto wait = endpoint_.untilTick(milliseconds()))
            mine = std::min<Time>(mine, now_ + std::chrono::milliseconds(*wait));
        next = next ? std::min(*next, mine) : mine;
    }
    return next;
}

void ProductSession::powerCycle(Time now) {
    now_ = now;
    inSession_ = false;
    leaving_ = false;
    endpoint_.reset();
    decoder_.reset();
    firmware_.powerOn(now);
}

void ProductSession::frame(wire::Frame&& frame) {
    if (frame.type == wire::FrameType::Hello)
        startSession(frame.number);
    else if (inSession_)
        endpoint_.received(std::move(frame), milliseconds());
}

void ProductSession::startSession(std::uint8_t hello) {
    endpoint_.reset();
    inSession_ = true;
    leaving_ = false;
    lastSent_ = now_;
    firmware_.sessionBegins();
    transmit_(wire::encodeFrame({wire::FrameType::Echo, hello, 0, {}}));
    const Identity id = firmware_.identity();
    const auto sum = static_cast<std::uint8_t>(id.deviceMajor + id.deviceMinor + id.firmwareMajor +
                                               id.firmwareMinor);
    send(IdentificationChannel,
         Bytes{id.deviceMajor, id.deviceMinor, id.firmwareMajor, id.firmwareMinor, sum});
}

void ProductSession::packet(std::uint8_t channel, const Bytes& data) {
    if (channel == ExitChannel) {
        if (!leaving_)
            send(ExitAcknowledgeChannel, {});
        leaving_ = true;
    } else if (!leaving_) {
        firmware_.packet(channel, data, now_, *this);
    }
}

void ProductSession::send(std::uint8_t channel, ByteView data) {
    // A full queue loses the packet, as the small memory of a product does.
    if (inSession_)
        static_cast<void>(endpoint_.send(channel, data, milliseconds()));
}

std::uint32_t ProductSession::milliseconds() const {
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(now_).count());
}

} // namespace corvane::bench
