#include "shell/DebugForm.h"
#include "shell/MainForm.h"
#include "shell/ProgrammerControl.h"
#include "support/Desk.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;

TEST(Log, ShowsAtItsFirstLineAndTakesDetailsOnlyWhenAsked) {
    KODebugger debugger;
    DebugForm form;
    int shown = 0;
    const Connection onShown = form.Shown.connect([&] { ++shown; });
    form.SetDebugger(debugger);
    debugger.WriteLine("DBG: RECV: 1 2");
    EXPECT_EQ(shown, 0);
    debugger.WriteLine("a DBG: b");
    form.chkShowDetails.toggle();
    debugger.WriteLine("DBG: SEND: 3");
    form.close();
    debugger.WriteLine("c"); // shows it again, with what was there
    EXPECT_EQ(shown, 2);
    EXPECT_THAT(form.DebugText.Lines(), ElementsAre("a DBG: b", "SEND: 3", "c"));
    form.ClearButton.press();
    form.Done();
    debugger.WriteLine("d");
    EXPECT_FALSE(form.open());
    EXPECT_TRUE(form.DebugText.Lines().empty());
}

/// Over a blank chip, with the whole window's logic.
TEST(Programmer, TellsOfAFailure) {
    Desk desk({.ProgramMode = true});
    Application application{desk.programs, desk.person};
    const ProductControls controls{desk.place, desk.keys};
    MainForm form{desk.place, controls, application};
    form.Initialize({});
    LinkBench::Plugged& chip = desk.bench.plugIn("blank");
    desk.bench.run(200);
    desk.bench.unplug(chip); // and the program has not noticed
    auto& control = dynamic_cast<ProgrammerControl&>(*form.control());
    control.ProgramButton.press();
    EXPECT_EQ(control.StateLabel.Caption(), "Error programming device.");
    EXPECT_EQ(desk.person.takeMessage(), "Error: Error programming device.");
    EXPECT_FALSE(desk.person.sawBusyMessage);
}

} // namespace
} // namespace corvane
