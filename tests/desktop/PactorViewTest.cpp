#include "desktop/relay/PactorView.h"

#include "support/ProductWindow.h"

#include <QCheckBox>
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
};

TEST_F(RelayWindow, ItsOutputsAreChosenAndSimulated) {
    const auto choose = [this](const QString& name) {
        auto& button = named<QRadioButton>(name);
        hands.click(button, QPoint(8, button.height() / 2));
    };
    choose("Below Trip Point, Relay On");
    choose("Above Trip Point, Indicator LED Off");
    EXPECT_EQ(control().document.settings(),
              (PactorSettings{50, 0, {false, false}, {true, true, false}}));
    auto& tabs = named<QTabBar>("Settings or simulator");
    hands.clickTab(tabs, 1);
    EXPECT_EQ(control().SimulatorRelay.RelayLabel.Caption(), "RELAY ON");
    EXPECT_FALSE(control().SimulatorRelay.IndicatorOn());
    auto* loss = window.findChild<QCheckBox*>();
    hands.click(*loss, QPoint(8, loss->height() / 2));
    EXPECT_EQ(control().SimulatorRelay.RelayLabel.Caption(), "RELAY OFF");
    EXPECT_TRUE(QTest::qWaitFor([&] { return control().SimulatorRelay.IndicatorOn(); }));
    hands.clickTab(tabs, 0);
    hands.key(Qt::Key_Z, Qt::ControlModifier);
    hands.key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(named<QRadioButton>("Below Trip Point, Relay On").isChecked());
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
