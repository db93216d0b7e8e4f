#include "desktop/DefaultView.h"
#include "desktop/Theme.h"
#include "relay/PactorControl.h"
#include "support/ProductWindow.h"

#include <QAccessible>
#include <QLabel>
#include <QToolTip>

#include <fstream>

namespace corvane {
namespace {

class MainWindowTest : public ProductWindow {
  protected:
    using ProductWindow::ProductWindow;

    /// A relay's settings, of which one is changed.
    void openChanged(const std::string& name = "a.relay") {
        open(desk.folder.file(name, "Pactor\t0\t0\t0\t1\n"));
        dynamic_cast<PactorControl&>(*form.control()).optRelay[2].choose();
    }
    void choose(const QStringList& path) {
        EXPECT_TRUE(Hands::choose(*window.menuBar(), path)) << path.back().toStdString();
    }
};

class StartWindow : public MainWindowTest {
  protected:
    StartWindow() : MainWindowTest("KO", RunModes{.ProgramMode = true}) {}
};

TEST_F(MainWindowTest, ANameThatWouldNotShowAgainIsAskedAbout) {
    openChanged();
    const std::string other = desk.folder.file("taken.relay", "precious");
    std::string questions;
    const auto name = [](const char* text) {
        return [text](QFileDialog& dialog) {
            EXPECT_EQ(dialog.nameFilters(),
                      (QStringList{"Relay Settings Files (*.relay)", "All Files (*)"}));
            Hands::key(Qt::Key_A, Qt::ControlModifier);
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(text);
            Hands::key(Qt::Key_Return);
        };
    };
    const auto answer = [&questions](QMessageBox::StandardButton button) {
        return [&questions, button](QMessageBox& box) {
            questions += box.text().section('\n', 0, 0).toStdString() + "|";
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
    EXPECT_EQ(questions, "Save as 'my police.relay'?|Save as 'taken.relay'?|"
                         "taken.relay already exists.|Save as 'plain.txt.relay'?|");
    EXPECT_EQ(desk.folder.content("taken.relay"), "precious");
    EXPECT_EQ(desk.folder.content("plain.txt"), "Pactor\t1\t1\t0\t1\nPactorText\t1\tRelay\t\tON\n");
    EXPECT_EQ(window.windowTitle(),
              "Dervan/Maltrex - " + QString::fromStdString(desk.folder.path() / "plain.txt"));
}

TEST_F(MainWindowTest, AnOddNameAmongTheRecentFilesCostsThatNameOnly) {
    open({});
    for (const char* name : {"a.lumora", "\xFF.lumora", "b.lumora"})
        form.OpenFile(desk.folder.file(name, "Lumora\t0\t0\t0\t1\n"));
    EXPECT_TRUE(window.close());
    std::ofstream(desk.store.file(), std::ios::app) << "texts\tOther\t\xFF\n";
    // The next start has it in its menu.
    MainForm next(place, controls, application);
    MainWindow nextWindow(next, status);
    nextWindow.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&nextWindow));
    next.Initialize({});
    EXPECT_TRUE(Hands::choose(*nextWindow.menuBar(), {"&File", "&2 a.lumora"}));
    EXPECT_EQ(next.Title(), "Lumora - " + (desk.folder.path() / "a.lumora").string());
}

TEST_F(MainWindowTest, UpdatesThatThereAreNoneOfCanNotBeChosenAndTheEntrySaysWhy) {
    open({});
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
    openChanged("x[*].relay");
    EXPECT_TRUE(window.windowHandle()->title().contains("x[*].relay*"))
        << window.windowHandle()->title().toStdString();
}

TEST_F(MainWindowTest, ARestartThatFailsIsToldWithTheWindowGone) {
    desk.programs.fails = true;
    open({});
    bool gone = false;
    whenShown<QMessageBox>([&](QMessageBox& box) {
        gone = !window.isVisible();
        Hands::click(*box.button(QMessageBox::Ok));
    });
    choose({"&Help", "&Troubleshooting", "&Restart Corvane", "&Normally"});
    EXPECT_TRUE(gone);
}

TEST_F(MainWindowTest, TheAboutBoxsLinkOpensWithTheKeyboardAndStaysAsItIs) {
    open({});
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

TEST_F(MainWindowTest, ASecondKeyRedoes) {
    openChanged();
    Hands::key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(form.HistoryObject()->CanRedo());
    Hands::key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_FALSE(form.HistoryObject()->CanRedo());
}

TEST_F(MainWindowTest, AsksBeforeItCloses) {
    openChanged();
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

TEST_F(StartWindow, GivesWayToAChoice) {
    open({});
    EXPECT_NE(dynamic_cast<DefaultView*>(window.view()), nullptr);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(window.menuBar()->cornerWidget())
                  ->text(QAccessible::Name),
              "Link: No link is plugged in. Plug in a Corvane link to begin.");
    Hands::key(Qt::Key_Space); // where the focus is at first
    EXPECT_TRUE(desk.programs.started.empty());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(dynamic_cast<DefaultView*>(window.view()), nullptr);
    EXPECT_EQ(window.windowTitle(), "Lumora");
}

TEST_F(StartWindow, GoesOnLookingAfterAPowerCycle) {
    open({});
    choose({"&Help", "&Troubleshooting", "Power &Cycle Corvane-Attached Device"});
    desk.bench.plugIn("pactor-3.1");
    EXPECT_TRUE(QTest::qWaitFor([this] {
        desk.bench.clock.advance(50);
        return form.interface().InterfaceClass() == "Corvane.PactorControl";
    }));
}

TEST_F(StartWindow, ShowsTheLinkAndLeadsToTheDriversWhereItMayNotBeOpened) {
    open({});
    auto& sign = dynamic_cast<QLabel&>(*window.menuBar()->cornerWidget());
    const auto says = [&sign](const char* text) {
        return QTest::qWaitFor([&] { return sign.text().contains(text); });
    };
    LinkBench::Plugged& plugged = desk.bench.plugIn("blank");
    EXPECT_TRUE(says("Link hardware is plugged in"));
    desk.bench.unplug(plugged);
    EXPECT_TRUE(says("No link is plugged in"));
    desk.bench.plugIn("lumora-1.2").accessible = false;
    ASSERT_TRUE(says("may not be opened"));
    whenShown<QMessageBox>([](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), "Restart Needed");
        box.reject();
    });
    Hands::click(sign);
    EXPECT_EQ(desk.programs.started, std::vector<std::string>{"/opt/corvane/Install Drivers.exe|"});
}

TEST(ToolkitFilter, TakesTheFormOfTheToolkit) {
    EXPECT_EQ(ToolkitFilter("Pictures (*.bmp;*.png)|*.bmp;*.png|All Files (*.*)|*.*"),
              "Pictures (*.bmp *.png);;All Files (*)");
    EXPECT_EQ(ToolkitFilter(""), "");
}

TEST(Theme, TextColoursCanBeReadOnEitherGround) {
    const QPalette light;
    for (const QPalette& palette : {light, Theme::darkPalette()})
        for (const auto ground : {QPalette::Window, QPalette::Base}) {
            std::vector<QColor> texts{Theme::hintColor(palette, ground)};
            if (ground == QPalette::Window)
                for (const int color : {0xFF0000, 0x0000FF, 0x9F009F, 255, 0})
                    texts.push_back(Theme::textColor(palette, color));
            for (const QColor& text : texts)
                EXPECT_GE(Theme::contrast(text, palette.color(ground)), 4.5)
                    << text.name().toStdString();
        }
    EXPECT_EQ(Theme::textColor(light, 0xFF0000), QColor(0, 0, 255));
    EXPECT_TRUE(Theme::isDark(Theme::darkPalette()));
}

} // namespace
} // namespace corvane
