#include "usb/Ft232.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace corvane::usb {

namespace {

constexpr std::size_t PacketSize = 64;
constexpr std::size_t StatusLength = 2;
constexpr std::size_t ReceiveFifo = 256;
constexpr std::size_t SendFifo = 128;
constexpr Time ByteTime{40}; // ten bits at 250 000 baud
constexpr int WritingLatency = 0x77;
constexpr int LinkLatency = 1;
constexpr int Words = 64;

std::uint16_t checksumOf(const Memory& memory) {
    std::uint16_t sum = 0xAAAA;
    for (std::size_t i = 0; i < memory.size() - 2; i += 2) {
        sum = static_cast<std::uint16_t>(sum ^ (memory[i] | memory[i + 1] << 8));
        sum = static_cast<std::uint16_t>(sum << 1 | sum >> 15);
    }
    return sum;
}

std::string hex(int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%04x", static_cast<unsigned>(value));
    return text;
}

int wordAt(ByteView bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8;
}

constexpr std::array<std::uint8_t, 18> DeviceDescriptor{18,   1,    0,    2,    0,    0, 0, 8, 0x03,
                                                        0x04, 0x01, 0x60, 0x00, 0x06, 1, 2, 3, 1};
constexpr std::array<std::uint8_t, 32> Configuration{
    9,    2, 32, 0, 1,    1, 0,  0xA0, 45, 9, 4, 0,    0, 2,  0xFF, 0xFF,
    0xFF, 2, 7,  5, 0x81, 2, 64, 0,    0,  7, 5, 0x02, 2, 64, 0,    0};

} // namespace

Memory stockMemory(const std::string& manufacturer, const std::string& product,
                   const std::string& serial) {
    Memory memory{0x00, 0x40, 0x03, 0x04, 0x01, 0x60, 0x00, 0x06, 0xA0, 0x2D, 0x08};
    memory[0x14] = 0x23; // what its free pins do
    memory[0x15] = 0x10;
    memory[0x16] = 0x05;
    std::size_t at = 0x18;
    std::size_t place = 0x0E;
    for (const std::string& text : {manufacturer, product, serial}) {
        const auto length = static_cast<std::uint8_t>(2 + 2 * text.size());
        memory[place++] = static_cast<std::uint8_t>(0x80 | at);
        memory[place++] = length;
        memory[at++] = length;
        memory[at++] = 3;
        for (const char c : text) {
            memory[at++] = static_cast<std::uint8_t>(c);
            memory[at++] = 0;
        }
    }
    const std::string note = "note"; // somebody's own bytes behind the strings
    std::copy(note.begin(), note.end(), memory.begin() + 0x78);
    const std::uint16_t sum = checksumOf(memory);
    memory[126] = static_cast<std::uint8_t>(sum & 0xFFU);
    memory[127] = static_cast<std::uint8_t>(sum >> 8);
    return memory;
}

Memory emptyMemory() {
    Memory memory{};
    memory.fill(0xFF);
    return memory;
}

bool isSound(const Memory& memory) {
    return checksumOf(memory) == wordAt(memory, 126);
}

Ft232::Ft232(const Memory& content, std::string_view product, Time writeTime) : memory(content) {
    if (product.empty())
        return;
    bench::Setup setup;
    setup.writeTime = writeTime;
    std::string error;
    auto made = bench::makeBench(product, setup, error);
    if (!made)
        throw std::runtime_error(error);
    link_ = std::make_unique<bench::VirtualLink>(std::move(*made), bench::Faults{}, 0, 1, nullptr);
}

