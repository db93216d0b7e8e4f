#include "desktop/light/LumoraView.h"

#include "desktop/Theme.h"
#include "desktop/light/SimulatorView.h"
#include "desktop/light/TracksCanvas.h"
#include "support/ProductWindow.h"

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QProgressBar>
#include <QScreen>
#include <QTabBar>
#include <QToolTip>

namespace corvane {
namespace {

class LumoraWindow : public ProductWindow {
  protected:
    void SetUp() override { open({}); }
    LumoraControl& control() { return dynamic_cast<LumoraControl&>(*form.control()); }
    LumoraDocument& document() { return control().document; }
    LumoraView& view() { return dynamic_cast<LumoraView&>(*window.view()); }
    TracksCanvas& canvas() { return view().canvas(); }

    void startDrag(QPoint from, QPoint to) { hands.startDrag(canvas(), from, to); }
    void release(QPoint at) { hands.release(canvas(), at); }
    QTabBar& tabs() { return *view().findChild<QTabBar*>(); }
    void showTab(int number) { hands.click(tabs(), tabs().tabRect(number - 1).center()); }
    /// A point of a segment where neither its handle nor its boxes are.
    QPoint pointOf(int segment) {
        return canvas().geometryOf(1, segment).block.topLeft() + QPoint(20, 10);
    }
    std::vector<int> selected() { return control().tracks.track(1).SelectedIndices(); }
};

TEST_F(LumoraWindow, TheStickBecomesNoSettingOfAChannelThatAnUndoShows) {
    control().options.record(2, "Trip Point", "20");
    constexpr int simulator = 9;
    showTab(simulator);
    for (QLineEdit* stick : view().findChildren<QLineEdit*>())
        if (stick->isVisible())
            Hands::retype(*stick, "43");
    QTimer agreeing;
    QObject::connect(&agreeing, &QTimer::timeout, [] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            QTest::keyClick(box, Qt::Key_Return);
    });
    agreeing.start(5);
    EXPECT_TRUE(Hands::choose(*window.menuBar(), {"&Edit", "&Undo"}));
    EXPECT_EQ(control().ActiveChannel(), 2);
    EXPECT_EQ(document().HistoryObject().position(), 0);
    EXPECT_EQ(document().HistoryObject().Length(), 1);
}

TEST_F(LumoraWindow, AProgramIsDrawnWithMouseAndKeysSavedAndReopened) {
    press("Add"); // 50 percent, 1 s
    ASSERT_TRUE(canvas().brightnessBox().isVisible());
    QTest::mouseClick(&canvas().brightnessBox(), Qt::LeftButton);
    canvas().brightnessBox().selectAll();
    QTest::keyClicks(&canvas().brightnessBox(), "100");
    key(Qt::Key_Tab); // commits, and goes on to the time
    EXPECT_EQ(QApplication::focusWidget(), &canvas().timeBox());
    canvas().timeBox().selectAll();
    QTest::keyClicks(&canvas().timeBox(), "0.8");
    key(Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget(), &canvas());
    press("Add");
    // Drag its right edge by 0.2 s to the right, at 160 pixels a second.
    const BlockGeometry second = canvas().geometryOf(1, 2);
    startDrag(second.handle.center(), second.handle.center() + QPoint(32, 0));
    EXPECT_EQ(document().track(1).GetTrack(2).time(), 0.8); // not before it is let go
    release(second.handle.center() + QPoint(32, 0));
    // Drag its brightness down.
    const QRect gradient = canvas().geometryOf(1, 2).gradient;
    startDrag(gradient.center(), gradient.bottomLeft() + QPoint(3, 0));
    release(gradient.bottomLeft() + QPoint(3, 0));
    key(Qt::Key_Left);
    key(Qt::Key_C, Qt::ControlModifier);
    key(Qt::Key_End);
    key(Qt::Key_V, Qt::ControlModifier);
    key(Qt::Key_Down);
    press("Add");
    saveAs("drawn.lumora");
    EXPECT_EQ(window.windowTitle(),
              "Lumora - " + QString::fromStdString(desk.folder.path() / "drawn.lumora"));

    const std::string drawn = desk.folder.content("drawn.lumora");
    EXPECT_EQ(drawn, "Lumora\t8\t8\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t1\n"
                     "LumoraBrightness\t1\t0\t1\t50\t100\nLumoraTime\t1\t0\t1\t1\t.8\n"
                     "LumoraTrackInsert\t1\t0\t2\t100\t.8\nLumoraTime\t1\t0\t2\t.8\t1\n"
                     "LumoraBrightness\t1\t0\t2\t100\t0\n"
                     "LumoraTrackInsert\t1\t0\t2\t100\t.8\n"
                     "LumoraTrackInsert\t1\t1\t1\t50\t1\n");
    for (int i = 0; i < 8; ++i)
        key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(form.menu.mnuEditUndo.Enabled());
    EXPECT_EQ(document().BlockCount(), 12);
    for (int i = 0; i < 8; ++i)
        key(Qt::Key_Y, Qt::ControlModifier);
    key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(desk.folder.content("drawn.lumora"), drawn);
    key(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(document().track(1).GetTrackCount(), 0);
    form.menu.mnuFileMRU.item(1).choose();
    EXPECT_EQ(document().track(1).GetTrackCount(), 3);
}

TEST_F(LumoraWindow, AfterACutTheSegmentInTheGapIsSelected) {
    for (int i = 0; i < 3; ++i)
        press("Add");
    hands.click(canvas(), pointOf(2));
    hands.key(Qt::Key_X, Qt::ControlModifier); // held all the while
    EXPECT_EQ(selected(), std::vector<int>{2});
}

TEST_F(LumoraWindow, WhatIsDoneToTheTracksFromTheTransmitterIsSeen) {
    const auto& bottom = control().tracks.track(2); // which plays with the stick at 50
    hands.click(canvas(), QPoint(20, canvas().height() - 20));
    for (int i = 0; i < 5; ++i)
        press("Add");
    hands.click(canvas(), canvas().geometryOf(2, 2).block.topLeft() + QPoint(20, 10));
    hands.key(Qt::Key_C, Qt::ControlModifier);
    const auto onTransmitter = [&](const char* command, int tab, int index) {
        showTab(8);
        EXPECT_TRUE(hands.choose(*window.menuBar(), {"&Edit", command}));
        EXPECT_EQ(control().TabStrip1.SelectedIndex(), tab) << command;
        EXPECT_EQ(bottom.SelectedIndices(), std::vector<int>{index}) << command;
        EXPECT_TRUE(tab == 8 || canvas().rect().intersects(canvas().geometryOf(2, 2).block));
    };
    onTransmitter("&Delete", 1, 2);
    onTransmitter("Cu&t", 1, 2);
    onTransmitter("&Paste", 1, 3); // the same one, pushed to the right
    onTransmitter("&Copy", 8, 3);  // does nothing to them
    press("Insert");
    EXPECT_EQ(control().TabStrip1.SelectedIndex(), 1);
}

TEST_F(LumoraWindow, AFileThatIsOpenedInTheSimulatorPlaysWithItsSettings) {
    showTab(9);
    hands.drop(
        window, QPoint(50, 50),
        desk.folder.file("a.lumora",
                         "Lumora\t5\t5\t0\t2\nLumoraText\t1\tTurn Off Point\t0\t70\n"
                         "LumoraText\t1\tTrip Point\t50\t90\nLumoraText\t2\tTrip Point\t50\t60\n"
                         "LumoraText\t3\tLight Color\tFFFFFF\t10000FF\n"
                         "LumoraTrackInsert\t3\t0\t1\t100\t1\n"));
    EXPECT_EQ(control().simulator.SelectedTrack(1), nullptr); // 50 is below its turn-off point
    EXPECT_EQ(control().simulator.SelectedTrack(2), &document().Channel(2, true));
    control().simulatorControl.UpdateTimer.Fired.raise();
    EXPECT_EQ(control().simulatorControl.light(3).color, KORgbValue(255, 0, 0));
}

TEST_F(LumoraWindow, TabWalksThroughTheSegmentsAndCtrlTabLeaves) {
    press("Add");
    press("Add");
    hands.click(canvas(), pointOf(1));
    for (const char* text : {"11", "0.9", "22", "0.9"}) {
        hands.key(Qt::Key_Tab);
        hands.type(text);
    }
    for (int i = 0; i < 3; ++i)
        hands.key(Qt::Key_Tab);
    hands.type("99"); // at the end of all: nothing takes it
    EXPECT_EQ(QApplication::focusWidget(), &canvas());
    const LumoraTrack& track = document().track(1);
    EXPECT_EQ(track.GetTrack(1).brightness() * 100 + track.GetTrack(2).brightness(), 1122);
    EXPECT_DOUBLE_EQ(track.GetTrack(1).time() + track.GetTrack(2).time(), 1.8);
    EXPECT_EQ(document().Data(1, "Trip Point"), "50");
    hands.key(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(QApplication::focusWidget(), &canvas().timeBox());
    press("Zoom In");
    EXPECT_EQ(QApplication::focusWidget(), &canvas().timeBox());
    hands.key(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget()->accessibleName(), "Trip Point");
}

TEST_F(LumoraWindow, EachPartOfASegmentSaysWhatItIs) {
    press("Add");
    const BlockGeometry block = canvas().geometryOf(1, 1);
    for (const auto& [at, text] :
         {std::pair(pointOf(1), "Segment 1: 50 %, 1.00 s"),
          std::pair(block.handle.center(), "Drag to change the time"),
          std::pair(block.gradient.center(), "Drag to change the brightness")}) {
        QHelpEvent help(QEvent::ToolTip, at, canvas().mapToGlobal(at));
        QApplication::sendEvent(&canvas(), &help);
        EXPECT_EQ(QToolTip::text(), text);
    }
}

TEST_F(LumoraWindow, ClicksSelectAndTheContextMenuActs) {
    for (int i = 0; i < 3; ++i)
        press("Add");
    hands.click(canvas(), pointOf(1));
    hands.click(canvas(), pointOf(2), Qt::LeftButton, Qt::ShiftModifier);
    EXPECT_EQ(selected(), (std::vector{1, 2}));
    hands.click(canvas(), pointOf(1), Qt::LeftButton, Qt::ControlModifier);
    EXPECT_EQ(selected(), std::vector<int>{2});
    hands.click(canvas(), pointOf(2), Qt::RightButton);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QStringList captions;
    for (const QAction* action : menu->actions())
        captions.push_back(action->isSeparator() ? "-" : action->text());
    EXPECT_EQ(captions,
              (QStringList{"Change &Brightness...", "Change Ti&me...", "-", "&Function", "-",
                           "&Add", "&Insert", "&Delete", "-", "Cu&t", "&Copy", "&Paste"}));
    hands.click(*menu, menu->actionGeometry(menu->actions()[7]).center());
    EXPECT_EQ(document().track(1).GetTrackCount(), 2);
    key(Qt::Key_Delete);
    EXPECT_EQ(document().track(1).GetTrackCount(), 1);
    // A click beside the blocks clears the selection.
    QTest::mouseClick(&canvas(), Qt::LeftButton, {},
                      canvas().geometryOf(1, 1).block.topRight() + QPoint(40, 10));
    EXPECT_EQ(control().tracks.track(1).SelectedIndexCount(), 0);
}

TEST_F(LumoraWindow, SegmentsCanBeReadAndDrawNothingOverTheirNeighbours) {
    form.OpenFile(desk.folder.file(
        "a.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t100\t.1\t\t0\t2\t0\t.1"
                    "\t\t0\t3\t0\t.1\tPT\t0\t4\t100\t1.3\t\t0\n"));
    const auto pictureWith = [this](int focused) {
        hands.click(canvas(), pointOf(focused));
        QApplication::processEvents();
        return canvas().grab().toImage();
    };
    const QImage before = pictureWith(4);
    for (const int segment : {1, 2, 3}) {
        const QImage now = pictureWith(segment);
        if (segment < 3) { // beside which the focus never was
            const QRect next = canvas().geometryOf(1, segment + 1).block;
            EXPECT_EQ(now.copy(next), before.copy(next));
        }
        const QPoint value = canvas().geometryOf(1, segment).block.topLeft() + QPoint(10, 8);
        for (const QImage& shown : {before, now}) {
            double most = 1;
            for (int at = 0; at < 16 * 8; ++at)
                most = std::max(most,
                                Theme::contrast(shown.pixelColor(value + QPoint(at % 16, at / 16)),
                                                shown.pixelColor(value)));
            EXPECT_GE(most, 4.5) << "value of " << segment;
        }
    }
}

TEST_F(LumoraWindow, TheButtonsStayWhereTheyAreOnEveryTab) {
    const auto corner = [this] {
        for (const QPushButton* button : view().findChildren<QPushButton*>())
            if (button->text() == "Add")
                return button->mapTo(&window, QPoint());
        return QPoint();
    };
    const QPoint first = corner();
    for (int tab = 2; tab <= 9; ++tab) {
        showTab(tab);
        QApplication::processEvents();
        EXPECT_EQ(corner(), first) << tab;
    }
}

TEST_F(LumoraWindow, TheWheelScrollsAndZoomsAboutThePointer) {
    for (int i = 0; i < 12; ++i)
        press("Add");
    const auto turn = [this](Qt::KeyboardModifiers modifiers, int delta) {
        hands.turnWheel(canvas(), QPoint(200, 30), delta, modifiers);
    };
    const int offset = control().tracks.scrollOffset();
    turn({}, 120);
    EXPECT_NEAR(control().tracks.scrollOffset(), offset - 900, 5);
    for (int i = 0; i < 8; ++i)
        turn({}, 15); // small steps of a touchpad add up
    EXPECT_NEAR(control().tracks.scrollOffset(), offset - 1800, 10);
    const double before = (control().tracks.scrollOffset() + 3000) / control().tracks.TimeScale();
    turn(Qt::ControlModifier, 120);
    EXPECT_FLOAT_EQ(control().tracks.TimeScale(), 3000);
    EXPECT_NEAR((control().tracks.scrollOffset() + 3000) / control().tracks.TimeScale(), before,
                0.002);
}

TEST_F(LumoraWindow, ADragOfAnEdgePaintsItsTrackAlone) {
    press("Add");
    QApplication::processEvents();
    const BlockGeometry block = canvas().geometryOf(1, 1);
    hands.press(canvas(), block.handle.center());
    const PaintCounter watch(canvas());
    for (int x = 4; x < 40; x += 4)
        hands.moveTo(canvas(), block.handle.center() + QPoint(x, 0));
    const int top = control().tracks.TrackTop(2) / 15;
    EXPECT_FALSE(watch.painted().isEmpty());
    EXPECT_LT(watch.painted().boundingRect().bottom(), top);
    release(block.handle.center());
}

TEST_F(LumoraWindow, ProgramsTheControllerAndSaysHowItWent) {
    press("Add");
    desk.bench.plugIn("lumora-1.2");
    press("Program");
    const QPointer<QDialog> dialog = window.findChild<QDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), "Program Lumora");
    EXPECT_EQ(dialog->findChild<QLabel*>()->text(), "Programming complete.");
    EXPECT_EQ(dialog->findChild<QProgressBar*>()->value(), 100);
    QApplication::processEvents();
    hands.click(*dialog->findChild<QPushButton*>());
    EXPECT_TRUE(dialog.isNull() || !dialog->isVisible());
}

TEST_F(LumoraWindow, ThePictureOfTheModelIsDraggedUndoneSavedAndReopened) {
    showTab(9);
    SimulatorCanvas& canvas = view().simulator().canvas();
    const LumoraSimulatorControl& simulator = control().simulatorControl;
    const auto middleOf = [&simulator](int light) {
        const auto& patch = simulator.light(light);
        return QPoint(patch.left + patch.width / 2, patch.top + patch.height / 2);
    };
    hands.drop(canvas, QPoint(3, 3), CORVANE_EXAMPLES "/model.png");
    EXPECT_EQ(simulator.background().width, 640);
    hands.drop(canvas, middleOf(2), CORVANE_EXAMPLES "/light.png");
    EXPECT_EQ(simulator.light(2).width, 60);
    const QPoint from = middleOf(2);
    const QPoint to = from + QPoint(120, -60);
    hands.drag(canvas, from, to);
    EXPECT_EQ(middleOf(2), to);
    control().simulatorControl.setAutoUpdate(false); // so that pictures can be compared
    window.setFocus();
    const QImage dragged = canvas.grab().toImage();
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(middleOf(2), from);
    EXPECT_NE(canvas.grab().toImage(), dragged);
    key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(canvas.grab().toImage(), dragged);
    saveAs("picture.lumora");
    form.menu.mnuFileNew.choose();
    EXPECT_NE(canvas.grab().toImage(), dragged);
    form.menu.mnuFileMRU.item(1).choose();
    EXPECT_EQ(canvas.grab().toImage(), dragged);
    // A smaller picture leaves nothing of the larger one on the screen.
    control().simulatorControl.setAutoUpdate(false);
    const auto onScreen = [this] {
        QApplication::processEvents();
        return window.screen()->grabWindow(window.winId()).toImage();
    };
    for (QPushButton* button : view().findChildren<QPushButton*>())
        if (button->accessibleName() == "Light of channel 2")
            hands.click(*button, button->rect().center());
    hands.key(Qt::Key_R); // Reset Picture
    EXPECT_EQ(simulator.light(2).width, 25);
    const QImage left = onScreen();
    EXPECT_FALSE(left.isNull());
    canvas.update();
    EXPECT_EQ(onScreen(), left);
}

} // namespace
} // namespace corvane
