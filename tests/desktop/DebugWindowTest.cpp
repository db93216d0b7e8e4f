#include "desktop/DebugWindow.h"

#include "support/ProductWindow.h"

#include <QClipboard>
#include <QScrollBar>

namespace corvane {
namespace {

class LogWindow : public testing::Test {
  protected:
    KODebugger debugger;
    DebugForm form;
    std::unique_ptr<DebugWindow> window;
    LogView* log = nullptr;

    void SetUp() override {
        form.SetDebugger(debugger);
        debugger.WriteLine("Device opened.");
        window = std::make_unique<DebugWindow>(form, nullptr);
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->show();
        for (QWidget* widget : window->findChildren<QWidget*>())
            if (auto* found = dynamic_cast<LogView*>(widget))
                log = found;
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
};

TEST_F(LogWindow, FollowsItsEndAndPaintsOnceForABurst) {
    QApplication::processEvents();
    const PaintCounter counter(*log->viewport());
    for (int i = 0; i < 1000000; ++i)
        debugger.WriteLine("line " + std::to_string(i));
    QScrollBar* bar = log->verticalScrollBar();
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar->maximum() > 900000; }));
    QApplication::processEvents();
    EXPECT_LE(counter.paints(), 2);
    EXPECT_EQ(bar->value(), bar->maximum());
    bar->setValue(10); // somebody reads; the end goes on without them
    debugger.WriteLine("one more");
    QTest::qWait(80);
    EXPECT_EQ(bar->value(), 10);
    QTest::mousePress(log->viewport(), Qt::LeftButton, {}, QPoint(20, 3));
    QTest::mouseClick(log->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                      QPoint(20, 3 + log->fontMetrics().height()));
    QTest::keyClick(log, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "line 9\nline 10\n");
    QTest::keyClick(log, Qt::Key_End);
    EXPECT_EQ(bar->value(), bar->maximum());
    form.ClearButton.press();
    QTest::qWait(80);
    EXPECT_EQ(bar->maximum(), 0);
    EXPECT_EQ(log->selectedText(), "");
}

TEST_F(LogWindow, ClosingItTellsTheForm) {
    window->close();
    EXPECT_FALSE(form.open());
}

} // namespace
} // namespace corvane