void Ft232::plugIn(Time now) {
    shown_ = {"FTDI", "FT232R USB UART", ""};
    for (std::size_t i = 0; i < shown_.size() && isSound(memory); ++i) {
        const std::size_t at = memory[0x0E + 2 * i] & 0x7FU;
        const std::size_t length = memory[0x0F + 2 * i];
        shown_[i].clear();
        for (std::size_t k = 2; k + 1 < length && at + k < memory.size(); k += 2)
            shown_[i] += static_cast<char>(memory[at + k]);
    }
    if (isSound(memory) && (memory[0x0A] & 0x08U) == 0)
        shown_[2].clear();
    ranUntil_ = lastIn_ = sendingUntil_ = comingUntil_ = now;
    latency_ = 16;
    transfers = 0;
}

void Ft232::unplug() {
    rts_ = baudRight_ = formatRight_ = false;
    outs_.clear();
    ins_.clear();
    sending_.clear();
    coming_.clear();
    received_.clear();
    if (!power.empty() && power.back().on)
        power.push_back({power.back().at, false, "unplugged"});
}

std::vector<Time> Ft232::powerLosses() const {
    std::vector<Time> losses;
    for (std::size_t i = 0; i < power.size(); ++i)
        if (!power[i].on && power[i].why != "unplugged")
            losses.push_back(i + 1 < power.size() ? power[i + 1].at - power[i].at : Time::max());
    return losses;
}

void Ft232::setRts(bool on, const std::string& why, Time now) {
    if (on == rts_)
        return;
    rts_ = on;
    ranUntil_ = now;
    power.push_back({now, on, why});
    sending_.clear();
    coming_.clear();
    if (on && link_) {
        static_cast<void>(link_->run(now)); // so that it starts now
        link_->powerCycle();
    }
}

Ended Ft232::descriptor(std::uint64_t id, int kind, int index, std::size_t length) const {
    Bytes bytes;
    if (kind == 1) {
        bytes.assign(DeviceDescriptor.begin(), DeviceDescriptor.end());
    } else if (kind == 2) {
        bytes.assign(Configuration.begin(), Configuration.end());
    } else if (kind == 3 && index == 0) {
        bytes = {4, 3, 9, 4};
    } else if (kind == 3 && index <= 3) {
        bytes = {0, 3};
        for (const char c : shown_[static_cast<std::size_t>(index - 1)])
            bytes.insert(bytes.end(), {static_cast<std::uint8_t>(c), std::uint8_t{0}});
        bytes[0] = static_cast<std::uint8_t>(bytes.size());
    } else {
        return {id, -EPIPE, 0, {}};
    }
    bytes.resize(std::min(bytes.size(), length));
    return {id, 0, bytes.size(), bytes};
}

Bytes Ft232::descriptors() const {
    Bytes bytes(DeviceDescriptor.begin(), DeviceDescriptor.end());
    bytes.insert(bytes.end(), Configuration.begin(), Configuration.end());
    return bytes;
}

Ended Ft232::control(std::uint64_t id, ByteView setup, Time now) {
    ++transfers;
    const int type = setup[0];
    const int request = setup[1];
    const int value = wordAt(setup, 2);
    const int index = wordAt(setup, 4);
    const auto length = static_cast<std::size_t>(wordAt(setup, 6));
    if (type == 0x80 && request == 6)
        return descriptor(id, value >> 8, value & 0xFF, length);
    if ((type & 0x60) == 0 &&
        (type & 0x80) == 0) // the system's own, such as to choose a configuration
        return {id, 0, 0, {}};
    if ((type & 0x60) == 0) {
        const Bytes status(std::min<std::size_t>(length, 2), std::uint8_t{0});
        return {id, 0, status.size(), status};
    }
    if (type == 0x40 || type == 0xC0) {
        ++vendorRequests;
        if (const auto stalls = faults.stallRequest.find(request);
            stalls != faults.stallRequest.end() && stalls->second > 0) {
            --stalls->second;
            return {id, -EPIPE, 0, {}};
        }
    }
    if (type == 0x40 && vendorOut(request, value, index, now))
        return {id, 0, 0, {}};
    if (type == 0xC0 && request == 0x05) {
        statusPolled_ = true;
        return {id, 0, 2, {0x01, 0x60}};
    }
    if (type == 0xC0 && request == 0x0A)
        return {id, 0, 1, {static_cast<std::uint8_t>(latency_)}};
    if (type == 0xC0 && request == 0x90 && index < Words) {
        const auto at = static_cast<std::size_t>(2 * index);
        memoryReads += index == Words - 1 ? 1 : 0;
        return {id, 0, 2, {memory[at], memory[at + 1]}};
    }
    if (type == 0xC0 && request == 0x90) // beyond the end of it, which its driver library asks for
        return {id, 0, 2, {0xFF, 0xFF}};
    violation("unknown request: type " + hex(type) + " request " + hex(request) + " value " +
              hex(value) + " index " + hex(index));
    return {id, -EPIPE, 0, {}};
}

