// A person at the light window who does anything at all: what is on the screen can be saved at any
// time, and opened again as it was; it would come back after a crash; and none of it is held once
// another document is open.
#include "desktop/light/LumoraView.h"
#include "desktop/light/SimulatorView.h"
#include "desktop/light/TracksCanvas.h"
#include "support/Answering.h"
#include "support/Effort.h"
#include "support/KeptWork.h"
#include "support/ProductWindow.h"

#include <QMenu>
#include <QMenuBar>
#include <QPixmapCache>
#include <QScreen>
#include <QTabBar>

#include <malloc.h>

// There in the instrumented build alone.
extern "C" [[gnu::weak]] std::size_t
__sanitizer_get_current_allocated_bytes(); // NOLINT(*-reserved-identifier)

namespace corvane {
namespace {

/// Lets everything come to rest: each layout that leads to another takes a round of the loop, and
/// what is left goes in none but a loop of its own.
class Settling final : public QObject {
  public:
    Settling() { qApp->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        layout_ = layout_ || event->type() == QEvent::LayoutRequest;
        return false;
    }
    void settle() {
        do {
            layout_ = false;
            QApplication::processEvents();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        } while (layout_);
    }

  private:
    bool layout_ = false;
};

class RandomActs : public ProductWindow {
  protected:
    // For a long walk, or another one.
    const int acts = fromEnvironment("CORVANE_ACTS", effort(800, 2000));
    const int seed = fromEnvironment("CORVANE_SEED", 20);
    // Kilobytes: of caches that fill up, and of what each act leaves behind.
    const std::size_t mostGrowth = static_cast<std::size_t>(acts);
    Random random{static_cast<unsigned>(seed)};
    std::optional<Answering> answering;
    Settling settling;
    std::string first;

    static int fromEnvironment(const char* name, int otherwise) {
        const int value = qEnvironmentVariableIntValue(name);
        return value > 0 ? value : otherwise;
    }
    void SetUp() override {
        QApplication::setCursorFlashTime(0); // pictures of the screen are compared
        const std::string content =
            "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t100\t.8\t\t0\t2\t60"
            "\t1.1\tP\t0\t3\t10\t.05\tPT\t0\t4\t90\t.9\t\t10\n";
        first = desk.folder.file("first.lumora", content);
        open(desk.folder.file("acts.lumora", content));
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
    static std::size_t kilobytes() {
        const struct mallinfo2 held = ::mallinfo2();
        return (__sanitizer_get_current_allocated_bytes == nullptr
                    ? held.uordblks + held.hblkhd
                    : __sanitizer_get_current_allocated_bytes()) /
               1024;
    }
    /// What is held with no more in the document than at the beginning, in kilobytes. What was
    /// decoded to be seen goes when what came after it is seen.
    std::size_t heldAtRest() {
        form.OpenFile(first);
        auto& tabs = *window.view()->findChild<QTabBar*>();
        for (const int tab : {tabs.count() - 1, 0}) {
            hands.clickTab(tabs, tab);
            settling.settle();
        }
        QPixmapCache::clear();
        const std::size_t held = kilobytes();
        form.OpenFile(desk.folder.path() / "acts.lumora");
        return held;
    }
    std::string whole(ProductDesk& of) { return WholeWork(*of.form.HistoryObject()); }
    QImage onScreen() {
        constexpr int rounds = 10; // in which what moves comes to rest
        QImage shown;
        for (int i = 0; i < rounds; ++i) {
            settling.settle();
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
    std::vector<std::size_t> atRest; // now and then
    for (int i = 1; i <= acts; ++i) {
        SCOPED_TRACE("act " + std::to_string(i) + " of seed " + std::to_string(seed));
        act();
        closeWhatOpened();
        ASSERT_FALSE(HasFailure());
        if (form.HistoryObject()->SaveDirty()) {
            ASSERT_EQ(KeptWork(journals), whole(*this));
        }
        if (i % 10 == 0) {
            ASSERT_TRUE(isPaintedWhole());
        }
        longest = std::max(longest, form.HistoryObject()->Length());
        if (i % 100 != 0)
            continue;
        answering.reset();
        hands.key(Qt::Key_S, Qt::ControlModifier);
        ASSERT_FALSE(form.HistoryObject()->SaveDirty());
        {
            ProductDesk second;
            second.open(desk.folder.path() / "acts.lumora");
            ASSERT_EQ(stateOf(document(second.form)), stateOf(document(form)));
            ASSERT_EQ(whole(second), whole(*this));
        }
        const std::size_t held = kilobytes();
        atRest.push_back(heldAtRest());
        if (i % 1000 == 0) {
            std::printf("%d acts, %zu bytes of changes, %zu KB held, %zu KB at rest\n", i,
                        whole(*this).size(), held, atRest.back());
            std::fflush(stdout);
        }
        window.activateWindow();
        answering.emplace(random, std::vector<QString>{CORVANE_EXAMPLES "/light.png"});
    }
    EXPECT_GT(longest, acts / 40); // it was about something
    // The first acts fill what is kept for good; from then on it may come and go, but hardly grow.
    const auto half = atRest.begin() + static_cast<std::ptrdiff_t>(atRest.size() / 2);
    EXPECT_LT(*std::min_element(half, atRest.end()),
              *std::max_element(atRest.begin(), half) + mostGrowth);
}

} // namespace
} // namespace corvane
