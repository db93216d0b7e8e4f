#include "bench/LightPlayer.h"

#include "bench/LumoraFirmware.h"

extern "C" {
#include "firmware/products/light_player.h"
#include "firmware/products/stick.h"
}

#include <gmock/gmock.h>

namespace corvane::bench {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(LightPlayer, HoldsTheTrackWithinTheBand) {
    Bytes image(255, 0);
    std::fill(image.begin() + 7, image.begin() + 13, std::uint8_t{4}); // where the channels end
    std::fill(image.begin() + 13, image.begin() + 19, std::uint8_t{4});
    image[0] = 127; // trip point, and band
    image[19] = 25;
    image[13] = 2; // where the bottom track begins
    const Bytes blocks{100, 1, 100, 2};
    std::copy(blocks.begin(), blocks.end(), image.begin() + 25);
    LightPlayer player;
    player.setStick(0, 0ms);
    player.start(readImage(image), 0ms);
    // 150 lies below 152, and 102 is the lower end.
    for (const auto& [stick, current] : {std::pair(59, 2), {60, 1}, {40, 1}, {39, 2}}) {
        player.setStick(stick, 0ms);
        EXPECT_EQ(player.currents(0ms)[0], current) << stick;
    }
}

TEST(LightPlayer, SurvivesAnyMemoryAsTheKitsDoes) {
    std::mt19937 random(9);
    for (int i = 0; i < 2000; ++i) {
        Bytes memory(i % 2 == 0 ? ImageLength : i % 300);
        for (std::uint8_t& byte : memory)
            byte = static_cast<std::uint8_t>(random() % (i % 4 == 0 ? 256 : 8));
        LightPlayer player;
        player.setStick(i % 101, 0ms);
        player.start(i % 3 == 0 ? readTables(memory) : readImage(memory), 0ms);
        for (const int current : player.currents(std::chrono::milliseconds(i)))
            ASSERT_TRUE(current >= 0 && current <= 255);
        if (i % 2 != 0 || i % 3 == 0)
            continue;
        light_player_begin(memory.data());
        light_player_stick(static_cast<std::uint8_t>(i % 101 * 255 / 100));
        light_player_pass(static_cast<std::uint16_t>(i));
        const Currents currents = player.currents(std::chrono::milliseconds(i));
        for (std::uint8_t channel = 0; channel < LIGHT_CHANNELS; ++channel)
            ASSERT_EQ(light_player_current(channel), currents[channel]) << i;
    }
    LightPlayer fresh;
    fresh.start(readImage(Bytes(255, 255)), 0ms); // a part that was never written
    EXPECT_THAT(fresh.currents(0ms), ElementsAre(0, 0, 0, 0, 0, 0));
}

TEST(Stick, IsALevelRoundedDownOrToTheNearest) {
    const auto levels = [](std::uint16_t pulse) {
        return std::pair<int, int>(stick_level_below(pulse, 1200, 1800),
                                   stick_level_nearest(pulse, 1200, 1800));
    };
    EXPECT_EQ(levels(0), std::pair(0, 0));
    EXPECT_EQ(levels(1202), std::pair(0, 1));
    EXPECT_EQ(levels(1380), std::pair(76, 77)); // 76.5
    EXPECT_EQ(levels(1799), std::pair(254, 255));
    EXPECT_EQ(levels(2500), std::pair(255, 255));
    EXPECT_EQ(stick_level_below(1500, 65535, 65535), 0); // a part that was never written
}

TEST(OlderLumora, RefusesTransfersThatAreNone) {
    struct Replies final : Reply {
        std::vector<Bytes> sent;
        void send(std::uint8_t, ByteView data) override {
            sent.emplace_back(data.begin(), data.end());
        }
    } replies;
    OlderLumora controller({1, 1, 3, 7});
    const auto set = [&](const Bytes& data) {
        controller.packet(148, data, 0ms, replies);
        return replies.sent.back();
    };
    EXPECT_EQ(set({1, 1, 2, 3, 4, 5, 6}), (Bytes{1, 1, 22}));
    EXPECT_EQ(set({1, 1, 2}), (Bytes{1, 0, 4}));        // too short
    EXPECT_EQ(set({9, 0}), (Bytes{9, 0, 9}));           // no such kind
    EXPECT_EQ(set({5, 106, 1, 1}), (Bytes{5, 0, 113})); // no such block
    EXPECT_EQ(set({5, 105, 1, 1}), (Bytes{5, 1, 112}));
    EXPECT_EQ(set({5, 1, 1}), (Bytes{5, 0, 7}));
}

} // namespace
} // namespace corvane::bench
