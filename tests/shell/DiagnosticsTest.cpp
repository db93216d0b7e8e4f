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
    debugger.WriteLine("");
    EXPECT_EQ(shown, 1);
    debugger.WriteLine("a DBG: b");
    form.chkShowDetails.toggle();
    debugger.WriteLine("DBG: SEND: 3");
    EXPECT_THAT(form.DebugText.Lines(), ElementsAre("", "a DBG: b", "SEND: 3"));
    form.close();
    debugger.WriteLine("c"); // shows it again, with what was there
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(form.DebugText.Lines().size(), 4U);
    form.ClearButton.press();
    EXPECT_TRUE(form.DebugText.Lines().empty());
    form.Done();
    debugger.WriteLine("d");
    EXPECT_FALSE(form.open());
    EXPECT_TRUE(form.DebugText.Lines().empty());
}

/// The programmer's run: the whole window's logic over blank chips.
class Programmer : public testing::Test {
  protected:
    explicit Programmer(RunModes modes = {.ProgramMode = true}) : desk(modes) {
        form.Initialize({});
    }
    ProgrammerControl& control() { return dynamic_cast<ProgrammerControl&>(*form.control()); }

    Desk desk;
    Application application{desk.programs, desk.person};
    ProductControls controls{desk.place, desk.keys};
    MainForm form{desk.place, controls, application};
};

TEST_F(Programmer, ServesOneBlankChipAfterAnother) {
    std::vector<std::string> numbers;
    for (int i = 0; i < 2; ++i) {
        LinkBench::Plugged& chip = desk.bench.plugIn("blank");
        desk.bench.run(200);
        ASSERT_EQ(form.interface().InterfaceClass(), "Corvane.ProgrammerControl");
        EXPECT_TRUE(control().ProgramButton.Enabled());
        control().ProgramButton.press();
        EXPECT_EQ(control().StateLabel.Caption(), "Programming complete.");
        EXPECT_EQ(chip.link->strings().description, "FT232R USB UART"); // until it is replugged
        desk.bench.unplug(chip);
        desk.bench.run(200);
        EXPECT_EQ(control().StateLabel.Caption(), "");
        EXPECT_FALSE(control().ProgramButton.Enabled());
        chip.link->plugIn({});
        EXPECT_EQ(chip.link->strings().description, "Corvane");
        EXPECT_EQ(chip.link->strings().manufacturer, "Ortaline Works");
        EXPECT_EQ(chip.link->strings().manufacturerId, "KO");
        numbers.push_back(chip.link->strings().serialNumber);
    }
    EXPECT_THAT(numbers[0], testing::MatchesRegex(
                                "KO[0-9A-F][0-9A-F][0-9A-F][0-9A-F][0-9A-F][0-9A-F][0-9A-F]"));
    EXPECT_NE(numbers[0], numbers[1]);
    EXPECT_EQ(desk.person.beeps, "rr");
    EXPECT_EQ(form.Title(), "Corvane");
    EXPECT_FALSE(desk.person.busy);
}

TEST_F(Programmer, TellsOfAFailureAndMayBeTriedAgain) {
    LinkBench::Plugged& chip = desk.bench.plugIn("blank");
    desk.bench.run(200);
    ASSERT_EQ(form.interface().InterfaceClass(), "Corvane.ProgrammerControl");
    desk.bench.unplug(chip); // and the program has not noticed
    control().ProgramButton.press();
    EXPECT_EQ(control().StateLabel.Caption(), "Error programming device.");
    EXPECT_EQ(desk.person.messages.back().icon, MessageBox::Icon::Warning);
    EXPECT_EQ(desk.person.takeMessage(), "Error: Error programming device.");
    EXPECT_FALSE(desk.person.sawBusyMessage);
}

class AnyProgrammer : public Programmer {
  protected:
    AnyProgrammer() : Programmer({.ProgramMode = true, .ProgramAnyDevice = true}) {}
};

TEST_F(AnyProgrammer, GivesNewStringsToALinkThatHasSome) {
    LinkBench::Plugged& link = desk.bench.plugIn("lumora-1.2");
    desk.bench.run(200);
    ASSERT_EQ(form.interface().InterfaceClass(), "Corvane.ProgrammerControl");
    control().ProgramButton.press();
    EXPECT_EQ(control().StateLabel.Caption(), "Programming complete.");
    link.link->plugIn({});
    EXPECT_NE(link.link->strings().serialNumber, "KO0000001");
}

} // namespace
} // namespace corvane
