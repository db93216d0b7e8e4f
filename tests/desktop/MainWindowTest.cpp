#include "desktop/MainWindow.h"

#include "desktop/DefaultView.h"
#include "desktop/QtDialogs.h"
#include "desktop/Theme.h"
#include "support/Hands.h"
#include "support/NotesControl.h"
#include "support/Screen.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QToolTip>
#include <gtest/gtest.h>

#include <fstream>

namespace corvane {
namespace {

class MainWindowTest : public testing::Test {
  protected:
    explicit MainWindowTest(RunModes modes = {.DebugMode = true}) : desk(modes) {
        dialogs.setFolder(QString::fromStdString(desk.folder.path()));
        controls.add("Corvane.LumoraControl", [this] {
            // Its questions are asked in real boxes.
            return std::make_unique<NotesControl>(desk, &dialogs);
        });
    }
    void open(const std::string& file = {}) {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        form.Initialize(file);
    }
    Notes& notes() { return dynamic_cast<NotesControl&>(*form.control()).notes; }

    void choose(const QStringList& path) {
        EXPECT_TRUE(Hands::choose(*window.menuBar(), path)) << path.back().toStdString();
    }

    Desk desk;
    QtDialogs dialogs;
    Application application{desk.programs, dialogs};
    ProductControls controls{desk.place, desk.keys};
    MainForm form{desk.place, controls, application};
    LinkStatus status{desk.bench.link};
    MainWindow window{form, status};
};

class StartWindow : public MainWindowTest {
  protected:
    StartWindow() : MainWindowTest({.ProgramMode = true}) {}
};

TEST_F(MainWindowTest, ANameThatWouldNotShowAgainIsAskedAbout) {
    open();
    notes().add("one");
    EXPECT_EQ(window.windowTitle(), "Notes*");
    const std::string other = desk.folder.file("taken.note", "precious");
    std::vector<std::string> questions;
    const auto name = [](const char* text) {
        return [text](QFileDialog& dialog) {
            EXPECT_EQ(dialog.nameFilters(), (QStringList{"Notes (*.note)", "All Files (*)"}));
            Hands::key(Qt::Key_A, Qt::ControlModifier);
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(text);
            Hands::key(Qt::Key_Return);
        };
    };
    const auto answer = [&questions](QMessageBox::StandardButton button) {
        return [&questions, button](QMessageBox& box) {
            questions.push_back(box.text().section('\n', 0, 0).toStdString());
            Hands::click(*box.button(button));
        };
    };
    // Back, as typed, under another name that is taken, back, and under the one that is meant.
    whenShown<QFileDialog>(name("my police"));
    whenShown<QMessageBox>(answer(QMessageBox::Cancel), [&] {
        whenShown<QFileDialog>(name("taken"), [&] {
            whenShown<QMessageBox>(answer(QMessageBox::Yes), [&] {
                whenShown<QMessageBox>(answer(QMessageBox::No), [&] {
                    whenShown<QFileDialog>(name("plain.txt"), [&] {
                        whenShown<QMessageBox>(answer(QMessageBox::No));
                    });
                });
            });
        });
    });
    choose({"&File", "Save &As..."});
    EXPECT_EQ(questions, (std::vector<std::string>{
                             "Save as 'my police.note'?", "Save as 'taken.note'?",
                             "taken.note already exists.", "Save as 'plain.txt.note'?"}));
    EXPECT_EQ(desk.folder.content("taken.note"), "precious");
    EXPECT_EQ(desk.folder.content("plain.txt"), "Notes\t1\t1\t0\t2\nNote\tone\n");
    EXPECT_EQ(window.windowTitle(),
              "Notes - " + QString::fromStdString(desk.folder.path() / "plain.txt"));
}

TEST_F(MainWindowTest, AnOddNameAmongTheRecentFilesCostsThatNameOnly) {
    open();
    int number = 0;
    for (const char* name : {"a.lumora", "\xFF.lumora", "b.lumora"})
        form.OpenFile(
            desk.folder.file(name, "Notes\t1\t1\t0\t2\nNote\t" + std::to_string(++number) + "\n"));
    EXPECT_TRUE(window.close());
    std::ofstream(desk.store.file(), std::ios::app) << "texts\tOther\t\xFF\n";
    // The next start has it in its menu.
    MainForm next(desk.place, controls, application);
    MainWindow nextWindow(next, status);
    nextWindow.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&nextWindow));
    next.Initialize({});
    EXPECT_TRUE(Hands::choose(*nextWindow.menuBar(), {"&File", "&2 a.lumora"}));
    EXPECT_EQ(dynamic_cast<NotesControl&>(*next.control()).notes.lines,
              std::vector<std::string>{"1"});
}

