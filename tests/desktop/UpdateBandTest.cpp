#include "desktop/AboutWindow.h"
#include "desktop/UpdateBandView.h"
#include "support/Hands.h"
#include "support/ProductWindow.h"
#include "system/SystemClock.h"
#include "update/UpdateStatusForm.h"

#include <QLabel>
#include <QPlainTextEdit>

namespace corvane {
namespace {

struct OfferingClient final : KOUpdates {
    int state = Available;

    void UC_Begin() override {}
    void UC_Reset() override {}
    int UC_GetState() const override { return state; }
    std::string UC_GetChangeLog() const override {
        return "Version 2.22\n\n- Lights fade more smoothly.\n- A link is found sooner.";
    }
    void UC_BeginNow() override { state = Available; }
    void UC_DownloadUpdate() override { state = Working; }
    void UC_Decline(bool forGood) override { standing.skipped = forGood; }
    UpdateStanding UC_GetStanding() const override { return standing; }

    UpdateStanding standing{UpdateStanding::State::Offered, "2.22", 0, false, "", 31};
};

class UpdateWindow : public ProductWindow {
  protected:
    explicit UpdateWindow(std::string opened = {}) : opened_(std::move(opened)) {
        KOOptions(desk.registry).setAutopatchEnabled(true);
    }

    const std::string opened_; // ending of an empty document's name, and its type code

    OfferingClient client;
    SystemClock clock;
    std::unique_ptr<SoftwareUpdateBand> band;
    std::unique_ptr<UpdateStatusForm> updateStatus;

