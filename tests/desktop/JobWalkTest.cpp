// Every tab, button and key of every product's window while a job runs, and while a question is
// open: what is done meanwhile does nothing, then or later, and the focus is where it was.
#include "desktop/EventLoop.h"
#include "support/EveryProduct.h"

#include <QDialogButtonBox>

namespace corvane {
namespace {

class JobWalk : public testing::TestWithParam<ProductUnderTest> {
  protected:
    using Acts = std::vector<std::function<void()>>;

    /// All that can be clicked in the window itself, at its place.
    Acts clicks() {
        Acts all;
        for (QWidget* widget : walk.window.findChildren<QWidget*>()) {
            if (!widget->isVisible() || widget->window() != &walk.window)
                continue;
            const QPointer<QWidget> kept = widget;
            if (qobject_cast<QAbstractButton*>(widget) != nullptr ||
                qobject_cast<QLineEdit*>(widget) != nullptr ||
                qobject_cast<QMenuBar*>(widget) != nullptr || widget->accessibleName() == "Tracks")
                all.push_back([kept] {
                    if (kept != nullptr)
                        Hands::click(*kept, QPoint(20, std::min(10, kept->height() / 2)));
                });
            if (auto* bar = qobject_cast<QTabBar*>(widget))
                for (int tab = 0; tab < bar->count(); ++tab)
                    all.push_back([kept = QPointer(bar), tab] {
                        if (kept != nullptr)
                            Hands::clickTab(*kept, tab);
                    });
        }
        return all;
    }
    static Acts keys(std::initializer_list<QKeyCombination> combinations) {
        Acts all;
        for (const QKeyCombination& combination : combinations)
            all.push_back(
                [combination] { Hands::key(combination.key(), combination.keyboardModifiers()); });
        return all;
    }
    static Acts commands() {
        return keys({Qt::CTRL | Qt::Key_N, Qt::CTRL | Qt::Key_O, Qt::CTRL | Qt::Key_S,
                     Qt::CTRL | Qt::Key_Z, Qt::CTRL | Qt::Key_Y, Qt::CTRL | Qt::Key_X,
                     Qt::CTRL | Qt::Key_V, Qt::ALT | Qt::Key_F, QKeyCombination(Qt::Key_Delete),
                     QKeyCombination(Qt::Key_Insert), QKeyCombination(Qt::Key_F10)});
    }
    [[nodiscard]] std::string state() {
        std::string state = walk.form.Title();
        for (const int position : walk.positions())
            state += " " + std::to_string(position);
        if (QTabBar* bar = walk.tabs())
            state += " tab " + std::to_string(bar->currentIndex());
        state += QApplication::activePopupWidget() == nullptr ? "" : " a menu";
        return state + (walk.window.isVisible() ? "" : " gone");
    }

    ProductWalk walk{GetParam()};
};

TEST_P(JobWalk, NothingThatIsDoneDuringAJobDoesAnything) {
    for (const QString& name : QString(GetParam().firstJobs).split('|', Qt::SkipEmptyParts)) {
        SCOPED_TRACE(name.toStdString());
        QAbstractButton* begins = walk.button(name);
        ASSERT_NE(begins, nullptr);
        Acts acts = clicks();
        for (const Acts& more :
             {commands(), keys({QKeyCombination(Qt::Key_Space), QKeyCombination(Qt::Key_Return),
                                QKeyCombination(Qt::Key_Tab)})})
            acts.insert(acts.end(), more.begin(), more.end());
        const auto doAll = [&acts] {
            for (const auto& act : acts)
                QMetaObject::invokeMethod(qApp, act, Qt::QueuedConnection);
        };
        const auto run = [&] {
            walk.desk.bench.takeLog();
            Hands::click(*begins);
            QApplication::processEvents();
            EXPECT_EQ(walk.desk.bench.timesLogged("Making connection attempt."), 1);
            for (QDialog* dialog : walk.window.findChildren<QDialog*>())
                if (dialog->isVisible())
                    dialog->findChild<QPushButton*>()->click();
            walk.toFront();
        };
        run(); // with nothing done meanwhile
        const std::string alone = state();
        int pauses = 0;
        walk.pause.act = [&] {
            EXPECT_FALSE(begins->isEnabled());
            if (++pauses == 1)
                doAll();
            RepaintWithoutInput();
        };
        {
            // And what still waits when the job is over.
            Dismissing dismissing;
            int ends = 0;
            const Connection atTheEnd = walk.dialogs.JobChanged.connect([&] {
                if (!walk.dialogs.JobRuns() && ++ends == 1)
                    doAll();
            });
            run();
            EXPECT_EQ(dismissing.count, 0);
        }
        walk.pause.act = {};
        EXPECT_GE(pauses, 1);
        EXPECT_EQ(state(), alone);
        EXPECT_TRUE(begins->isEnabled());
        EXPECT_EQ(QApplication::focusWidget(), begins);
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_P(JobWalk, NothingBehindAQuestionDoesAnything) {
    QAbstractButton* loads = walk.button("Load program 1");
    if (walk.form.HistoryObject() == nullptr && loads == nullptr)
        GTEST_SKIP() << "nothing is asked here";
    if (loads == nullptr)
        Hands::key(Qt::Key_Z, Qt::ControlModifier); // something that is not saved
    const std::string before = state();
    std::string behind;
    {
        Dismissing dismissing([&](QWidget& dialog) {
            for (const Acts& acts : {clicks(), commands()})
                for (const auto& act : acts)
                    act();
            behind = state();
            EXPECT_TRUE(dialog.isVisible());
            dialog.activateWindow();
        });
        if (loads != nullptr)
            Hands::click(*loads);
        else
            Hands::key(Qt::Key_N, Qt::ControlModifier);
        EXPECT_EQ(dismissing.count, 1);
    }
    EXPECT_EQ(behind, before);
    EXPECT_EQ(state(), before);
}

TEST(OlderController, ItsQuestionsStandUnderTheUsualPointer) {
    const ProductUnderTest older{"KO", "lumora",
                                 "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t60\t1\tP\t20\n",
                                 "lumora-1.1", "Program"};
    ProductWalk walk(older);
    int asked = 0;
    bool busy = false;
    Dismissing dismissing([&](QWidget& dialog) {
        ++asked;
        busy = busy || QGuiApplication::overrideCursor() != nullptr;
        Hands::click(*dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Yes));
    });
    Hands::click(*walk.button("Program"));
    EXPECT_GE(asked, 1);
    EXPECT_FALSE(busy);
}

INSTANTIATE_TEST_SUITE_P(OfEveryProduct, JobWalk, testing::ValuesIn(EveryProduct()), nameOfProduct);

} // namespace
} // namespace corvane
