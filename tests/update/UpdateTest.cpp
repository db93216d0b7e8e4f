#include "support/Desk.h"
#include "update/UpdateStatusForm.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace corvane {
namespace {

/// A client that is where the test says.
struct ScriptedClient final : KOUpdates {
    int state = Working;
    std::string log;
    std::string calls;
    UpdateStanding standing;

    void UC_Begin() override { calls += 'b'; }
    void UC_BeginNow() override { calls += 'n'; }
    void UC_Reset() override { calls += 'r'; }
    int UC_GetState() const override { return state; }
    std::string UC_GetChangeLog() const override { return log; }
    void UC_DownloadUpdate() override {
        calls += 'd';
        state = Working;
    }
    void UC_Decline(bool forGood) override { calls += forGood ? 's' : 'x'; }
    UpdateStanding UC_GetStanding() const override { return standing; }
};

class UpdateBand : public testing::Test {
  protected:
    Desk desk;
    ScriptedClient client;
    std::unique_ptr<SoftwareUpdateBand> band;

    void SetUp() override { make(true); }
    void make(bool enabled) {
        KOOptions(desk.registry).setAutopatchEnabled(enabled);
        band.reset();
        client.calls.clear();
        band = std::make_unique<SoftwareUpdateBand>(client, desk.registry, desk.bench.clock);
    }
    void poll(int state) {
        client.state = state;
        if (band->SoftwareUpdateTimer.Enabled())
            band->SoftwareUpdateTimer.Fired.raise();
    }
    /// Lets the slide run for so long, in ticks of so many milliseconds.
    void slide(int milliseconds, int tick = 5) {
        for (int at = 0; at < milliseconds && band->AnimationTimer.Enabled(); at += tick) {
            desk.bench.clock.advance(static_cast<std::uint64_t>(tick));
            band->AnimationTimer.Fired.raise();
        }
    }
    int mark() { return desk.registry.OpenSettingsForReading()->Integers("Update"); }
};

TEST_F(UpdateBand, TheNormalCourseLeadsToARestart) {
    EXPECT_EQ(client.calls, "b");
    poll(KOUpdates::Working);
    EXPECT_EQ(band->BandState(), 0);
    EXPECT_EQ(band->DesiredTop(), 0);
    client.log = "Brighter lights.";
    poll(KOUpdates::Available);
    EXPECT_EQ(band->BandState(), 1);
    EXPECT_EQ(band->ChangeLogText.Caption(), "Brighter lights.");
    EXPECT_EQ(band->NotifyLabel.Caption(),
              "A new version of Corvane is available. Would you like to download it?");
    EXPECT_TRUE(band->YesNoButtons.Visible());
    EXPECT_FALSE(band->SoftwareUpdateTimer.Enabled()); // it can wait for long
    band->YesButton.press();
    EXPECT_EQ(client.calls, "bd");
    EXPECT_EQ(band->BandState(), 3);
    EXPECT_TRUE(band->SoftwareUpdateTimer.Enabled());
    EXPECT_TRUE(band->DownloadHideTimer.Enabled());
    EXPECT_FALSE(band->YesNoButtons.Visible());
    band->DownloadHideTimer.Fired.raise();
    EXPECT_EQ(band->BandState(), 4);
    EXPECT_FALSE(band->DownloadHideTimer.Enabled());
    slide(1000);
    EXPECT_EQ(band->DesiredTop(), 0);
    EXPECT_EQ(mark(), 0);
    poll(KOUpdates::Downloaded);
    EXPECT_EQ(band->BandState(), 5);
    EXPECT_EQ(mark(), 1);
    EXPECT_TRUE(band->RestartButton.Visible());
    int restarts = 0;
    const Connection onRestart = band->RestartRequested.connect([&] { ++restarts; });
    band->RestartButton.press();
    EXPECT_EQ(restarts, 1);
    band.reset();
    EXPECT_EQ(client.calls, "bdr");
}

TEST_F(UpdateBand, FailuresShowOnlyWhatThePersonHasBegun) {
    poll(KOUpdates::Failed);
    EXPECT_EQ(band->BandState(), 0);
    EXPECT_FALSE(band->SoftwareUpdateTimer.Enabled());
    make(true);
    poll(KOUpdates::NothingNew);
    EXPECT_EQ(band->BandState(), 0);
    EXPECT_FALSE(band->SoftwareUpdateTimer.Enabled());
    make(true);
    poll(KOUpdates::Available);
    band->YesButton.press();
    poll(KOUpdates::Failed);
    EXPECT_EQ(band->BandState(), 6);
    EXPECT_EQ(band->NotifyLabel.Caption(), "An error occured while updating.");
    EXPECT_FALSE(band->RestartButton.Visible());
    EXPECT_FALSE(band->DownloadHideTimer.Enabled());
    band->DownloadHideTimer.Fired.raise(); // late: it hides nothing but a download
    EXPECT_EQ(band->BandState(), 6);
    make(false);
    EXPECT_EQ(client.calls, "");
    EXPECT_FALSE(band->SoftwareUpdateTimer.Enabled());
}

TEST_F(UpdateBand, WithoutAPlaceForTheMarkItFails) {
    poll(KOUpdates::Available);
    band->YesButton.press();
    // Where a settings file should be stands a folder that can't be written over.
    std::filesystem::remove_all(desk.folder.path() / "config");
    desk.folder.file("config", "in the way");
    poll(KOUpdates::Downloaded);
    EXPECT_EQ(band->BandState(), 6);
}

TEST_F(UpdateBand, TheMarkStandsOnlyWhileTheBandSaysSo) {
    poll(KOUpdates::Downloaded);
    EXPECT_EQ(mark(), 1);
    make(false); // the next start
    EXPECT_EQ(mark(), 0);
    std::filesystem::remove_all(desk.folder.path() / "config");
    SoftwareUpdateBand none(client, desk.registry, desk.bench.clock);
    EXPECT_FALSE(desk.registry.OpenSettingsForReading()); // a mark that is not there makes no key
}

TEST_F(UpdateBand, NoIsForThisRunAndSkippingForGood) {
    poll(KOUpdates::Available);
    EXPECT_EQ(band->SkipButton.Caption(), "Skip This Version");
    band->NoButton.press();
    EXPECT_EQ(client.calls, "bx");
    EXPECT_EQ(band->BandState(), 0);
    band->CheckNow();
    poll(KOUpdates::Available);
    EXPECT_EQ(band->BandState(), 1);
    band->CheckNow(); // what is on offer already is not looked for
    band->SkipButton.press();
    EXPECT_EQ(client.calls, "bxns");
    EXPECT_EQ(band->BandState(), 0);
}

TEST_F(UpdateBand, WhoeverAsksIsToldHowItStands) {
    using State = UpdateStanding::State;
    UpdateStatusForm form(client, *band);
    form.show();
    EXPECT_EQ(client.calls, "bn");
    std::vector<std::string> texts;
    for (int state = static_cast<int>(State::Off); state <= static_cast<int>(State::Failed);
         ++state) {
        client.standing = {static_cast<State>(state), "2.22", 43, false, "no way there", 29};
        form.LookTimer.Fired.raise();
        texts.push_back(form.StatusLabel.Caption());
        EXPECT_FALSE(form.NewsLabel.Visible());
    }
    EXPECT_EQ(texts[static_cast<std::size_t>(State::Newest)],
              "Corvane 2.21 is the newest version.");
    EXPECT_THAT(texts[static_cast<std::size_t>(State::Downloading)], testing::HasSubstr("43 %"));
    EXPECT_THAT(texts.back(), testing::HasSubstr("no way there"));
    std::sort(texts.begin(), texts.end());
    // One text for each, but that looking and being about to look are the same.
    EXPECT_EQ(std::unique(texts.begin(), texts.end()) - texts.begin(), 8);
    client.standing.daysWithoutNews = 30;
    form.LookTimer.Fired.raise();
    EXPECT_THAT(form.NewsLabel.Caption(), testing::HasSubstr("for 30 days"));
    EXPECT_TRUE(form.NewsLabel.Visible());
    EXPECT_EQ(band->BandState(), 0); // never in the band
    client.standing.state = State::Off;
    EXPECT_EQ(form.News(), "");
}

TEST_F(UpdateBand, ALongLogIsCutBetweenCharacters) {
    for (int i = 0; i < 33000; ++i)
        client.log += "ä";
    poll(KOUpdates::Available);
    EXPECT_EQ(band->ChangeLogText.Caption().size(), 64000U);
}

TEST_F(UpdateBand, SlidesByTimeAndTurnsRoundWhereItStands) {
    int steps = 0;
    const Connection onStep = band->DesiredPositionChanged.connect([&] { ++steps; });
    poll(KOUpdates::Available);
    EXPECT_EQ(band->DesiredHeight(), SoftwareUpdateBand::MainHeight); // whole from the start
    EXPECT_EQ(band->DesiredTop(), 0);
    slide(100); // at 100 pixels a second
    EXPECT_EQ(band->DesiredTop(), -150);
    desk.bench.clock.goWrong(-3600000); // it stands for one tick
    slide(150, 50);                     // a late timer does not slow it
    EXPECT_EQ(band->DesiredTop(), -300);
    EXPECT_EQ(steps, 23);
    band->NoButton.press();
    EXPECT_EQ(band->DesiredHeight(), SoftwareUpdateBand::MainHeight); // until the end
    slide(100);
    EXPECT_EQ(band->DesiredTop(), -150);
    slide(1000);
    EXPECT_EQ(band->DesiredTop(), 0);
    EXPECT_EQ(band->DesiredHeight(), 0);
    EXPECT_FALSE(band->AnimationTimer.Enabled());
    band->setDesiredHeight(300);
    slide(1000);
    EXPECT_EQ(band->DesiredTop(), -300);
}

TEST_F(UpdateBand, DetailsOpenTheBandAndComeBackWithIt) {
    poll(KOUpdates::Available);
    slide(2000);
    EXPECT_FALSE(band->DetailsRegion.Visible());
    band->DetailsButton.press();
    EXPECT_EQ(band->DetailsButton.Caption(), "<< Details");
    slide(5000);
    EXPECT_EQ(band->DesiredTop(),
              -SoftwareUpdateBand::MainHeight - SoftwareUpdateBand::DetailsHeight);
    EXPECT_TRUE(band->DetailsRegion.Visible());
    band->YesButton.press();
    band->DownloadHideTimer.Fired.raise();
    slide(5000);
    EXPECT_EQ(band->DesiredTop(), 0);
    poll(KOUpdates::Downloaded);
    slide(5000);
    EXPECT_EQ(band->DesiredTop(),
              -SoftwareUpdateBand::MainHeight - SoftwareUpdateBand::DetailsHeight);
    band->DetailsButton.press();
    slide(5000);
    EXPECT_EQ(band->DesiredTop(), -SoftwareUpdateBand::MainHeight);
    EXPECT_FALSE(band->DetailsRegion.Visible());
}

} // namespace
} // namespace corvane
