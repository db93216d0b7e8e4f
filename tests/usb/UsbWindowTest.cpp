#include "apps/support/Program.h"
#include "desktop/EventLoop.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDialogs.h"
#include "shell/LinkStatus.h"
#include "support/Hands.h"
#include "support/Screen.h"
#include "usb/UsbTest.h"

#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>

namespace corvane {
namespace {

using namespace std::chrono_literals;

/// The window of the program, over the devices of the program.
class UsbWindow : public UsbTest {
  protected:
    Program program{RunModes{.ProgramMode = true}};
    QtDialogs dialogs;
    QtKeyboard keyboard;
    Workplace place = program.workplace(dialogs, dialogs);
    Application application{program.programs, dialogs};
    ProductControls controls{place, keyboard};
    MainForm form{place, controls, application};
    LinkStatus status{program.link};
    MainWindow window{form, status};

    [[nodiscard]] QPushButton* programButton() const {
        for (QPushButton* button : window.view()->findChildren<QPushButton*>())
            if (button->text() == "Program EEPROM")
                return button;
        return nullptr;
    }
    [[nodiscard]] QString state() const {
        for (const QLabel* label : window.view()->findChildren<QLabel*>())
            if (label->text() == "Programming complete.")
                return label->text();
        return {};
    }
};

TEST_F(UsbWindow, NamesOneChipAfterAnotherAndKeepsWhatElseTheyHold) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    form.Initialize({});
    for (const usb::Memory& before :
         {usb::stockMemory("FTDI", "FT232R USB UART", "A600XYZ1"), usb::emptyMemory()}) {
        SCOPED_TRACE(usb::isSound(before) ? "stock" : "empty");
        Chip& chip = bus.plugIn({before, "lumora-1.2", 0ms});
        const auto pullOut = [&] {
            bus.with([&] {
                EXPECT_TRUE(usb::isSound(chip.memory));
                EXPECT_EQ(besideStrings(chip.memory),
                          besideStrings(usb::isSound(before) ? before : chip.memory));
                EXPECT_EQ(chip.memory[0] & 0x08, 0) << "marked for another driver model";
                EXPECT_THAT(chip.violations, testing::IsEmpty());
                EXPECT_THAT(chip.powerLosses(), testing::IsEmpty());
            });
            bus.unplug(chip);
            return QTest::qWaitFor([&] { return !program.link.IsConnected(); });
        };
        const auto numberOfLink = [&] {
            bus.plugInAgain(chip);
            return bus.with([&] {
                EXPECT_EQ(chip.strings()[0], "Ortaline Works");
                EXPECT_EQ(chip.strings()[1], "Corvane");
                EXPECT_THAT(chip.strings()[2], testing::MatchesRegex("KO[0-9A-F]{7}"));
                return chip.strings()[2];
            });
        };
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return programButton() != nullptr && programButton()->isEnabled(); }));
        Hands::click(*programButton());
        EXPECT_EQ(state(), "Programming complete.");
        ASSERT_TRUE(pullOut());
        EXPECT_TRUE(state().isEmpty());
        const std::string number = numberOfLink();
        ASSERT_TRUE(QTest::qWaitFor([&] { return bus.users(chip) == 1; }));
        whenShown<QMessageBox>([](QMessageBox& box) {
            EXPECT_EQ(box.windowTitle(), "Success");
            Hands::click(*box.button(QMessageBox::Ok));
        });
        EXPECT_TRUE(Hands::choose(*window.menuBar(),
                                  {"&Help", "&Troubleshooting", "Reprogram Corvane &EEPROM"}));
        ASSERT_TRUE(pullOut());
        EXPECT_NE(numberOfLink(), number);
        bus.unplug(chip);
    }
}

} // namespace
} // namespace corvane
