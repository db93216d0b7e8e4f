// Every box, list and slider of every product's window, left in every way that there is: what was
// typed or chosen counts, once, and shows.
#include "desktop/InputWidgets.h"
#include "desktop/InstanceDoor.h"
#include "support/EveryProduct.h"

#include <thread>

namespace corvane {
namespace {

class BoxWalk : public testing::TestWithParam<ProductUnderTest> {
  protected:
    /// Ways to leave a box, each with its name.
    using Way = std::pair<std::string, std::function<void()>>;

    void SetUp() override {
        // A file handed over comes through the real door.
        door = std::make_unique<InstanceDoor>(
            channel, walk.window, [this](const std::string& path) { walk.form.OpenFile(path); });
    }
    std::vector<Way> ways() {
        std::vector<Way> all{
            {"Tab", [] { Hands::key(Qt::Key_Tab); }},
            {"a click on the ground",
             [this] {
                 Hands::click(*walk.window.view(), QPoint(1, walk.window.view()->height() - 2));
             }},
            {"a menu",
             [this] {
                 Hands::choose(*walk.window.menuBar(), {"&Help", "&About..."});
                 walk.form.about.close();
             }},
            {"a key of a menu", [] { Hands::key(Qt::Key_O, Qt::ControlModifier); }},
            {"a file that is dropped", [this] { drop(); }},
            {"a file that is handed over", [this] { handOver(); }},
            {"the window's end", [this] { walk.window.close(); }},
            {"a job",
             [this] {
                 Hands::click(*walk.button(QString(GetParam().firstJobs).section('|', 0, 0)));
             }},
        };
        if (QTabBar* bar = walk.tabs())
            for (int tab = 0; tab < bar->count(); ++tab)
                if (tab != bar->currentIndex())
                    all.emplace_back("the tab " + bar->tabText(tab).toStdString(),
                                     [bar, tab] { Hands::clickTab(*bar, tab); });
        return all;
    }
    /// From a window in front of this one, as a file manager's.
    void drop() {
        QWidget other;
        other.show();
        other.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&other));
        Hands::drop(walk.window, walk.window.rect().center(), walk.file);
    }
    void handOver() {
        std::atomic<bool> heard = false;
        std::thread sender([&] {
            const InstanceChannel other(walk.desk.folder.path() / "run");
            heard = other.Deliver({InstanceRecord::Path, walk.file});
        });
        EXPECT_TRUE(QTest::qWaitFor([&] { return heard.load(); }));
        sender.join();
    }
    /// The boxes that show on the present tab, by their names, in rows of the same name by number.
    std::vector<QWidget*> boxes() {
        std::vector<QWidget*> all;
        for (QWidget* widget : walk.window.view()->findChildren<QWidget*>())
            if (dynamic_cast<Leavable*>(widget) != nullptr && widget->isVisible() &&
                widget->isEnabled())
                all.push_back(widget);
        return all;
    }
    /// Changes what is in it, and stays. What it is to show afterwards.
    QString change(QWidget& widget) {
        if (auto* box = dynamic_cast<Box*>(&widget)) {
            const QString name = box->accessibleName();
            const char* text = name.contains("Shortest")  ? "900"
                               : name.contains("Longest") ? "2100"
                               : name.contains("Time")    ? ".75"
                                                          : "37";
            Hands::retype(*box, text);
            return text;
        }
        widget.setFocus(Qt::TabFocusReason);
        Hands::key(Qt::Key_Up);
        return shown(widget);
    }
    static QString shown(const QWidget& widget) {
        if (const auto* box = qobject_cast<const QLineEdit*>(&widget))
            return box->text();
        if (const auto* list = qobject_cast<const QComboBox*>(&widget))
            return list->currentText();
        return QString::number(dynamic_cast<const QSlider&>(widget).value());
    }
    History& history() { return *walk.form.HistoryObject(); }

    void leaveInEachWay(QPointer<QWidget> box, const std::string& name) {
        for (const auto& [way, leave] : ways()) {
            SCOPED_TRACE(name + " is left by " + way);
            ASSERT_FALSE(box.isNull());
            ASSERT_TRUE(box->isVisible());
            const int tab = walk.tabs()->currentIndex();
            const int before = history().position();
            const int length = history().Length();
            const QString wanted = change(*box);
            EXPECT_EQ(history().position(), before) << "it counts while it is typed";
            {
                Dismissing dismissing;
                leave();
                QApplication::processEvents();
            }
            walk.form.about.close();
            walk.window.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&walk.window));
            EXPECT_EQ(history().position(), before + 1);
            Hands::clickTab(*walk.tabs(), tab);
            QApplication::processEvents();
            ASSERT_FALSE(box.isNull());
            if (box->isVisible()) {
                EXPECT_EQ(shown(*box), wanted);
            }
            {
                Dismissing dismissing; // a change of another place is asked about
                for (int at = history().position(); at > before; --at) {
                    history().Undo();
                    ASSERT_EQ(history().position(), at - 1);
                }
            }
            EXPECT_GE(history().Length(), length);
            QApplication::processEvents();
        }
    }

    ProductWalk walk{GetParam()};
    InstanceChannel channel{walk.desk.folder.path() / "run"};
    std::unique_ptr<InstanceDoor> door;
};

TEST_P(BoxWalk, WhatIsTypedCountsOnceHoweverItIsLeft) {
    if (walk.form.HistoryObject() == nullptr)
        GTEST_SKIP() << "nothing is typed here";
    int walked = 0;
    for (int tab = 0; tab < walk.tabs()->count(); ++tab) {
        // The channels are alike, and a simulator's stick is no part of the document.
        const QString text = walk.tabs()->tabText(tab);
        if ((text.startsWith("Channel") && tab > 1) || text == "Simulator")
            continue;
        Hands::clickTab(*walk.tabs(), tab);
        for (QPushButton* more : walk.window.view()->findChildren<QPushButton*>())
            if (more->text() == "Advanced >>" && more->isVisible())
                Hands::click(*more);
        QApplication::processEvents();
        for (QWidget* box : boxes()) {
            if (box->accessibleName().startsWith("Stick"))
                continue;
            leaveInEachWay(box, (text + ", " + box->accessibleName()).toStdString());
            if (HasFatalFailure())
                return;
            ++walked;
        }
    }
    EXPECT_GE(walked, 3);
}

INSTANTIATE_TEST_SUITE_P(OfEveryProduct, BoxWalk, testing::ValuesIn(EveryProduct()), nameOfProduct);

} // namespace
} // namespace corvane