TEST_F(MainWindowTest, UpdatesThatThereAreNoneOfCanNotBeChosenAndTheEntrySaysWhy) {
    open();
    const KOOptions options(desk.registry);
    const QString caption = "Automatically Check for &Updates";
    choose({"&Options", caption});
    EXPECT_TRUE(options.AutopatchEnabled());
    form.setNoUpdates();
    choose({"&Options", caption});
    EXPECT_TRUE(options.AutopatchEnabled());
    auto& menu = dynamic_cast<QMenu&>(*QApplication::activePopupWidget());
    const QPoint at = menu.actionGeometry(Hands::entryOf(menu, caption)).center();
    QHelpEvent help(QEvent::ToolTip, at, menu.mapToGlobal(at));
    QApplication::sendEvent(&menu, &help);
    EXPECT_EQ(QToolTip::text(), "This build has no address to look for updates at.");
    Hands::closeMenus();
}

TEST_F(MainWindowTest, ATitleShowsEveryName) {
    open();
    form.OpenFile(desk.folder.file("x[*].note", "Notes\t1\t1\t0\t2\nNote\tone\n"));
    EXPECT_TRUE(window.windowHandle()->title().contains("x[*].note"))
        << window.windowHandle()->title().toStdString();
}

TEST_F(MainWindowTest, ARestartThatFailsIsToldWithTheWindowGone) {
    desk.programs.fails = true;
    open();
    bool gone = false;
    whenShown<QMessageBox>([&](QMessageBox& box) {
        gone = !window.isVisible();
        Hands::click(*box.button(QMessageBox::Ok));
    });
    choose({"&Help", "&Troubleshooting", "&Restart Corvane", "&Normally"});
    EXPECT_TRUE(gone);
}

TEST_F(MainWindowTest, TheAboutBoxsLinkOpensWithTheKeyboardAndStaysAsItIs) {
    open();
    choose({"&Help", "&About..."});
    auto* about = window.findChild<QDialog*>();
    ASSERT_TRUE(QTest::qWaitForWindowActive(about));
    EXPECT_FALSE(about->isModal());
    Hands::key(Qt::Key_Space); // on OK, wherever the logo is
    EXPECT_TRUE(desk.programs.started.empty());
    EXPECT_FALSE(form.about.open());
    choose({"&Help", "&About..."});
    about = window.findChildren<QDialog*>().back();
    ASSERT_TRUE(QTest::qWaitForWindowActive(about));
    QWidget* link = about->focusWidget()->nextInFocusChain();
    while (!link->accessibleName().startsWith("Web site"))
        link = link->nextInFocusChain();
    while (QApplication::focusWidget() != link)
        Hands::key(Qt::Key_Tab);
    Hands::key(Qt::Key_Return);
    EXPECT_EQ(desk.programs.started.size(), 1U);
    EXPECT_EQ(form.about.Site.ForeColor(), HyperlinkControl::Normal);
}

TEST_F(MainWindowTest, KeysUndoAndRedo) {
    open();
    notes().add("one");
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(notes().lines.empty());
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(notes().lines.size(), 1U);
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    QTest::keyClick(&window, Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(notes().lines.size(), 1U);
    EXPECT_EQ(Hands::entryOf(*window.menuBar(), "&Edit")->menu()->actions()[1]->toolTip(),
              "There is nothing to redo.");
}

TEST_F(MainWindowTest, AsksBeforeItCloses) {
    open();
    notes().add("one");
    whenShown<QMessageBox>([](QMessageBox& box) {
        EXPECT_EQ(box.text(), "Changes have been made. Would you like to save them?");
        QTest::keyClick(&box, Qt::Key_Escape);
    });
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    whenShown<QMessageBox>(
        [](QMessageBox& box) { QTest::mouseClick(box.button(QMessageBox::No), Qt::LeftButton); });
    EXPECT_TRUE(form.tmrUpdate.Enabled());
    form.about.show();
    choose({"&File", "E&xit"});
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(form.about.open());
    EXPECT_FALSE(form.tmrUpdate.Enabled());
    EXPECT_TRUE(form.Unload()); // a second time changes nothing
}

TEST_F(MainWindowTest, AFileDroppedOnItOpens) {
    open();
    Hands::drop(window, QPoint(50, 50),
                desk.folder.file("x.note", "Notes\t1\t1\t0\t2\nNote\tdropped\n"));
    EXPECT_EQ(notes().lines, std::vector<std::string>{"dropped"});
}

TEST_F(MainWindowTest, TellsWhatIsWrongWithAFile) {
    std::string told;
    whenShown<QMessageBox>([&](QMessageBox& box) {
        told = box.text().toStdString();
        QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton);
    });
    open(desk.folder.file("x.lumora", "nonsense"));
    EXPECT_EQ(told, "Can't understand the file format.");
}

