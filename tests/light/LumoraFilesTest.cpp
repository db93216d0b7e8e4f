#include "light/LumoraUndoableSegmentChange.h"
#include "support/LightBench.h"
#include "support/RandomEdits.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

class LumoraFiles : public testing::Test, public LightBench {
  protected:
    std::string open(const std::string& body, int count, int position = -1) {
        return LightBench::open("Lumora\t" + std::to_string(count) + "\t" +
                                std::to_string(position < 0 ? count : position) + "\t0\t2\n" +
                                body);
    }
};

TEST_F(LumoraFiles, EachChangeHasItsLine) {
    insert(3, true, {1, {50, 0.5, {}, 77}});
    insert(3, true, {2, {50, 0.05, " PT ", 7}});
    const auto record = [this](auto change, auto... arguments) {
        change->Initialize(document, 3, true, 2, arguments...);
        history.Record(std::move(change));
    };
    record(std::make_unique<LumoraUndoableBrightnessChange>(), 50, 60);
    record(std::make_unique<LumoraUndoableBrightness2Change>(), 7, 8);
    record(std::make_unique<LumoraUndoableFunctionChange>(), std::string("PT"), std::string(" "));
    record(std::make_unique<LumoraUndoableTimeChange>(), 0.05, 2.5);
    for (const auto& [insert, function] : {std::pair(false, ""), {true, "P"}}) {
        auto group = std::make_unique<LumoraUndoableTrackChange>();
        group->InitializeGroup(document, insert, 3, true,
                               {{1, {50, 0.5}}, {2, {60, 2.5, function, 8}}});
        history.Record(std::move(group));
    }
    EXPECT_EQ(lines(), "LumoraTrackInsert\t3\t1\t1\t50\t.5\n"
                       "LumoraTrackInsert2\t3\t1\t2\t50\t.05\tPT\t7\n"
                       "LumoraBrightness\t3\t1\t2\t50\t60\n"
                       "LumoraBrightness2\t3\t1\t2\t7\t8\n"
                       "LumoraFunction\t3\t1\t2\tPT\t\n"
                       "LumoraTime\t3\t1\t2\t.05\t2.5\n"
                       "LumoraTrackRemove\t3\t1\t1\t50\t.5\t2\t60\t2.5\n"
                       "LumoraTrackInsert2\t3\t1\t1\t50\t.5\t\t0\t2\t60\t2.5\tP\t8\n");
}

TEST_F(LumoraFiles, ReadingIsForgiving) {
    EXPECT_EQ(open("LumoraTrackInsert\t 1\t-1\t1x\t49.5\t0.05\n"
                   "LumoraTime\t1\t1\t1\t.04\t.06\n"
                   "LumoraText\t2\tMax Current\t7\t9999\textra\n",
                   3),
              "");
    const LumoraTrackElement& segment = document.Channel(1, true).GetTrack(1);
    EXPECT_EQ(segment.brightness(), 50);
    EXPECT_DOUBLE_EQ(segment.time(), 0.06);
    EXPECT_EQ(document.Data(2, "Max Current"), "250");
    history.Undo(true);
    history.Undo(true);
    EXPECT_DOUBLE_EQ(segment.time(), 0.04); // what the line holds, and not what was there
}

TEST_F(LumoraFiles, UnsoundLinesAreRefusedAndNothingIsTouched) {
    fill(1, {33});
    const std::string before = stateOf(document);
    const std::string refused = "Error: Can't understand the file format (deserialization error).";
    for (const char* line :
         {"LumoraTrackInsert\t1\t0\t1\t50\t1\t2\n", "LumoraTrackInsert\t1\t0\n",
          "LumoraTrackInsert2\t1\t0\t1\t50\t1\n", "LumoraText\t1\tTrip Point\t50\n",
          "LumoraText\t0\tTrip Point\t50\t60\n", "LumoraText\t7\tSim Light Image\ta\tb\n",
          "LumoraBrightness\t1\t0\t1\t50\n", "LumoraTrackInsert\t7\t0\t1\t50\t1\n",
          "LumoraTrackInsert\t0\t0\t1\t50\t1\n", "LumoraTrackInsert\t1\t0\t0\t50\t1\n",
          "LumoraTrackInsert\t1\t0\t-5\t50\t1\n", "LumoraTrackInsert\t1\t0\t2\t50\t1\t1\t50\t1\n",
          "LumoraTime\t9\t0\t1\t1\t2\n", "LumoraFunction\t1\t0\t0\t\tP\n"}) {
        EXPECT_EQ(open(line, 1), refused) << line;
        EXPECT_EQ(stateOf(document), before);
    }
    const std::string one = "LumoraTrackInsert\t1\t0\t1\t50\t1\n";
    for (const std::string& body :
         {"LumoraTrackInsert\t1\t0\t3\t50\t1\n" + one, one + "LumoraTime\t1\t0\t2\t1\t2\n",
          one + "LumoraBrightness\t1\t1\t1\t1\t2\n", one + "LumoraTrackRemove\t1\t0\t2\t50\t1\n",
          one + "LumoraTrackInsert\t1\t0\t1\t1\t1\t4\t1\t1\n"}) {
        EXPECT_EQ(open(body, 2), refused) << body;
        EXPECT_EQ(open(body, 2, 0), refused) << body; // also in what could be redone
        EXPECT_EQ(stateOf(document), before);
    }
    EXPECT_EQ(open("lumoratext\t1\tTrip Point\t50\t60\n", 1),
              "Error: Can't understand the file format (unrecognized prefix).");
}

TEST_F(LumoraFiles, WhatNoFileCouldHoldIsNotRecorded) {
    fill(1, {33});
    const std::string before = stateOf(document);
    const auto refused = [&](auto change, auto... values) {
        change->Initialize(document, values...);
        EXPECT_FALSE(history.Record(std::move(change)));
        EXPECT_EQ(desk.person.takeMessage(), std::string("Error: ") + History::NotRecorded);
        EXPECT_EQ(stateOf(document), before);
        EXPECT_EQ(history.Length(), 1);
    };
    refused(std::make_unique<LumoraUndoableTextChange>(), 0, "Sim Light Position", "1,2");
    refused(std::make_unique<LumoraUndoableTextChange>(), 1, "Sim Light Image", "\xFF");
    refused(std::make_unique<LumoraUndoableTimeChange>(), 1, false, 2, 1.0, 2.0);
    refused(std::make_unique<LumoraUndoableTimeChange>(), 7, false, 1, 1.0, 2.0);
    refused(std::make_unique<LumoraUndoableTrackChange>(), true, 1, false,
            LumoraPlacedElement{3, {1, 1}});
    refused(std::make_unique<LumoraUndoableTrackChange>(), false, 1, true,
            LumoraPlacedElement{1, {1, 1}});
}

TEST_F(LumoraFiles, ASettingOfTheWholeDocumentIgnoresItsChannel) {
    EXPECT_EQ(open("LumoraText\t9\tXMit Min\t1200\t1300\nLumoraText\t-1\tUnknown\ta\tb\n", 2), "");
    EXPECT_EQ(document.Data(0, "XMit Min"), "1300");
    history.Undo(); // which belongs nowhere, and asks nothing
    EXPECT_EQ(control.TabStrip1.SelectedIndex(), 1);
    desk.person.answers = {Answer::Yes};
    history.Undo();
    EXPECT_EQ(control.TabStrip1.SelectedIndex(), 8);
}

} // namespace
} // namespace corvane
