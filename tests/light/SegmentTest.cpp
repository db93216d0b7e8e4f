#include "base/KORgbValue.h"
#include "light/LumoraTrack.h"
#include "light/SegmentBlock.h"
#include "support/Writing.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(KORgbValue, BlendsMultipliesAndAttenuates) {
    const KORgbValue orange(255, 128, 1);
    EXPECT_EQ(orange.Attenuate(100), orange);
    EXPECT_EQ(orange.Attenuate(50), KORgbValue(127, 64, 0)); // level 127
    EXPECT_EQ(orange.BlendWith({0, 0, 0}, 0), orange);
    EXPECT_EQ(KORgbValue(10, 5, 0).BlendWith({15, 10, 1}, 0.5), KORgbValue(12, 8, 0)); // ties
    EXPECT_EQ(KORgbValue::FromColor(0xFF8001), KORgbValue(1, 0x80, 0xFF));
    EXPECT_EQ(KORgbValue::FromColor(-2147483647 - 1 + 5), KORgbValue(5, 0, 0)); // loses the top bit
}

TEST(Segment, LimitsItsValues) {
    const std::vector<std::pair<double, double>> times{{0.005, 0.01}, {2.51, 2.5},  {1.999, 1.99},
                                                       {-4, 0.01},    {0.29, 0.29}, {2.5, 2.5}};
    for (const auto& [asked, kept] : times)
        EXPECT_DOUBLE_EQ(LumoraTrackElement::ClampTime(asked), kept) << asked;
    LumoraTrack track(true);
    track.InsertTrack(1, -1, -1, "P", 101);
    const LumoraTrackElement& segment = track.GetTrack(1);
    EXPECT_EQ(segment.time(), 1);
    EXPECT_EQ(segment.brightness(), 0);
    EXPECT_EQ(segment.brightness2(), 100);
}

TEST(Segment, OfATwoLevelTrackIsOnOrOff) {
    LumoraTrack track(false);
    track.AddTrack(1, 49);
    track.AddTrack(1, 50);
    track.setBinary(true);
    track.InsertTrack(3, 1, 70, "PT", 60);
    EXPECT_EQ(track.GetTrack(1).brightness(), 0);
    EXPECT_EQ(track.GetTrack(2).brightness(), 100);
    EXPECT_EQ(track.GetTrack(3).functionCode(), "");
    EXPECT_EQ(track.GetTrack(3).brightness2(), 0);
}

TEST(Segment, FollowsTheInputAsItsFunctionSays) {
    LumoraTrack top(true);
    LumoraTrack bottom(false);
    for (LumoraTrack* track : {&top, &bottom})
        track->InsertTrack(1, 1, 80, "PT", 20);
    const auto up = [&](int at, int trip) { return top.GetTrack(1).EvaluateBrightness(at, trip); };
    const auto down = [&](int at, int trip) {
        return bottom.GetTrack(1).EvaluateBrightness(at, trip);
    };
    using Row = std::array<int, 4>; // input, trip point, and the levels of top and bottom
    // None beyond its side of the trip point, which both count as theirs.
    for (const auto& [input, trip, above, below] : std::initializer_list<Row>{{100, 40, 80, 0},
                                                                              {70, 40, 50, 0},
                                                                              {30, 40, 0, 65},
                                                                              {0, 40, 0, 20},
                                                                              {20, 40, 0, 50},
                                                                              {50, 50, 20, 80}}) {
        EXPECT_EQ(up(input, trip), above) << input;
        EXPECT_EQ(down(input, trip), below) << input;
    }
    for (int input = 0; input <= 100; input += 10) // no range left at the ends
        EXPECT_EQ(down(input, 0) + up(input, 100), 0);
    setFunction(top, 1, "?");
    for (int i = 0; i < 50; ++i)
        EXPECT_NEAR(up(0, 0), 50, 30);
}

TEST(SegmentColor, GoesFromTheFirstLevelToTheSecond) {
    LumoraTrack track(true);
    track.InsertTrack(1, 1, 100, "P", 0);
    constexpr int red = 0x0000FF;
    for (const auto& [place, level] : {std::pair(0.0F, 255), {1.0F, 51}, {-1.0F, 0}})
        EXPECT_EQ(SegmentColorAt(track.GetTrack(1), red, 100, 20, place), KORgbValue(level, 0, 0));
    for (const auto& [code, label] : {std::pair("P", "PROPORTIONAL"),
                                      {"PT", "PROP FROM TRIP"},
                                      {"", ""},
                                      {"X", "UNKNOWN FUNCTION"}})
        EXPECT_EQ(FunctionLabel(code), label);
}

} // namespace
} // namespace corvane
