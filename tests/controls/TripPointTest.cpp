#include "controls/TripPointControl.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(TripPoint, SliderAndBoxStayInStep) {
    TripPointControl control;
    int changes = 0;
    int commits = 0;
    const Connection onChange = control.Change.connect([&] { ++changes; });
    const Connection onCommit = control.Commit.connect([&] { ++commits; });
    control.setValue(150);
    EXPECT_EQ(control.Value(), 100);
    EXPECT_EQ(control.TripPointSlider.Value(), 0); // upside down
    control.setValue(-5);
    EXPECT_EQ(control.TripPointValue.Text(), "0");
    EXPECT_EQ(changes, 0); // only the person's doing is told
    control.TripPointSlider.move(88);
    EXPECT_EQ(control.TripPointValue.Text(), "12");
    EXPECT_EQ(control.TripPointSlider.ToolTipText(), "12%");
    control.TripPointValue.type("12a");
    EXPECT_EQ(control.TripPointValue.Text(), "12");
    control.TripPointValue.type("250");
    EXPECT_EQ(control.Value(), 100);
    control.TripPointValue.type("");
    EXPECT_EQ(control.TripPointValue.Text(), "0");
    EXPECT_EQ(changes, 4);
    control.TripPointSlider.leave();
    control.TripPointValue.leave();
    control.leave();
    EXPECT_EQ(commits, 3);
}

} // namespace
} // namespace corvane
