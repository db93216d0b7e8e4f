#include "desktop/pwm/QuillonView.h"

#include "desktop/pwm/ConfigurationDialog.h"
#include "desktop/pwm/ProgramCurve.h"
#include "support/ProductWindow.h"

#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>

namespace corvane {
namespace {

class QuillonWindow : public ProductWindow {
  protected:
    QuillonWindow() : ProductWindow("RQ") {}
    void SetUp() override { open(desk.folder.file("a.Quillon", "Quillon\t0\t0\t0\t1\n")); }
    QuillonControl& control() { return dynamic_cast<QuillonControl&>(*form.control()); }
    void pressNamed(const QString& name) {
        for (QPushButton* button : window.view()->findChildren<QPushButton*>())
            if (button->accessibleName() == name)
                return QTest::mouseClick(button, Qt::LeftButton);
        FAIL() << name.toStdString();
    }
    /// Whether a slot's curve has a line.
    bool drawn(std::size_t slot) {
        const QColor line = window.palette().color(QPalette::Highlight);
        auto* curve = window.view()->findChild<ProgramCurve*>(QString::number(slot));
        const QImage image = curve->grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == line)
                    return true;
        return false;
    }
};

TEST_F(QuillonWindow, ShowsAProgramThatComesDown) {
    desk.bench.plugIn("quillon");
    desk.bench.run(100);
    for (int i = 0; i < 4000; ++i)
        ASSERT_TRUE(control().slot(0).program.append(
            static_cast<std::uint8_t>(i / 8 % 200 + (i / 40 % 3) * 20)));
    pressNamed("Upload program 1");
    EXPECT_TRUE(control().slot(0).program.HistoryObject().NewHistory());
    EXPECT_FALSE(drawn(0));
    pressNamed("Download program 1");
    EXPECT_EQ(control().slot(0).ProgramInfo.Caption(), "80.00 seconds");
    EXPECT_TRUE(drawn(0));
    EXPECT_FALSE(drawn(1));
}

TEST_F(QuillonWindow, ABurstOfBlocksIsPaintedOnce) {
    const PaintCounter counter(*window.view()->findChild<ProgramCurve*>("0"));
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(control().slot(0).program.append(100));
    QApplication::processEvents();
    EXPECT_EQ(counter.paints(), 1);
}

TEST_F(QuillonWindow, TheReceiverIsChosenInADialogBesideIt) {
    desk.bench.plugIn("quillon");
    desk.bench.run(100);
    const auto configure = [this] {
        EXPECT_TRUE(hands.choose(*window.menuBar(), {"&Options", "Configure &Controller..."}));
    };
    configure();
    auto* dialog = window.findChild<ConfigurationDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(dialog->isModal());
    auto* third = dialog->findChildren<QRadioButton*>().at(2);
    QTest::mouseClick(third, Qt::LeftButton, {}, QPoint(8, third->height() / 2));
    QTest::keyClick(dialog, Qt::Key_Return);
    EXPECT_FALSE(dialog->isVisible());
    configure();
    EXPECT_TRUE(window.findChildren<ConfigurationDialog*>()
                    .back()
                    ->findChildren<QRadioButton*>()
                    .at(2)
                    ->isChecked());
}

} // namespace
} // namespace corvane
