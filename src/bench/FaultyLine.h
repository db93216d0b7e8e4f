#pragma once

#include "kolib/wire/Frame.h"

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <random>

namespace corvane::bench {

using wire::Bytes;
using wire::ByteView;
/// Time since the bench started.
using Time = std::chrono::microseconds;

/// What goes wrong on the wire, for each frame in either direction.
struct Faults {
    double drop = 0;        ///< Probability that a frame is lost.
    double corrupt = 0;     ///< Probability that one byte of a frame is changed.
    double dropBytes = 0;   ///< Probability, for each byte, that it is lost.
    double damageBytes = 0; ///< Probability, for each byte, that it is changed.
    std::chrono::milliseconds delay{0};
    std::optional<int> muteAfter;   ///< After so many frames nothing passes any more.
    std::optional<int> unplugAfter; ///< After so many frames the link is unplugged.
};

/// Reads "drop=0.05,corrupt=0.01,drop-bytes=0.005,damage-bytes=0.005,delay=20,mute-after=N,
/// unplug-after=N", each part optional. Nothing if a part is unknown or its number out of range.
[[nodiscard]] std::optional<Faults> parseFaults(std::string_view text);

/// What has passed over both directions of one wire, and what is to go wrong with it.
struct WireState {
    Faults faults;
    int baud = 0; ///< Paces the bytes, 10 bits each; 0 for as fast as they come.
    std::mt19937 random;
    int frames = 0;

    [[nodiscard]] bool muted() const { return faults.muteAfter && frames >= *faults.muteAfter; }
    [[nodiscard]] bool unplugged() const {
        return faults.unplugAfter && frames >= *faults.unplugAfter;
    }
};

/// One direction of the wire: bytes go in when they are sent and come out when they arrive.
class FaultyLine {
  public:
    /// Told of each frame that goes in, its end mark included, and what became of it.
    using Watcher = std::function<void(ByteView frame, std::string_view fate)>;

    FaultyLine(WireState& state, Watcher watcher) : state_(state), watcher_(std::move(watcher)) {}

    void send(ByteView bytes, Time now);
    /// All that has arrived by now.
    [[nodiscard]] Bytes arrived(Time now);
    [[nodiscard]] std::optional<Time> nextArrival() const;
    void clear();

  private:
    struct Piece {
        Time due;
        Bytes bytes;
    };

    void sendFrame(Bytes frame, Time now);
    [[nodiscard]] bool harm(Bytes& frame);
    [[nodiscard]] std::uint8_t changed(std::uint8_t byte);
    bool happens(double probability);

    WireState& state_;
    Watcher watcher_;
    Bytes unfinished_;
    std::deque<Piece> underWay_;
    Time busyUntil_{0};
};

} // namespace corvane::bench