    void SetUp() override {
        band = std::make_unique<SoftwareUpdateBand>(client, desk.registry, clock);
        form.setBand(*band);
        window.setBand(*band);
        updateStatus = std::make_unique<UpdateStatusForm>(client, *band);
        window.setUpdateStatus(*updateStatus);
        const auto mark = opened_.find(' ');
        if (opened_.empty())
            open({});
        else
            openEmpty(opened_.substr(0, mark), opened_.substr(mark + 1));
    }
    QWidget& view() { return *window.findChild<QWidget*>("updateBand"); }
    void poll(int state) {
        client.state = state;
        band->SoftwareUpdateTimer.Fired.raise();
    }
    bool slidTo(int height) {
        return QTest::qWaitFor([&] {
            return form.bandPlace().top == form.control()->size().height &&
                   -band->DesiredTop() == height && !band->AnimationTimer.Enabled();
        });
    }
    void pressIn(const char* caption) {
        for (QPushButton* button : view().findChildren<QPushButton*>())
            if (button->text() == caption && button->isVisible())
                return QTest::mouseClick(button, Qt::LeftButton);
        FAIL() << caption;
    }
};

TEST_F(UpdateWindow, SlidesInShowsItsDetailsAndLeadsToARestart) {
    EXPECT_FALSE(view().isVisible());
    const int whole = form.control()->size().height;
    EXPECT_TRUE(QTest::qWaitFor([&] { return band->BandState() == 1; }, 10000)); // by its timer
    EXPECT_TRUE(slidTo(SoftwareUpdateBand::MainHeight));
    EXPECT_TRUE(view().isVisible());
    EXPECT_EQ(form.control()->size().height, whole - SoftwareUpdateBand::MainHeight);
    pressIn("Details >>");
    EXPECT_TRUE(slidTo(SoftwareUpdateBand::MainHeight + SoftwareUpdateBand::DetailsHeight));
    auto* log = view().findChild<QPlainTextEdit*>();
    EXPECT_TRUE(log->isVisible());
    EXPECT_TRUE(log->toPlainText().contains("fade more smoothly"));
    EXPECT_LE(log->mapTo(&view(), log->rect().bottomRight()).y(), view().height());
    pressIn("<< Details");
    EXPECT_TRUE(slidTo(SoftwareUpdateBand::MainHeight));
    EXPECT_FALSE(log->isVisible());
    pressIn("Yes");
    poll(KOUpdates::Downloaded);
    pressIn("Restart");
    EXPECT_FALSE(window.isVisible());
    ASSERT_EQ(desk.programs.started.size(), 1U);
    EXPECT_EQ(desk.programs.started[0], "/opt/corvane/Corvane.exe|");
}

TEST_F(UpdateWindow, IsToldByTheMenuHowItStandsAndSkipsForGood) {
    const auto choose = [this](const MenuItem& item) {
        EXPECT_TRUE(
            Hands::choose(*window.menuBar(), {"&Help", QString::fromStdString(item.Caption())}));
    };
    choose(form.menu.mnuHelpCheckForUpdatesNow);
    auto* told = window.findChild<QDialog*>("updateStatus");
    ASSERT_TRUE(told != nullptr && QTest::qWaitForWindowExposed(told));
    const auto says = [&told](const char* text) {
        for (const QLabel* label : told->findChildren<QLabel*>())
            if (label->isVisible() && label->text().contains(text))
                return true;
        return false;
    };
    EXPECT_TRUE(says("Version 2.22 is available."));
    EXPECT_TRUE(says("for 31 days"));
    client.standing.state = UpdateStanding::State::Failed;
    client.standing.why =
        "https://updates.example/corvane.json could not be fetched: Host not found";
    EXPECT_TRUE(QTest::qWaitFor([&] { return says("Host not found"); })); // while it is open
    QTest::keyClick(told, Qt::Key_Escape);
    EXPECT_FALSE(told->isVisible());

    EXPECT_TRUE(QTest::qWaitFor([&] { return band->BandState() == 1; }, 10000));
    EXPECT_TRUE(slidTo(SoftwareUpdateBand::MainHeight));
    pressIn("Skip This Version");
    EXPECT_TRUE(client.standing.skipped);
    EXPECT_TRUE(slidTo(0));

    choose(form.menu.mnuHelpAbout);
    auto* about = window.findChild<AboutWindow*>();
    ASSERT_TRUE(about != nullptr && QTest::qWaitForWindowExposed(about));
    bool found = false;
    for (const QLabel* label : about->findChildren<QLabel*>())
        found = found || (label->isVisible() && label->text().contains("for 31 days"));
    EXPECT_TRUE(found);
}

class NarrowUpdateWindow : public UpdateWindow {
  protected:
    NarrowUpdateWindow() : UpdateWindow("relay Pactor") {}
};

TEST_F(NarrowUpdateWindow, WrapsItsTextAndTheWindowGrowsForIt) {
    const QSize before = window.size();
    const auto expectAllShown = [this] {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !band->AnimationTimer.Enabled(); }, 10000));
        QApplication::processEvents();
        const auto* text = view().findChild<QLabel*>();
        EXPECT_GE(text->height(), text->heightForWidth(text->width()))
            << text->text().toStdString();
        EXPECT_GE(view().height(), 40);
        for (const QPushButton* button : view().findChildren<QPushButton*>())
            if (button->isVisible()) {
                EXPECT_GT(button->width(),
                          button->fontMetrics().horizontalAdvance(button->text()) + 6)
                    << button->text().toStdString();
            }
        EXPECT_TRUE(window.view()->rect().isValid());
        EXPECT_GE(window.view()->height(), window.view()->minimumSizeHint().height());
        EXPECT_LE(view().geometry().bottom(), view().parentWidget()->rect().bottom());
    };
    poll(KOUpdates::Available);
    expectAllShown();
    pressIn("Details >>");
    expectAllShown();
    EXPECT_GT(window.height(), before.height() + 160);
    pressIn("<< Details");
    expectAllShown();
    pressIn("No");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !view().isVisible(); }, 10000));
    EXPECT_EQ(window.size(), before);
}

TEST_F(UpdateWindow, AFailureIsShown) {
    poll(KOUpdates::Available);
    EXPECT_TRUE(slidTo(SoftwareUpdateBand::MainHeight));
    pressIn("Yes");
    poll(KOUpdates::Failed);
    EXPECT_EQ(band->BandState(), 6);
}

} // namespace
} // namespace corvane
