#include "desktop/eeprom/EEPROMEditorView.h"

#include "desktop/InputWidgets.h"
#include "desktop/eeprom/EntryRow.h"
#include "support/ProductWindow.h"

#include <QClipboard>
#include <QScrollBar>
#include <QWheelEvent>

namespace corvane {
namespace {

class EEPROMWindow : public ProductWindow {
  protected:
    void SetUp() override { openEmpty("ko_eeprom", "KOEEPROM"); }
    EEPROMEditorControl& control() { return dynamic_cast<EEPROMEditorControl&>(*form.control()); }
    EntriesView& entries() { return dynamic_cast<EEPROMEditorView&>(*window.view()).entries(); }
    EntryRow& row(int index) {
        EntryRow* row = entries().rowOf(control().Entry(index));
        if (row == nullptr)
            throw std::runtime_error("not in view");
        return *row;
    }
    Box& box(int index, std::size_t column) {
        return dynamic_cast<Box&>(*row(index).stops()[column]);
    }
    void type(const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), text);
        key(Qt::Key_Tab);
    }
    void openMany(int count) {
        std::string lines =
            "KOEEPROM\t" + std::to_string(count) + "\t" + std::to_string(count) + "\t0\t1\n";
        for (int i = 1; i <= count; ++i)
            lines += "KOEEPROMListAdd\t" + std::to_string(i) + "\t" + std::to_string(2 * i) +
                     "\t2\tvariable\t0102\tHex\n";
        form.OpenFile(desk.folder.file("many.ko_eeprom", lines));
        QApplication::processEvents();
    }
};

TEST_F(EEPROMWindow, VariablesAreAddedMarkedRefusedProgrammedAndRead) {
    press("New Variable"); // begins with its address
    type("16");
    type("2");
    type("speed");
    type("1 2");
    press("New Variable"); // at 18
    press("New Variable");
    EXPECT_EQ(QApplication::focusWidget(), &box(3, 0));
    type("17"); // overlaps the first, and stands above the second
    EXPECT_EQ(QApplication::focusWidget(), &box(3, 1)); // its own length, though the row has moved
    EXPECT_LT(row(3).y(), row(2).y());
    EXPECT_NE(box(1, 0).palette().color(QPalette::Base), box(2, 0).palette().color(QPalette::Base));
    box(3, 3).setFocus();
    QTest::keyClicks(&box(3, 3), "256");
    EXPECT_NE(box(3, 3).palette().color(QPalette::Base), box(3, 2).palette().color(QPalette::Base));
    key(Qt::Key_Return);
    EXPECT_TRUE(control().Entry(3).DataValue().empty());
    EXPECT_EQ(box(3, 3).text(), "256");
    box(3, 3).selectAll();
    type("9");
    auto& list = dynamic_cast<DropDown&>(*row(3).stops()[4]);
    EXPECT_EQ(QApplication::focusWidget(), &list);
    key(Qt::Key_Up); // from Integer (U8) to Hex
    EXPECT_EQ(box(3, 3).text(), "09");
    key(Qt::Key_Z, Qt::ControlModifier); // the type that was chosen, and nothing more
    EXPECT_EQ(box(3, 3).text(), "9");
    EXPECT_EQ(control().Entry(3).DataValue(), ByteString{9});

    box(3, 0).setFocus();
    box(3, 0).selectAll();
    type("20");
    QTest::mouseClick(row(2).stops()[5], Qt::LeftButton);
    EXPECT_EQ(control().EntryCount(), 2);
    desk.bench.plugIn("eeprom");
    desk.bench.run(100);
    press("Program");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "Programmed.");
    box(1, 3).setFocus();
    box(1, 3).selectAll();
    type("7 7");
    press("Read Settings");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "Read.");
    EXPECT_EQ(box(1, 3).text(), "1 2");
}

