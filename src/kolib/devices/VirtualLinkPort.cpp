#include "kolib/devices/VirtualLinkPort.h"

#include "kolib/devices/SocketPeers.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <set>

namespace corvane {

namespace {

/// The other program that is connected to the link twice: who waits for it is so only once, to see
/// it in the list.
std::string holderOf(const std::string& path, DeviceHolder& holders) {
    std::set<std::string> connected;
    for (const std::string& peer : PeersOf(path))
        if (const std::string holder = holders.of(peer);
            !holder.empty() && !connected.insert(holder).second)
            return holder;
    return connected.empty() ? std::string() : *connected.begin();
}

} // namespace

OpenOutcome VirtualLinkPort::open(const std::string& path, DeviceHolder& holders) {
    Socket socket(path);
    if (!socket.connected())
        return {nullptr,
                "The virtual link " + path + " does not answer. Start it again.",
                {LinkHindrance::Kind::Broken, {}}};
    std::unique_ptr<VirtualLinkPort> port(new VirtualLinkPort(std::move(socket)));
    if (!port->admitted()) {
        std::string holder = holderOf(path, holders);
        return {nullptr,
                "The virtual link " + path +
                    " is busy: " + (holder.empty() ? "another program" : holder) + " has it open.",
                {LinkHindrance::Kind::Busy, std::move(holder)}};
    }
    return {std::move(port), {}, {}};
}

bool VirtualLinkPort::admitted() {
    using namespace std::chrono;
    // To opening there is no answer but a closed connection; the question behind it has one.
    socket_.send(LinkMessages::encode('O', {}));
    socket_.send(LinkMessages::encode('I', {}));
    const auto giveUp = steady_clock::now() + milliseconds(200);
    while (!answered_ && alive() && steady_clock::now() < giveUp)
        if (socket_.waitForData(20))
            receive();
    return alive();
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
        else if (message->kind == 'I')
            answered_ = true;
        else if (message->kind == 'P')
            stringsDone_ = message->payload == std::vector<std::uint8_t>{1};
    }
}

} // namespace corvane