bool Ft232::vendorOut(int request, int value, int index, Time now) {
    switch (request) {
    case 0x00: // reset
        if (value == 0)
            setRts(false, "reset", now);
        if (value != 1)
            received_.clear();
        if (value != 2)
            outs_.clear();
        return value <= 2;
    case 0x01: // modem control
        if ((value & 0x200) != 0)
            setRts((value & 2) != 0, "modem control", now);
        return true;
    case 0x02:
        return true; // flow control
    case 0x03:
        return setBaud(value, index);
    case 0x04:
        formatRight_ = value == 8;
        return true;
    case 0x09:
        latency_ = value & 0xFF;
        return true;
    case 0x91:
        return writeWord(index, value);
    default:
        return false;
    }
}

bool Ft232::setBaud(int value, int index) {
    static constexpr std::array<int, 8> eighths{0, 4, 2, 1, 3, 5, 6, 7};
    const int encoded = value | (index & 1) << 16;
    const double divisor =
        (encoded & 0x3FFF) + eighths[static_cast<std::size_t>(encoded >> 14 & 7)] / 8.0;
    baudRight_ = divisor == 3000000.0 / 250000;
    if (!baudRight_)
        violation("baud divisor " + std::to_string(divisor));
    return true;
}

bool Ft232::writeWord(int index, int value) {
    if (latency_ != WritingLatency || !statusPolled_ || (index != 0 && index != nextWord_)) {
        violation("word " + std::to_string(index) + " of the memory written out of order");
        return true; // and lost
    }
    nextWord_ = index + 1;
    if (index < Words && !faults.forgetsMemory) {
        memory[static_cast<std::size_t>(2 * index)] = static_cast<std::uint8_t>(value & 0xFF);
        memory[static_cast<std::size_t>(2 * index + 1)] = static_cast<std::uint8_t>(value >> 8);
    }
    return true;
}

void Ft232::submitOut(std::uint64_t id, ByteView data, Time now) {
    ++transfers;
    if (!baudRight_ || !formatRight_ || latency_ != LinkLatency)
        violation("bytes at the wrong speed, format or latency");
    const bool heard = rts_ && baudRight_ && formatRight_;
    sendingUntil_ = std::max(sendingUntil_, now) + std::exchange(faults.outDelay, Time{0}) +
                    ByteTime * static_cast<long>(data.size());
    if (heard && faults.stallOut == 0)
        sending_.push_back({sendingUntil_, Bytes(data.begin(), data.end())});
    outs_.push_back(
        {id, data.size(), std::max(now, sendingUntil_ - ByteTime * static_cast<long>(SendFifo))});
}

void Ft232::submitIn(std::uint64_t id, std::size_t length) {
    ++transfers;
    ins_.push_back({id, length, {}});
}

bool Ft232::cancel(std::uint64_t id) {
    const auto isIt = [id](const auto& transfer) { return transfer.id == id; };
    return std::erase_if(ins_, isIt) + std::erase_if(outs_, isIt) > 0;
}

void Ft232::toProduct(Time now) {
    while (!sending_.empty() && sending_.front().due <= now) {
        if (link_ && rts_)
            link_->fromComputer(sending_.front().bytes, sending_.front().due);
        sending_.pop_front();
    }
}

