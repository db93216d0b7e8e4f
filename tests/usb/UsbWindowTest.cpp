#include "apps/support/Program.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDialogs.h"
#include "shell/LinkStatus.h"
#include "usb/UsbTest.h"

#include <QPushButton>
#include <QTest>

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
    LinkStatus status{program.link, program.products};
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

TEST_F(UsbWindow, AProductionRunNamesOneChipAfterAnother) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    form.Initialize({});
    for (const bool empty : {false, true}) {
        Chip& chip = bus.plugIn(
            {empty ? usb::emptyMemory() : usb::stockMemory("FTDI", "FT232R USB UART", "A600XYZ1"),
             "", 0ms});
        ASSERT_TRUE(QTest::qWaitFor(
            [&] { return programButton() != nullptr && programButton()->isEnabled(); }));
        QTest::mouseClick(programButton(), Qt::LeftButton);
        EXPECT_EQ(state(), "Programming complete.");
        bus.unplug(chip);
        ASSERT_TRUE(QTest::qWaitFor([&] { return state().isEmpty(); }));
        bus.plugInAgain(chip);
        EXPECT_EQ(bus.with([&] { return chip.strings()[1]; }), "Corvane");
        ASSERT_TRUE(QTest::qWaitFor([&] { return bus.users(chip) == 1; }));
        bus.with([&] { EXPECT_TRUE(chip.violations.empty()); });
        bus.unplug(chip);
        ASSERT_TRUE(QTest::qWaitFor([&] { return !program.link.IsConnected(); }));
    }
}

} // namespace
} // namespace corvane
