#include "bench/LumoraFirmware.h"

#include <algorithm>

namespace corvane::bench {

namespace {

constexpr std::uint8_t SetChannel = 148;
constexpr std::uint8_t SetReplyChannel = 20;
constexpr std::uint8_t DumpChannel = 149;
constexpr std::size_t RecordLength = 3; // block number, time, current

} // namespace

Bytes LumoraFirmware::bytes(std::size_t offset, std::size_t length) const {
    Bytes all;
    all.reserve(length);
    for (std::size_t i = 0; i < length; ++i)
        all.push_back(memory_.at(offset + i));
    return all;
}

void OlderLumora::packet(std::uint8_t channel, ByteView data, Time, Reply& reply) {
    if (channel == DumpChannel)
        return dump(reply);
    if (channel != SetChannel || data.empty())
        return;
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : data)
        sum = static_cast<std::uint8_t>(sum + byte);
    const bool done = store(data[0], data.subspan(1));
    memory().save();
    reply.send(SetReplyChannel, Bytes{data[0], static_cast<std::uint8_t>(done ? 1 : 0), sum});
}

bool OlderLumora::store(std::uint8_t kind, ByteView data) {
    const auto* const place =
        std::find_if(tablePlaces.begin(), tablePlaces.end(),
                     [kind](const TablePlace& candidate) { return candidate.kind == kind; });
    if (place == tablePlaces.end())
        return false;
    if (kind != BlocksKind) {
        if (data.size() != place->length)
            return false;
        for (std::size_t i = 0; i < data.size(); ++i)
            memory().write(place->offset + i, data[i]);
        return true;
    }
    if (data.size() % RecordLength != 0)
        return false;
    for (; !data.empty(); data = data.subspan(RecordLength)) {
        if (data[0] >= BlockCount)
            return false;
        memory().write(BlocksOffset + std::size_t{2} * data[0], data[1]);
        memory().write(BlocksOffset + std::size_t{2} * data[0] + 1, data[2]);
    }
    return true;
}

void OlderLumora::dump(Reply& reply) const {
    for (std::uint8_t channel = 25; channel <= 31; ++channel)
        for (const TablePlace& place : tablePlaces)
            if (place.dumpChannel == channel)
                reply.send(channel, bytes(place.offset, place.length));
}

LightProgram OlderLumora::program() const {
    return readTables(bytes(0, TablesLength));
}

void NewerLumora::powerOn(Time now) {
    service_.powerOff();
    LumoraFirmware::powerOn(now);
}

void NewerLumora::packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) {
    static_cast<void>(service_.packet(channel, data, now, reply));
}

LightProgram NewerLumora::program() const {
    return readImage(bytes(0, ImageLength));
}

} // namespace corvane::bench
