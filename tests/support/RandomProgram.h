#pragma once

#include "support/Writing.h"

#include <random>

namespace corvane {

/// Fills an empty light document at random, with at most so many blocks.
inline void fillAtRandom(LumoraDocument& document, unsigned seed, int mostBlocks) {
    std::mt19937 random(seed);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const auto set = [&](int channel, const char* name, int value) {
        setData(document, channel, name, std::to_string(value));
    };
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        set(channel, "Max Current", 10 + below(241));
        set(channel, "Turn Off Point", below(4) == 0 ? below(101) : 0);
        set(channel, "Trip Point", below(101));
        set(channel, "Hysteresis", below(40));
        setData(document, channel, "No Signal", below(2) == 0 ? "Top" : "Bottom");
    }
    const int shortest = 800 + below(1401);
    const int longest = 800 + below(1401);
    set(0, "XMit Min", seed % 20 == 0 ? 2200 : shortest);
    set(0, "XMit Max", seed % 20 == 0 ? 2200 : seed % 10 == 0 ? shortest : longest);
    const int tries = below(120);
    for (int i = 0; i < tries && document.BlockCount() < mostBlocks - 1; ++i) {
        LumoraTrack& track = writable(document, 1 + below(LumoraDocument::TrackCount));
        constexpr std::array functions{"", "", "P", "PT"};
        track.InsertTrack(1 + below(track.GetTrackCount() + 1), (1 + below(250)) / 100.0,
                          below(101), functions[static_cast<std::size_t>(below(4))], below(101));
    }
}

} // namespace corvane
