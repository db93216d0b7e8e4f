#include "bench/FaultyLine.h"

#include "base/NumberWithin.h"

#include <algorithm>

namespace corvane::bench {

namespace {

// Bytes without an end mark are passed on in pieces of this size.
constexpr std::size_t LongestPiece = 4096;

bool setFault(Faults& faults, std::string_view name, std::string_view value) {
    struct Probability {
        std::string_view name;
        double Faults::*field;
    };
    static constexpr Probability probabilities[] = {{"drop", &Faults::drop},
                                                    {"corrupt", &Faults::corrupt},
                                                    {"drop-bytes", &Faults::dropBytes},
                                                    {"damage-bytes", &Faults::damageBytes}};
    for (const Probability& known : probabilities)
        if (name == known.name) {
            const auto probability = NumberWithin<double>(value, 0, 1);
            faults.*known.field = probability.value_or(0);
            return probability.has_value();
        }
    const auto count = NumberWithin<int>(value, 0, 1'000'000'000);
    if (name == "delay")
        faults.delay = std::chrono::milliseconds(count.value_or(0));
    else if (name == "mute-after")
        faults.muteAfter = count;
    else if (name == "unplug-after")
        faults.unplugAfter = count;
    else
        return false;
    return count.has_value();
}

} // namespace

std::optional<Faults> parseFaults(std::string_view text) {
    Faults faults;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(','));
        text.remove_prefix(std::min(text.size(), part.size() + 1));
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos ||
            !setFault(faults, part.substr(0, equals), part.substr(equals + 1)))
            return std::nullopt;
    }
    return faults;
}

void FaultyLine::send(ByteView bytes, Time now) {
    while (!bytes.empty()) {
        const auto mark = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
        const bool ended = mark != bytes.end();
        const auto length = static_cast<std::size_t>(mark - bytes.begin()) + (ended ? 1 : 0);
        unfinished_.insert(unfinished_.end(), bytes.begin(),
                           bytes.begin() + static_cast<std::ptrdiff_t>(length));
        bytes = bytes.subspan(length);
        if (ended || unfinished_.size() >= LongestPiece) {
            Bytes frame;
            frame.swap(unfinished_);
            sendFrame(std::move(frame), now);
        }
    }
}

Bytes FaultyLine::arrived(Time now) {
    Bytes bytes;
    while (!underWay_.empty() && underWay_.front().due <= now) {
        bytes.insert(bytes.end(), underWay_.front().bytes.begin(), underWay_.front().bytes.end());
        underWay_.pop_front();
    }
    return bytes;
}

std::optional<Time> FaultyLine::nextArrival() const {
    if (underWay_.empty())
        return std::nullopt;
    return underWay_.front().due;
}

void FaultyLine::clear() {
    unfinished_.clear();
    underWay_.clear();
}

void FaultyLine::sendFrame(Bytes frame, Time now) {
    if (state_.baud > 0) {
        const auto onTheWire =
            Time(std::int64_t{10'000'000} * static_cast<std::int64_t>(frame.size()) / state_.baud);
        busyUntil_ = std::max(busyUntil_, now) + onTheWire;
    } else {
        busyUntil_ = now;
    }
    // A frame that is lost has taken its time on the wire, and counts.
    const bool muted = state_.muted();
    ++state_.frames;
    if (muted || happens(state_.faults.drop)) {
        watcher_(frame, "lost");
        return;
    }
    const Bytes whole = frame;
    const bool harmed = harm(frame);
    watcher_(whole, harmed ? "damaged" : "");
    underWay_.push_back({busyUntil_ + state_.faults.delay, std::move(frame)});
}

std::uint8_t FaultyLine::changed(std::uint8_t byte) {
    std::uniform_int_distribution<int> anyChange(1, 255);
    return static_cast<std::uint8_t>(byte ^ anyChange(state_.random));
}

bool FaultyLine::harm(Bytes& frame) {
    const Faults& faults = state_.faults;
    bool harmed = false;
    if (frame.size() > 1 && happens(faults.corrupt)) {
        // Not the mark at the end, or two frames would become one, and another fault.
        std::uniform_int_distribution<std::size_t> anyByte(0, frame.size() - 2);
        const std::size_t at = anyByte(state_.random);
        frame[at] = changed(frame[at]);
        harmed = true;
    }
    // Its end mark is a byte as the others are: without it the frame runs into the next one.
    Bytes left;
    for (const std::uint8_t byte : frame) {
        const bool damaged = happens(faults.damageBytes);
        const bool lost = happens(faults.dropBytes);
        if (!lost)
            left.push_back(damaged ? changed(byte) : byte);
        harmed = harmed || damaged || lost;
    }
    frame = std::move(left);
    return harmed;
}

bool FaultyLine::happens(double probability) {
    return probability > 0 &&
           std::uniform_real_distribution<double>(0, 1)(state_.random) < probability;
}

} // namespace corvane::bench
