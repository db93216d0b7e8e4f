#include "kolib/devices/VirtualLinkPort.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace corvane {

VirtualLinkPort::VirtualLinkPort(Socket socket) : socket_(std::move(socket)) {
    socket_.send(LinkMessages::encode('O', {}));
}

std::size_t VirtualLinkPort::read(std::span<std::uint8_t> target) {
    if (serialStart_ == serial_.size())
        receive();
    const std::size_t count = std::min(target.size(), serial_.size() - serialStart_);
    std::copy_n(serial_.begin() + static_cast<std::ptrdiff_t>(serialStart_), count, target.begin());
    serialStart_ += count;
    return count;
}

void VirtualLinkPort::write(wire::ByteView bytes) {
    while (!bytes.empty()) {
        const std::size_t length = std::min(bytes.size(), LinkMessages::MaxPayload);
        socket_.send(LinkMessages::encode('D', bytes.first(length)));
        bytes = bytes.subspan(length);
    }
}

void VirtualLinkPort::powerCycle() {
    socket_.send(LinkMessages::encode('R', {}));
}

bool VirtualLinkPort::writeStrings(const DeviceInfo& strings) {
    using namespace std::chrono;
    stringsDone_.reset();
    socket_.send(LinkMessages::encode('P', LinkMessages::encodeStrings(strings)));
    // Serial bytes that come meanwhile are kept for the next reading.
    const auto giveUp = steady_clock::now() + seconds(2);
    while (!stringsDone_ && alive() && steady_clock::now() < giveUp) {
        if (socket_.waitForData(50))
            receive();
    }
    return stringsDone_.value_or(false);
}

void VirtualLinkPort::waitForData(int milliseconds) {
    if (serialStart_ == serial_.size())
        static_cast<void>(socket_.waitForData(milliseconds));
}

void VirtualLinkPort::receive() {
    std::array<std::uint8_t, 16384> buffer;
    messages_.feed(std::span(buffer).first(socket_.receive(buffer)));
    serial_.erase(serial_.begin(), serial_.begin() + static_cast<std::ptrdiff_t>(serialStart_));
    serialStart_ = 0;
    while (const std::optional<LinkMessage> message = messages_.next()) {
        if (message->kind == 'D')
            serial_.insert(serial_.end(), message->payload.begin(), message->payload.end());
        else if (message->kind == 'P')
            stringsDone_ = message->payload == std::vector<std::uint8_t>{1};
    }
}

} // namespace corvane
