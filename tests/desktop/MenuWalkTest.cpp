// Every entry of every menu of every product's window, those that come at run time included, with
// the mouse and with the keyboard: each can be chosen and does something, or says why not.
#include "support/EveryProduct.h"

#include <set>

namespace corvane {
namespace {

using Path = std::vector<const MenuItem*>;

/// Calls for each entry that shows, with the way to it.
void eachEntry(const std::vector<MenuPlace>& places, Path& above,
               const std::function<void(const Path&, MenuItem&)>& visit) {
    for (const MenuPlace& place : places) {
        std::vector<MenuItem*> items{place.item};
        if (place.array != nullptr) {
            items.clear();
            for (int i = 1; i <= place.array->count(); ++i)
                items.push_back(&place.array->item(i));
        }
        for (MenuItem* item : items) {
            if (!item->Visible() || item->isSeparator())
                continue;
            above.push_back(item);
            if (place.submenu.empty())
                visit(above, *item);
            eachEntry(place.submenu, above, visit);
            above.pop_back();
        }
    }
}

std::string nameOf(const Path& path) {
    std::string name;
    for (const MenuItem* item : path)
        name += (name.empty() ? "" : " > ") + item->Caption();
    return name;
}

/// Whatever a person could notice after a choice.
class Noticed final : public QObject {
  public:
    explicit Noticed(ProductWalk& walk)
        : walk_(walk), onJob_(walk.dialogs.JobsOver.connect([this] { ++jobs_; })) {
        qApp->installEventFilter(this);
    }
    ~Noticed() override { qApp->removeEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Show && widget != nullptr && widget->isWindow() &&
            qobject_cast<const QMenu*>(widget) == nullptr)
            ++shown_;
        return false;
    }
    [[nodiscard]] std::string state() {
        std::string state = walk_.form.Title() + std::to_string(shown_) + "," +
                            std::to_string(jobs_) + "," +
                            std::to_string(walk_.desk.programs.started.size()) + "," +
                            std::to_string(walk_.window.isVisible());
        if (walk_.form.control() != nullptr)
            for (const int position : walk_.positions())
                state += "," + std::to_string(position);
        const MainMenu& menu = walk_.form.menu;
        for (const MenuItem* item : {&menu.mnuOptionsAutopatch})
            state += item->Checked() ? "c" : "-";
        for (const MenuItem* item : {&menu.mnuEditPaste, &menu.mnuEditUndo, &menu.mnuEditRedo})
            state += item->Enabled() ? "e" : "-";
        return state + std::to_string(walk_.desk.bench.takeLog().empty() ? 0 : 1);
    }

  private:
    ProductWalk& walk_;
    int shown_ = 0; // windows
    int jobs_ = 0;  // under the busy pointer
    Connection onJob_;
};

class MenuWalk : public testing::TestWithParam<ProductUnderTest> {
  protected:
    void SetUp() override { begin(); }

    void begin() {
        walk = std::make_unique<ProductWalk>(GetParam());
        noticed = std::make_unique<Noticed>(*walk);
        arrange();
    }
    /// So that as many entries as possible can be chosen: something to undo and to redo, something
    /// that is not saved, and something selected.
    void arrange() {
        if (walk->form.HistoryObject() == nullptr)
            return;
        Hands::key(Qt::Key_Z, Qt::ControlModifier);
        if (std::string(GetParam().name) == "lumora") {
            QWidget* canvas = nullptr;
            for (QWidget* widget : walk->window.view()->findChildren<QWidget*>())
                if (widget->accessibleName() == "Tracks")
                    canvas = widget;
            Hands::click(*canvas, QPoint(20, 10));
            if (walking.find("&Copy") == std::string::npos) // which is seen by what can be pasted
                Hands::key(Qt::Key_C, Qt::ControlModifier);
        }
    }
    void choose(const Path& path, const MenuItem& item, bool byMouse) {
        SCOPED_TRACE(nameOf(path) + (byMouse ? " with the mouse" : " with the keyboard"));
        const bool enabled = item.Enabled();
        if (!enabled) {
            EXPECT_NE(item.ToolTipText(), "") << "does not say why not";
        }
        static_cast<void>(noticed->state());
        const std::string before = noticed->state();
        const QPointer<QWidget> focused = QApplication::focusWidget();
        {
            Dismissing dismissing;
            QStringList captions;
            for (const MenuItem* above : path)
                captions.push_back(QString::fromStdString(above->Caption()));
            EXPECT_TRUE(Hands::choose(*walk->window.menuBar(), captions, byMouse) || !enabled);
            QApplication::processEvents();
        }
        EXPECT_EQ(noticed->state() != before, enabled);
        Hands::closeMenus();
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window != &walk->window && window->isVisible() &&
                qobject_cast<QDialog*>(window) != nullptr)
                window->close();
        if (walk->window.isVisible()) {
            walk->window.activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(&walk->window));
        }
    }

    std::string walking; // the entry
    std::unique_ptr<ProductWalk> walk;
    std::unique_ptr<Noticed> noticed;
};

TEST_P(MenuWalk, EveryEntryCanBeChosenOrSaysWhyNot) {
    // Entries may go while others are chosen, so they are gone through by their names.
    std::set<std::string> all;
    const auto eachNow = [this](const std::function<void(const Path&, MenuItem&)>& visit) {
        Path path;
        eachEntry(walk->form.menu.layout(), path, visit);
    };
    eachNow([&](const Path& path, MenuItem&) { all.insert(nameOf(path)); });
    const bool hasFiles = walk->form.HistoryObject() != nullptr;
    EXPECT_EQ(all.contains("&File > &2 earlier." + std::string(GetParam().name)), hasFiles);
    for (const std::string& name : all)
        for (const bool byMouse : {true, false}) {
            noticed.reset();
            walk.reset();
            walking = name;
            begin();
            bool found = false;
            Path chosen;
            MenuItem* entry = nullptr;
            eachNow([&](const Path& path, MenuItem& item) {
                if (nameOf(path) != name)
                    return;
                found = true;
                chosen = path;
                entry = &item;
            });
            ASSERT_TRUE(found) << name;
            choose(chosen, *entry, byMouse);
        }
}

INSTANTIATE_TEST_SUITE_P(OfEveryProduct, MenuWalk, testing::ValuesIn(EveryProduct()),
                         nameOfProduct);

} // namespace
} // namespace corvane
