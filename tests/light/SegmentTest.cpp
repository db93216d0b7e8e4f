#include "base/Assert.h"
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
    EXPECT_EQ(orange.Attenuate(0), KORgbValue());
    EXPECT_EQ(orange.Attenuate(50), KORgbValue(127, 64, 0)); // level 127
    EXPECT_EQ(orange.BlendWith({0, 0, 0}, 0), orange);
    EXPECT_EQ(orange.BlendWith({1, 2, 3}, 1), KORgbValue(1, 2, 3));
    EXPECT_EQ(KORgbValue(10, 5, 0).BlendWith({15, 10, 1}, 0.5), KORgbValue(12, 8, 0)); // ties
    EXPECT_EQ(KORgbValue::FromColor(0xFF8001), KORgbValue(1, 0x80, 0xFF));
    EXPECT_EQ(KORgbValue(1, 0x80, 0xFF).Value(), 0xFF8001);
    EXPECT_EQ(KORgbValue::FromColor(-2147483647 - 1 + 5), KORgbValue(5, 0, 0)); // loses the top bit
}

TEST(Segment, LimitsItsValues) {
    const std::vector<std::pair<double, double>> times{{0.005, 0.01}, {2.51, 2.5},  {1.999, 1.99},
                                                       {-4, 0.01},    {0.29, 0.29}, {2.5, 2.5}};
    for (const auto& [asked, kept] : times)
        EXPECT_DOUBLE_EQ(LumoraTrackElement::ClampTime(asked), kept) << asked;
    EXPECT_EQ(LumoraTrackElement::FormatTime(1), "1.00");
    LumoraTrack track(true);
    track.InsertTrack(1, -1, -1, "P", -1);
    const LumoraTrackElement& segment = track.GetTrack(1);
    EXPECT_EQ(segment.time(), 1);
    EXPECT_EQ(segment.brightness(), 0);
    EXPECT_EQ(segment.brightness2(), 0);
    track.SetTrack(1, {101, 1, "P", -1});
    EXPECT_EQ(segment.brightness(), 100);
    EXPECT_EQ(segment.brightness2(), 0);
}

TEST(Segment, OfATwoLevelTrackIsOnOrOff) {
    LumoraTrack track(false);
    track.AddTrack(1, 49);
    track.AddTrack(1, 50);
    track.setBinary(true);
    EXPECT_EQ(track.GetTrack(1).brightness(), 0);
    EXPECT_EQ(track.GetTrack(2).brightness(), 100);
    track.InsertTrack(1, 1, 70, "PT", 60);
    EXPECT_EQ(track.GetTrack(1).functionCode(), "");
    EXPECT_EQ(track.GetTrack(1).brightness2(), 0);
    setFunction(track, 1, "P");
    EXPECT_EQ(track.BlockCount(), 3);
}

TEST(Segment, FollowsTheInputAsItsFunctionSays) {
    LumoraTrack top(true);
    LumoraTrack bottom(false);
    for (LumoraTrack* track : {&top, &bottom})
        track->InsertTrack(1, 1, 80, "P", 20);
    const LumoraTrackElement& up = top.GetTrack(1);
    EXPECT_EQ(up.EvaluateBrightness(100, 50), 80);
    EXPECT_EQ(up.EvaluateBrightness(0, 50), 20);
    EXPECT_EQ(up.EvaluateBrightness(50, 50), 50);
    setFunction(top, 1, "PT");
    setFunction(bottom, 1, "PT");
    const LumoraTrackElement& down = bottom.GetTrack(1);
    EXPECT_EQ(up.EvaluateBrightness(100, 40), 80);
    EXPECT_EQ(up.EvaluateBrightness(70, 40), 50);
    EXPECT_EQ(up.EvaluateBrightness(30, 40), 0); // below the trip point
    EXPECT_EQ(down.EvaluateBrightness(0, 40), 20);
    EXPECT_EQ(down.EvaluateBrightness(20, 40), 50);
    EXPECT_EQ(down.EvaluateBrightness(50, 40), 0);
    EXPECT_EQ(up.EvaluateBrightness(50, 50), 20); // both count it as theirs
    EXPECT_EQ(down.EvaluateBrightness(50, 50), 80);
    for (int input = 0; input <= 100; input += 10) { // no range left at the ends
        EXPECT_EQ(down.EvaluateBrightness(input, 0), 0);
        EXPECT_EQ(up.EvaluateBrightness(input, 100), 0);
    }
    setFunction(top, 1, "");
    EXPECT_EQ(up.EvaluateBrightness(3, 50), 80);
    setFunction(top, 1, "?");
    for (int i = 0; i < 50; ++i) {
        EXPECT_GE(up.EvaluateBrightness(0, 0), 20);
        EXPECT_LE(up.EvaluateBrightness(0, 0), 80);
    }
}

TEST(Track, CountsItsBlocksAndTime) {
    LumoraTrack track(true);
    EXPECT_EQ(track.BlockCount(), 1);
    EXPECT_EQ(track.TimeLimit(), 0.0F);
    EXPECT_EQ(track.AddTrack(0.5, 10), 1);
    track.InsertTrack(1, 0.25, 10, "P", 5);
    EXPECT_EQ(track.BlockCount(), 3);
    EXPECT_FLOAT_EQ(track.TimeLimit(), 0.75F);
    setFunction(track, 1, "");
    EXPECT_EQ(track.BlockCount(), 2);
    setFunction(track, 2, "PT");
    track.RemoveTrack(2);
    EXPECT_EQ(track.BlockCount(), 1);
    EXPECT_THROW(track.InsertTrack(3, 1, 1, "", 0), AssertionFailed);
    EXPECT_THROW(track.RemoveTrack(0), AssertionFailed);
    EXPECT_THROW(static_cast<void>(track.GetTrack(2)), AssertionFailed);
}

TEST(SegmentColor, GoesFromTheFirstLevelToTheSecond) {
    LumoraTrack track(true);
    track.InsertTrack(1, 1, 100, "P", 0);
    const LumoraTrackElement& segment = track.GetTrack(1);
    constexpr int red = 0x0000FF;
    EXPECT_EQ(SegmentColorAt(segment, red, 100, 20, 0), KORgbValue(255, 0, 0));
    EXPECT_EQ(SegmentColorAt(segment, red, 100, 20, 1), KORgbValue(51, 0, 0));
    EXPECT_EQ(SegmentColorAt(segment, red, 100, 20, -1), KORgbValue());
    EXPECT_EQ(FunctionLabel("P"), "PROPORTIONAL");
    EXPECT_EQ(FunctionLabel("PT"), "PROP FROM TRIP");
    EXPECT_EQ(FunctionLabel("X"), "UNKNOWN FUNCTION");
    EXPECT_EQ(FunctionLabel(""), "");
}

} // namespace
} // namespace corvane
