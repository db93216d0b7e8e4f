#include "bench/Eeprom.h"

#include <algorithm>

namespace corvane::bench {

namespace {
constexpr std::uint8_t ReadReply = 80;
constexpr std::uint8_t WriteReply = 81;
constexpr std::size_t RequestLimit = 64;
} // namespace

bool Eeprom::keepIn(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::exists(file, error)) {
        std::ifstream old(file, std::ios::binary);
        std::vector<char> content(cells_.size());
        old.read(content.data(), static_cast<std::streamsize>(content.size()));
        if (!old.is_open() || old.bad())
            return false;
        std::copy_n(content.begin(), old.gcount(), cells_.begin());
    } else {
        std::ofstream created(file, std::ios::binary);
    }
    // Opened for reading too, so that what is there is not cut off.
    file_.open(file, std::ios::binary | std::ios::in | std::ios::out);
    for (const std::uint8_t cell : cells_)
        file_.put(static_cast<char>(cell));
    file_.flush();
    return file_.good();
}

void Eeprom::write(std::size_t address, std::uint8_t value) {
    const std::size_t cell = address % cells_.size();
    cells_[cell] = value;
    if (file_.is_open()) {
        file_.seekp(static_cast<std::streamoff>(cell));
        file_.put(static_cast<char>(value));
    }
}

std::optional<EepromService::Fault> EepromService::parse(std::string_view text) {
    if (text.empty())
        return Fault::None;
    if (text == "too-short")
        return Fault::TooShort;
    if (text == "too-long")
        return Fault::TooLong;
    return text == "wrong-kind" ? std::optional(Fault::WrongKind) : std::nullopt;
}

void EepromService::answerRead(const Request& request, Reply& reply) const {
    Bytes bytes;
    for (std::size_t i = 0; i < request.count; ++i)
        bytes.push_back(eeprom_.at(request.address + i));
    if (fault_ == Fault::TooShort && !bytes.empty())
        bytes.pop_back();
    if (fault_ == Fault::TooLong && bytes.size() < wire::MaxDataLength)
        bytes.push_back(99);
    reply.send(fault_ == Fault::WrongKind ? WriteReply : ReadReply, bytes);
}

bool EepromService::packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) {
    if (channel != ReadChannel && channel != WriteChannel)
        return false;
    // A product queues what it can't do yet, so that requests are answered in their order.
    if (data.size() < 3 || requests_.size() >= RequestLimit)
        return true; // not understood, or no room: no answer
    Request request;
    request.write = channel == WriteChannel;
    request.address = data[0] + (std::size_t{data[1]} << 8);
    if (request.write)
        request.data.assign(data.begin() + 2, data.end());
    else
        request.count = data[2];
    requests_.push_back(std::move(request));
    tick(now, reply);
    return true;
}

void EepromService::tick(Time now, Reply& reply) {
    while (!requests_.empty() && work(requests_.front(), now, reply))
        requests_.pop_front();
    eeprom_.save();
}

std::optional<Time> EepromService::nextTick() const {
    return requests_.empty() ? std::nullopt : requests_.front().due;
}

void EepromService::answerNobody() {
    // What is being written goes on: the cells do not know that whoever asked has gone.
    std::erase_if(requests_, [](const Request& request) { return !request.write; });
    for (Request& request : requests_)
        request.answered = false;
}

bool EepromService::work(Request& request, Time now, Reply& reply) {
    if (!request.write) {
        answerRead(request, reply);
        return true;
    }
    if (!request.due)
        request.due = now + writeTime_;
    while (request.count < request.data.size()) {
        if (now < *request.due)
            return false;
        eeprom_.write(request.address + request.count, request.data[request.count]);
        ++request.count;
        *request.due += writeTime_;
    }
    if (request.answered)
        reply.send(WriteReply, {});
    return true;
}

} // namespace corvane::bench
