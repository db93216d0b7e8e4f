#include "desktop/relay/PactorView.h"

#include "eeprom/GenericEEPROMProgrammer.h"
#include "support/ProductWindow.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTabBar>

namespace corvane {
namespace {

class RelayWindow : public ProductWindow {
  protected:
    void SetUp() override { openEmpty("relay", "Pactor"); }
    PactorControl& control() { return dynamic_cast<PactorControl&>(*form.control()); }
    template<class Widget>
    Widget& named(const QString& name) {
        for (Widget* widget : window.view()->findChildren<Widget*>())
            if (widget->accessibleName() == name)
                return *widget;
        throw std::runtime_error("nothing is named " + name.toStdString());
    }
    void choose(const QString& name) {
        auto& button = named<QRadioButton>(name);
        QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(8, button.height() / 2));
    }
    void showTab(int index) {
        auto& bar = named<QTabBar>("Settings or simulator");
        QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.tabRect(index).center());
    }
};

TEST_F(RelayWindow, IsChangedSimulatedProgrammedReadAndUndone) {
    choose("Below Trip Point, Relay On");
    choose("Above Trip Point, Indicator LED Off");
    auto& tripPoint = named<QLineEdit>("Trip Point in percent");
    tripPoint.setFocus();
    tripPoint.selectAll();
    QTest::keyClicks(&tripPoint, "30");
    key(Qt::Key_Return);
    EXPECT_EQ(control().document.settings(),
              (PactorSettings{30, 0, {false, false}, {true, true, false}}));

    showTab(1);
    EXPECT_EQ(control().SimulatorRelay.RelayLabel.Caption(), "RELAY ON");
    EXPECT_FALSE(control().SimulatorRelay.IndicatorOn());
    auto* loss = window.findChild<QCheckBox*>();
    QTest::mouseClick(loss, Qt::LeftButton, {}, QPoint(8, loss->height() / 2));
    EXPECT_EQ(control().SimulatorRelay.RelayLabel.Caption(), "RELAY OFF");
    EXPECT_TRUE(QTest::qWaitFor([&] { return control().SimulatorRelay.IndicatorOn(); }));
    showTab(0);

    desk.bench.plugIn("pactor-3.1");
    desk.bench.run(100);
    press("Program");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "Programmed.");

    // Somebody else changes the product meanwhile.
    GenericEEPROMProgrammer other(place);
    KOBuffer hysteresis;
    hysteresis.Append(255);
    ASSERT_TRUE(other.Connect("Corvane.PactorControl", "relay", false));
    ASSERT_TRUE(other.WriteEEPROM(1, hysteresis));
    other.Disconnect(false);

    whenShown<QMessageBox>(
        [](QMessageBox& box) { QTest::mouseClick(box.button(QMessageBox::No), Qt::LeftButton); });
    press("Read Settings");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "Settings read.");
    EXPECT_EQ(named<QLineEdit>("Hysteresis in percent").text(), "100");
    EXPECT_EQ(window.windowTitle(), "Dervan/Maltrex");
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier); // the relay below
    EXPECT_FALSE(named<QRadioButton>("Below Trip Point, Relay On").isChecked());
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "");
}

TEST_F(RelayWindow, NothingStandsThereOfTheLastJob) {
    LinkBench::Plugged& plugged = desk.bench.plugIn("pactor-3.1");
    desk.bench.run(100);
    press("Program");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "Programmed.");
    desk.bench.unplug(plugged);
    desk.bench.run(100);
    std::string stood = "nothing was asked";
    whenShown<QMessageBox>([&](QMessageBox& box) {
        stood = control().ProgrammingLabel.Caption();
        Hands::click(*box.button(QMessageBox::Ok));
    });
    press("Program");
    EXPECT_EQ(stood, "");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "");
}

} // namespace
} // namespace corvane
