// A person at the light window who does anything at all: what is on the screen can be saved at any
// time, and opened again as it was.
#include "desktop/light/LumoraView.h"
#include "desktop/light/SimulatorView.h"
#include "desktop/light/TracksCanvas.h"
#include "support/Answering.h"
#include "support/ProductWindow.h"

#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTabBar>

namespace corvane {
namespace {

class RandomActs : public ProductWindow {
  protected:
    // For a long walk, or another one.
    const int acts = fromEnvironment("CORVANE_ACTS", 2000);
    const int seed = fromEnvironment("CORVANE_SEED", 20);
    Random random{static_cast<unsigned>(seed)};
    std::optional<Answering> answering;

    static int fromEnvironment(const char* name, int otherwise) {
        const int value = qEnvironmentVariableIntValue(name);
        return value > 0 ? value : otherwise;
    }
    void SetUp() override {
        QApplication::setCursorFlashTime(0); // pictures of the screen are compared
        open(desk.folder.file("acts.lumora",
                              "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t100\t.8\t\t0\t2\t60"
                              "\t1.1\tP\t0\t3\t10\t.05\tPT\t0\t4\t90\t.9\t\t10\n"));
        answering.emplace(random, std::vector<QString>{CORVANE_EXAMPLES "/light.png",
                                                       CORVANE_EXAMPLES "/no picture"});
    }
    LumoraDocument& document(MainForm& of) {
        return dynamic_cast<LumoraControl&>(*of.control()).document;
    }
    QPoint anywhere() {
        const QWidget& view = *window.view();
        return {random.below(view.width()), random.below(view.height())};
    }
    Qt::KeyboardModifiers held() {
        constexpr std::array choices{Qt::NoModifier, Qt::NoModifier,    Qt::NoModifier,
                                     Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
        return random.among(choices);
    }
    void pressKey() {
        constexpr std::array keys{Qt::Key_Left,  Qt::Key_Right,  Qt::Key_Up,        Qt::Key_Down,
                                  Qt::Key_Home,  Qt::Key_End,    Qt::Key_Delete,    Qt::Key_Return,
                                  Qt::Key_F2,    Qt::Key_Tab,    Qt::Key_Backspace, Qt::Key_Escape,
                                  Qt::Key_Space, Qt::Key_PageUp, Qt::Key_Backtab,   Qt::Key_1,
                                  Qt::Key_9,     Qt::Key_0,      Qt::Key_Period,    Qt::Key_Minus};
        constexpr std::array commands{Qt::Key_X, Qt::Key_C, Qt::Key_V,  Qt::Key_Z,
                                      Qt::Key_Y, Qt::Key_A, Qt::Key_Tab};
        if (random.below(3) == 0)
            hands.key(random.among(commands), Qt::ControlModifier);
        else
            hands.key(random.among(keys), held() & Qt::ShiftModifier);
    }
    /// Chooses something in a menu that is open, or leaves it.
    void choose() {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (menu == nullptr)
            return;
        QList<QAction*> entries;
        for (QAction* action : menu->actions())
            if (action->isEnabled() && action->isVisible() && !action->isSeparator())
                entries.push_back(action);
        if (entries.empty() || random.below(6) == 0)
            return hands.key(Qt::Key_Escape);
        QAction* entry = entries[random.below(static_cast<int>(entries.size()))];
        const bool leadsOn = entry->menu() != nullptr; // asked before it may take itself away
        hands.click(*menu, menu->actionGeometry(entry).center());
        if (leadsOn)
            choose();
    }
    void openMenu() {
        // The others leave the document, or the program.
        for (QAction* action : window.menuBar()->actions())
            if (action->text() == "&Edit" || (action->text() == "&Options" && random.below(3) == 0))
                hands.click(*window.menuBar(), window.menuBar()->actionGeometry(action).center());
        choose();
    }
    void act() {
        QWidget& view = *window.view();
        const QPoint at = anywhere();
        const QPoint to = anywhere();
        switch (random.below(14)) {
        case 0:
        case 1:
        case 2:
            return hands.click(view, at, Qt::LeftButton, held());
        case 3:
        case 4:
        case 5:
            return pressKey();
        case 6:
            return hands.drag(view, at, to);
        case 7:
            hands.startDrag(view, at, at + (to - at) / 10);
            random.below(2) == 0 ? hands.key(Qt::Key_Escape)
                                 : hands.click(view, to, Qt::RightButton);
            return hands.release(view, to);
        case 8: {
            auto* bar = view.findChild<QTabBar*>();
            return hands.click(*bar, bar->tabRect(random.below(bar->count())).center());
        }
        case 9:
            return hands.key(random.below(2) == 0 ? Qt::Key_Z : Qt::Key_Y, Qt::ControlModifier);
        case 10:
            return openMenu();
        case 11:
            hands.click(view, at, Qt::RightButton);
            return choose();
        case 12:
            return hands.type(std::to_string(random.below(130)).c_str());
        default: {
            QWidget* below = view.childAt(at);
            if (below != nullptr)
                hands.turnWheel(*below, below->mapFrom(&view, at), 120 * (random.below(7) - 3),
                                held());
        }
        }
    }
    /// Memory that is in use.
    static long megabytes() {
        long all = 0;
        long resident = 0;
        std::ifstream("/proc/self/statm") >> all >> resident;
        return resident * ::sysconf(_SC_PAGESIZE) >> 20;
    }
    QImage onScreen() {
        constexpr int rounds = 10; // in which each layout may lead to another
        QImage shown;
        for (int i = 0; i < rounds; ++i) {
            QApplication::processEvents();
            QImage now = window.screen()->grabWindow(window.winId()).toImage();
            if (now == shown)
                break;
            shown = std::move(now);
        }
        return shown;
    }
    /// Whether nothing is left on the screen of what was there before.
    bool isPaintedWhole() {
        constexpr int someTicks = 60; // ms
        if (dynamic_cast<LumoraControl&>(*form.control()).IsSimulating())
            QTest::qWait(someTicks);
        const QImage shown = onScreen();
        for (QWidget* widget : window.findChildren<QWidget*>())
            widget->update();
        const QImage anew = onScreen();
        if (const QString kept = qEnvironmentVariable("CORVANE_SCREENSHOTS");
            anew != shown && !kept.isEmpty()) {
            shown.save(kept + "/shown.png");
            anew.save(kept + "/anew.png");
        }
        return !shown.isNull() && anew == shown;
    }
    void closeWhatOpened() {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        for (QWidget* other : QApplication::topLevelWidgets())
            if (other->isVisible() && qobject_cast<QDialog*>(other) != nullptr)
                other->close();
        if (!window.isActiveWindow()) { // as a window manager would see to it
            window.activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        }
    }
};

TEST_F(RandomActs, CanBeSavedAndOpenedAgainAtAnyTime) {
    int longest = 0;
    for (int i = 1; i <= acts; ++i) {
        SCOPED_TRACE("act " + std::to_string(i) + " of seed " + std::to_string(seed));
        act();
        closeWhatOpened();
        ASSERT_FALSE(HasFailure());
        if (i % 10 == 0) {
            ASSERT_TRUE(isPaintedWhole());
        }
        longest = std::max(longest, form.HistoryObject()->Length());
        if (i % 100 != 0)
            continue;
        answering.reset();
        hands.key(Qt::Key_S, Qt::ControlModifier);
        ASSERT_FALSE(form.HistoryObject()->SaveDirty());
        ProductDesk second;
        second.open(desk.folder.path() / "acts.lumora");
        ASSERT_EQ(stateOf(document(second.form)), stateOf(document(form)));
        std::string ours;
        std::string theirs;
        EXPECT_TRUE(form.HistoryObject()->Compose(ours));
        EXPECT_TRUE(second.form.HistoryObject()->Compose(theirs));
        ASSERT_EQ(theirs, ours);
        if (i % 1000 == 0)
            std::printf("%d acts, %zu bytes of changes, %ld MB\n", i, ours.size(), megabytes());
        window.activateWindow();
        answering.emplace(random, std::vector<QString>{CORVANE_EXAMPLES "/light.png"});
    }
    EXPECT_GT(longest, 50); // it was about something
}

} // namespace
} // namespace corvane