TEST_F(StartWindow, GivesWayToAChoiceAndEverythingHasAName) {
    open();
    auto* view = dynamic_cast<DefaultView*>(window.view());
    ASSERT_NE(view, nullptr);
    for (QAbstractButton* button : view->findChildren<QAbstractButton*>())
        EXPECT_FALSE(button->accessibleName().isEmpty());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(window.menuBar()->cornerWidget())
                  ->text(QAccessible::Name),
              "Link: No link is plugged in. Plug in a Corvane link to begin.");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    Hands::key(Qt::Key_Space); // where the focus is at first
    EXPECT_TRUE(desk.programs.started.empty());
    EXPECT_EQ(form.interface().InterfaceClass(), "Corvane.LumoraControl");
    EXPECT_EQ(form.HistoryObject(), &notes().history);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(dynamic_cast<DefaultView*>(window.view()), nullptr);
    EXPECT_EQ(window.windowTitle(), "Notes");
}

TEST_F(StartWindow, GoesOnLookingAfterAPowerCycle) {
    controls.add("Corvane.PactorControl",
                 [this] { return std::make_unique<NotesControl>(desk, &dialogs); });
    open();
    choose({"&Help", "&Troubleshooting", "Power &Cycle Corvane-Attached Device"});
    desk.bench.plugIn("pactor-3.1");
    EXPECT_TRUE(QTest::qWaitFor([this] {
        desk.bench.clock.advance(50);
        return form.interface().InterfaceClass() == "Corvane.PactorControl";
    }));
}

TEST_F(StartWindow, ShowsTheLinkAsItComesAndGoes) {
    open();
    const auto sign = [this] {
        return dynamic_cast<QLabel&>(*window.menuBar()->cornerWidget()).text().mid(2);
    };
    LinkBench::Plugged& plugged = desk.bench.plugIn("blank");
    EXPECT_TRUE(QTest::qWaitFor([&] { return sign() == "Link hardware is plugged in"; }));
    desk.bench.unplug(plugged);
    EXPECT_TRUE(QTest::qWaitFor([&] { return sign() == "No link is plugged in"; }));
}

TEST_F(StartWindow, ASignOfALinkThatMayNotBeOpenedLeadsToTheDrivers) {
    open();
    auto& sign = dynamic_cast<QLabel&>(*window.menuBar()->cornerWidget());
    desk.bench.plugIn("lumora-1.2").accessible = false;
    ASSERT_TRUE(QTest::qWaitFor([&] { return sign.text().contains("may not be opened"); }));
    QTest::mouseClick(&sign, Qt::LeftButton, {}, sign.rect().center());
    EXPECT_EQ(desk.programs.started, std::vector<std::string>{"/opt/corvane/Install Drivers.exe|"});
    EXPECT_EQ(desk.person.messages.at(0).title, "Restart Needed");
}

TEST(ToolkitFilter, TakesTheFormOfTheToolkit) {
    EXPECT_EQ(ToolkitFilter("Pictures (*.bmp;*.png)|*.bmp;*.png|All Files (*.*)|*.*"),
              "Pictures (*.bmp *.png);;All Files (*)");
    EXPECT_EQ(ToolkitFilter(""), "");
}

TEST(Theme, TextColoursCanBeReadOnEitherGround) {
    const QPalette light;
    for (const QPalette& palette : {light, Theme::darkPalette()})
        for (const int color : {0xFF0000, 0x0000FF, 0x9F009F, 255, 0})
            EXPECT_GE(
                Theme::contrast(Theme::textColor(palette, color), palette.color(QPalette::Window)),
                4.5)
                << color;
    for (const QPalette& palette : {light, Theme::darkPalette()})
        for (const auto ground : {QPalette::Window, QPalette::Base})
            EXPECT_GE(Theme::contrast(Theme::hintColor(palette, ground), palette.color(ground)),
                      4.5);
    EXPECT_EQ(Theme::textColor(light, 0xFF0000), QColor(0, 0, 255));
    EXPECT_TRUE(Theme::isDark(Theme::darkPalette()));
}

} // namespace
} // namespace corvane