TEST_F(EEPROMWindow, AValueThatIsNoneStopsTheRunAndAQuestionNamesTheVariable) {
    form.OpenFile(desk.folder.file("v.ko_eeprom", "KOEEPROM\t3\t3\t0\t1\n"
                                                  "KOEEPROMListAdd\t1\t0\t2\tspeed\t0102\t\n"
                                                  "KOEEPROMListAdd\t2\t8\t3\t\t05\t\n"
                                                  "KOEEPROMListAdd\t3\t10\t1\tgain of it\t05\t\n"));
    QApplication::processEvents(); // lays the rows out
    desk.bench.plugIn("eeprom");
    desk.bench.run(100);
    desk.bench.takeLog();
    EXPECT_EQ(control().OverlapLabel.Caption(), "Overlapping: address 8, gain of it");
    std::vector<std::string> told;
    const auto answer = [&told](QMessageBox::StandardButton button) {
        return [&told, button](QMessageBox& box) {
            told.push_back(box.text().section('\n', 0, 1).toStdString());
            QAbstractButton* wanted = box.button(button);
            wanted == nullptr ? box.reject() : Hands::click(*wanted);
        };
    };
    window.activateWindow(); // the log has opened before it
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    Hands::retype(box(1, 3), "256");
    ASSERT_EQ(box(1, 3).text(), "256");
    whenShown<QMessageBox>(answer(QMessageBox::Ok));
    press("Program");
    ASSERT_FALSE(told.empty());
    EXPECT_TRUE(told.back().starts_with("What is typed as the value of speed is not Integer (U8)"))
        << told.back();
    EXPECT_EQ(desk.bench.timesLogged("Making connection attempt."), 0);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(QApplication::focusWidget(), &box(1, 3));
    Hands::type("7 8"); // in place of what is selected
    whenShown<QMessageBox>(answer(QMessageBox::Yes));
    press("Program");
    EXPECT_EQ(told.back(), "address 8:\n1 bytes supplied in a 3 byte field.");
    EXPECT_EQ(control().ProgrammingLabel.Caption(), "Programmed.");
    EXPECT_EQ(control().Entry(1).DataValue(), (ByteString{7, 8}));
}

TEST_F(EEPROMWindow, OnlyRowsInViewHaveWidgetsAndTabReachesAll) {
    openMany(5000);
    const int inView = entries().height() / 25 + 2;
    EXPECT_LE(entries().rowsMade(), inView);
    QWheelEvent wheel(QPointF(100, 100), entries().mapToGlobal(QPointF(100, 100)), {},
                      QPoint(0, -1200), {}, {}, Qt::NoScrollPhase, false);
    for (int i = 0; i < 50; ++i)
        QApplication::sendEvent(&entries(), &wheel);
    EXPECT_EQ(entries().rowOf(control().Entry(1)), nullptr);
    EXPECT_LE(entries().rowsMade(), inView + 1);
    control().scrollTo(control().Entry(4999));
    row(4999).stops()[5]->setFocus();
    key(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), row(5000).stops()[0]);
    key(Qt::Key_Backtab);
    key(Qt::Key_Tab);
    box(5000, 0).selectAll();
    type("0"); // goes to the top, and the view with it
    EXPECT_EQ(control().VScroll.Value(), 0);
    EXPECT_EQ(QApplication::focusWidget(), row(5000).stops()[1]);
    control().scrollTo(control().Entry(3000));
    type("3"); // though its row is out of view
    EXPECT_EQ(control().Entry(5000).Length(), 3);
    EXPECT_LE(entries().rowsMade(), inView + 3);
}

TEST_F(EEPROMWindow, ControlCharactersAreShownAndKept) {
    form.OpenFile(desk.folder.file("c.ko_eeprom", "KOEEPROM\t1\t1\t0\t1\n"
                                                  "KOEEPROMListAdd\t1\t0\t4\t\t410A0081\tANSI\n"));
    EXPECT_EQ(box(1, 3).text(), "A␊␀①");
    box(1, 3).setFocus();
    key(Qt::Key_End);
    QApplication::clipboard()->setText("␡");
    key(Qt::Key_V, Qt::ControlModifier);
    key(Qt::Key_Tab);
    EXPECT_EQ(control().Entry(1).DataValue(), (ByteString{0x41, 10, 0, 0x81, 0x7F}));
    EXPECT_FALSE(control().Entry(1).ctlContents.txtData.Tint().has_value());
    const ByteString longest(65535, 255);
    control().document.record(1, KOEEPROMDocument::DataValue, HexText(longest));
    box(1, 3).setFocus();
    key(Qt::Key_End);
    type("A");
    EXPECT_EQ(control().Entry(1).DataValue().size(), 65536U); // nothing is cut off
}

} // namespace
} // namespace corvane
