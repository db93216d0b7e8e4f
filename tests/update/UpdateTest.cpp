#include "support/Desk.h"
#include "update/UpdateStatusForm.h"

#include <gmock/gmock.h>

#include <set>

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
    poll(KOUpdates::Working);
    EXPECT_EQ(band->BandState(), 0);
    client.log = "Brighter lights.";
    poll(KOUpdates::Available);
    EXPECT_EQ(band->BandState(), 1);
    EXPECT_EQ(band->ChangeLogText.Caption(), "Brighter lights.");
    EXPECT_EQ(band->NotifyLabel.Caption(),
              "A new version of Corvane is available. Would you like to download it?");
    EXPECT_FALSE(band->SoftwareUpdateTimer.Enabled()); // it can wait for long
    band->YesButton.press();
    EXPECT_EQ(band->BandState(), 3);
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
    band.reset();
    EXPECT_EQ(client.calls, "bdr");
}

TEST_F(UpdateBand, FailuresShowOnlyWhatThePersonHasBegun) {
    for (const int state : {KOUpdates::Failed, KOUpdates::NothingNew}) {
        make(true);
        poll(state);
        EXPECT_EQ(band->BandState(), 0);
        EXPECT_FALSE(band->SoftwareUpdateTimer.Enabled());
    }
    make(true);
    poll(KOUpdates::Available);
    band->YesButton.press();
    poll(KOUpdates::Failed);
    EXPECT_EQ(band->NotifyLabel.Caption(), "An error occured while updating.");
    EXPECT_FALSE(band->RestartButton.Visible());
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
    std::set<std::string> texts;
    const auto textOf = [&](State state, int daysWithoutNews) {
        client.standing = {state, "2.22", 43, false, "no way there", daysWithoutNews};
        form.LookTimer.Fired.raise();
        EXPECT_EQ(form.NewsLabel.Visible(), daysWithoutNews >= 30);
        return form.StatusLabel.Caption();
    };
    for (int state = static_cast<int>(State::Off); state <= static_cast<int>(State::Failed);
         ++state)
        texts.insert(textOf(static_cast<State>(state), 29));
    EXPECT_EQ(texts.size(), 8U); // looking and being about to look are the same
    EXPECT_EQ(textOf(State::Newest, 0), "Corvane 2.21 is the newest version.");
    EXPECT_THAT(textOf(State::Downloading, 0), testing::HasSubstr("43 %"));
    EXPECT_THAT(textOf(State::Failed, 30), testing::HasSubstr("no way there"));
    EXPECT_THAT(form.NewsLabel.Caption(), testing::HasSubstr("for 30 days"));
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
    poll(KOUpdates::Available);
    EXPECT_EQ(band->DesiredTop(), 0);
    // At 100 pixels a second, which a late timer does not slow; when the clock is set back, it
    // stands for one tick.
    for (const auto& [tick, top] : {std::pair(5, -150), {50, -300}}) {
        slide(tick == 5 ? 100 : 150, tick);
        EXPECT_EQ(band->DesiredTop(), top);
        EXPECT_EQ(band->DesiredHeight(), SoftwareUpdateBand::MainHeight); // whole from the start
        desk.bench.clock.goWrong(-3600000);
    }
    band->NoButton.press();
    slide(100);
    EXPECT_EQ(band->DesiredTop(), -150);
    EXPECT_EQ(band->DesiredHeight(), SoftwareUpdateBand::MainHeight); // until the end
    slide(1000);
    EXPECT_EQ(band->DesiredTop(), 0);
    EXPECT_EQ(band->DesiredHeight(), 0);
    EXPECT_FALSE(band->AnimationTimer.Enabled());
}

TEST_F(UpdateBand, DetailsOpenTheBandAndComeBackWithIt) {
    constexpr int open = -SoftwareUpdateBand::MainHeight - SoftwareUpdateBand::DetailsHeight;
    poll(KOUpdates::Available);
    band->DetailsButton.press();
    slide(5000);
    EXPECT_EQ(band->DesiredTop(), open);
    band->YesButton.press();
    band->DownloadHideTimer.Fired.raise();
    slide(5000);
    EXPECT_EQ(band->DesiredTop(), 0);
    poll(KOUpdates::Downloaded);
    slide(5000);
    EXPECT_EQ(band->DesiredTop(), open);
}

} // namespace
} // namespace corvane