void Ft232::fromProduct(Time now) {
    if (link_ && rts_) {
        for (const std::uint8_t byte : link_->run(now)) {
            comingUntil_ = std::max(comingUntil_, now) + ByteTime;
            coming_.emplace_back(comingUntil_, byte);
        }
    }
    for (; !coming_.empty() && coming_.front().first <= now; coming_.pop_front()) {
        if (received_.size() < ReceiveFifo) {
            received_.push_back(coming_.front().second);
        } else {
            ++overruns;
            overrun_ = true;
        }
    }
}

void Ft232::fillPacket(In& transfer, Time now) {
    const std::size_t count = std::min({received_.size(), PacketSize - StatusLength,
                                        transfer.length - transfer.data.size() - StatusLength});
    transfer.data.push_back(0x11);
    transfer.data.push_back(overrun_ ? 0x62 : 0x60);
    overrun_ = false;
    const auto end = received_.begin() + static_cast<std::ptrdiff_t>(count);
    transfer.data.insert(transfer.data.end(), received_.begin(), end);
    received_.erase(received_.begin(), end);
    lastIn_ = now;
}

void Ft232::endIns(Time now, std::vector<Ended>& ended) {
    while (!ins_.empty()) {
        if (faults.stallIn > 0) {
            --faults.stallIn;
            ended.push_back({ins_.front().id, -EPIPE, 0, {}});
            ins_.pop_front();
            continue;
        }
        const bool full = received_.size() >= PacketSize - StatusLength;
        if (!full && now - lastIn_ < std::chrono::milliseconds(latency_))
            return;
        In& transfer = ins_.front();
        const std::size_t before = transfer.data.size();
        fillPacket(transfer, now);
        if (transfer.data.size() - before == PacketSize &&
            transfer.data.size() + StatusLength < transfer.length)
            continue; // more of them go into this one
        ended.push_back({transfer.id, 0, transfer.data.size(), std::move(transfer.data)});
        ins_.pop_front();
    }
}

std::vector<Ended> Ft232::run(Time now) {
    std::vector<Ended> ended;
    happen(ranUntil_, ended);
    // One thing after the other, also if this machine is late: the chip empties itself meanwhile.
    while (ranUntil_ < now) {
        ranUntil_ = std::min(now, std::max(nextEvent(ranUntil_), ranUntil_ + Time{1}));
        happen(ranUntil_, ended);
    }
    return ended;
}

void Ft232::happen(Time now, std::vector<Ended>& ended) {
    toProduct(now);
    fromProduct(now);
    for (; !outs_.empty() && outs_.front().due <= now; outs_.pop_front()) {
        const bool stalls = faults.stallOut > 0;
        faults.stallOut -= stalls ? 1 : 0;
        ended.push_back(
            {outs_.front().id, stalls ? -EPIPE : 0, stalls ? 0 : outs_.front().length, {}});
    }
    endIns(now, ended);
}

Time Ft232::nextEvent(Time now) const {
    Time next = now + std::chrono::milliseconds(100);
    if (!outs_.empty())
        next = std::min(next, outs_.front().due);
    if (!sending_.empty())
        next = std::min(next, sending_.front().due);
    if (link_ && rts_)
        if (const auto product = link_->nextEvent())
            next = std::min(next, *product);
    if (!ins_.empty()) {
        next = std::min(next, lastIn_ + std::chrono::milliseconds(latency_));
        const std::size_t missing =
            PacketSize - StatusLength - std::min(received_.size(), PacketSize - StatusLength);
        if (missing > 0 && coming_.size() >= missing)
            next = std::min(next, coming_[missing - 1].first);
    } else if (!coming_.empty()) {
        next = std::min(next, coming_.front().first);
    }
    return std::max(next, now);
}

} // namespace corvane::usb
