#include "shell/MainForm.h"

#include "base/Product.h"
#include "light/SegmentPopup.h"
#include "support/Desk.h"
#include "support/NotesControl.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;
constexpr const char* Light = "Corvane.LumoraControl";
constexpr const char* Relay = "Corvane.PactorControl";

class MainFormTest : public testing::Test {
  protected:
    MainFormTest() {
        for (const char* name : {Light, Relay})
            controls.add(name, [this, name] {
                auto made = std::make_unique<NotesControl>(desk);
                if (arrange)
                    arrange(*made);
                made->notes.history.setFilter(name);
                return made;
            });
        form = std::make_unique<MainForm>(desk.place, controls, application);
    }

    NotesControl& shown() { return dynamic_cast<NotesControl&>(*form->control()); }
    void tick(int milliseconds) {
        for (int i = 0; i < milliseconds; i += 50) {
            form->tmrUpdate.Fired.raise();
            desk.bench.clock.advance(50);
        }
    }
    std::string noteFile(const std::string& name) {
        return desk.folder.file(name, "Notes\t1\t1\t0\t2\nNote\thello\n");
    }
    Texts recentCaptions() {
        Texts captions;
        for (int i = 1; i <= form->menu.mnuFileMRU.count(); ++i)
            captions.push_back(form->menu.mnuFileMRU.item(i).Caption());
        return captions;
    }

    Desk desk;
    Application application{desk.programs, desk.person};
    ProductControls controls{desk.place, desk.keys};
    std::function<void(NotesControl&)> arrange;
    std::unique_ptr<MainForm> form;
};

/// Each entry has its answer in the manual.
void expectIn(const std::string& manual, const std::vector<MenuPlace>& places) {
    for (const MenuPlace& place : places) {
        std::string caption = place.item == nullptr ? "-" : place.item->Caption();
        std::erase(caption, '&');
        EXPECT_TRUE(caption == "-" || manual.find(caption) != std::string::npos) << caption;
        expectIn(manual, place.submenu);
    }
}

TEST_F(MainFormTest, TheManualAnswersForEachEntryOfTheMenus) {
    form->Initialize("");
    std::string manual;
    ASSERT_EQ(desk.files.ReadWhole(CORVANE_MANUAL "/how-do-i.md", manual),
              FileDoor::ReadResult::Done);
    expectIn(manual, form->menu.layout());
    expectIn(manual, SegmentPopup().layout());
}

TEST_F(MainFormTest, WithoutAClipboardItsEntriesGoAndWithoutADocumentTheMenusToo) {
    arrange = [](NotesControl& made) { made.hasClipboard = false; };
    form->Initialize("");
    EXPECT_TRUE(form->menu.mnuEdit.Visible());
    EXPECT_FALSE(form->menu.mnuEditCut.Visible() || form->menu.mnuEditCutPasteSeparator.Visible());
    form->setHistoryObject(nullptr);
    EXPECT_FALSE(form->menu.mnuEdit.Visible() || form->menu.mnuFileSave.Visible());
    EXPECT_TRUE(form->menu.mnuFileExit.Visible());
    form->OpenFile("anything"); // is dropped
    EXPECT_THAT(desk.person.messages, IsEmpty());
}

TEST_F(MainFormTest, OpensTheFileThatTheProgramWasStartedWithInItsProductsControl) {
    form->Initialize(noteFile("x.relay"));
    EXPECT_EQ(form->interface().InterfaceClass(), Relay);
    EXPECT_EQ(shown().notes.lines, Texts{"hello"});
    EXPECT_THAT(recentCaptions(), ElementsAre("&1 x.relay"));
    std::filesystem::remove(desk.folder.path() / "x.relay");
    form->menu.mnuFileMRU.item(1).choose(); // the file is gone, and with it the entry
    EXPECT_EQ(desk.person.takeMessage(), "Error: File not found.");
    EXPECT_THAT(recentCaptions(), IsEmpty());
    EXPECT_FALSE(form->menu.mnuFileMRUSeparator.Visible());
}

TEST_F(MainFormTest, RecentFilesShowTheirNamesOrPaths) {
    form->Initialize(noteFile("a&b.lumora"));
    form->OpenFile(noteFile("c.lumora"));
    EXPECT_THAT(recentCaptions(), ElementsAre("&1 c.lumora", "&2 a&&b.lumora"));
    std::filesystem::create_directory(desk.folder.path() / "sub");
    form->OpenFile(noteFile("sub/d.lumora"));
    desk.person.files = {desk.folder.path() / "sub" / "e.lumora"};
    form->menu.mnuFileSaveAs.choose(); // renames the newest
    const std::string folder = desk.folder.path();
    EXPECT_THAT(recentCaptions(),
                ElementsAre("&1 " + folder + "/sub/e.lumora", "&2 " + folder + "/c.lumora",
                            "&3 " + folder + "/a&&b.lumora"));
    EXPECT_TRUE(form->Unload());
    form.reset();
    EXPECT_THAT(
        desk.registry.OpenSettingsForReading()->StringArrays("MRUList"),
        ElementsAre(folder + "/a&b.lumora", folder + "/c.lumora", folder + "/sub/e.lumora"));
}

struct StillBand final : BottomBand {
    int top = 0;
    int DesiredTop() const override { return top; }
    int DesiredHeight() const override { return 900; }
};

TEST_F(MainFormTest, TheBandTakesItsPlaceFromTheControl) {
    form->Initialize("");
    EXPECT_EQ(shown().size(), (TwipSize{11010, 7770}));
    StillBand band;
    form->setBand(band);
    EXPECT_FALSE(form->bandPlace().visible);
    band.top = -600;
    band.DesiredPositionChanged.raise();
    EXPECT_EQ(form->bandPlace(), (BandPlace{true, 7170, 900, 11010}));
    EXPECT_EQ(shown().size(), (TwipSize{11010, 7170}));
    form->Resize({300, 400});
    EXPECT_EQ(shown().size(), (TwipSize{300, 0}));
}

TEST_F(MainFormTest, AControlMayWantASize) {
    for (const TwipSize size : {TwipSize{0, 500}, TwipSize{3000, 500}}) {
        arrange = [&](NotesControl& made) { made.wanted = size; };
        MainForm other(desk.place, controls, application);
        std::vector<TwipSize> wanted;
        const Connection onWanted =
            other.ClientSizeWanted.connect([&](TwipSize asked) { wanted.push_back(asked); });
        other.Initialize("");
        EXPECT_EQ(wanted, std::vector<TwipSize>(size.width == 0 ? 0 : 1, size)); // 0 is none
    }
}

TEST_F(MainFormTest, RestartsOnlyIfThePersonLetsItEnd) {
    form->Initialize("");
    shown().notes.add("a");
    form->menu.mnuHelpTroubleshootingRestartCorvaneInDebugMode.choose();
    EXPECT_EQ(application.PendingRestartProgram(), "");
    EXPECT_THAT(desk.programs.started, IsEmpty());
    desk.person.answers = {Answer::No};
    desk.programs.fails = true;
    form->menu.mnuHelpTroubleshootingRestartCorvaneInDebugMode.choose();
    EXPECT_THAT(desk.programs.started, ElementsAre("/opt/corvane/Corvane.exe|-debug2"));
    EXPECT_EQ(desk.person.takeMessage(),
              "Error: Failed to start \"/opt/corvane/Corvane.exe\" -debug2.");
}

TEST_F(MainFormTest, TroubleshootingReachesDriversPowerAndTheLinksOwnStrings) {
    form->Initialize("");
    form->menu.mnuHelpTroubleshootingReinstallCorvaneDrivers.choose();
    EXPECT_THAT(desk.programs.started, ElementsAre("/opt/corvane/Install Drivers.exe|"));
    EXPECT_EQ(desk.person.takeMessage(),
              "Restart Needed: You will need to restart Corvane to use the newly installed "
              "drivers.");
    form->menu.mnuHelpTroubleshootingReprogramCorvaneEEPROM.choose();
    EXPECT_EQ(desk.person.takeMessage(), "Error: No Corvane is connected.");

    LinkBench::Plugged& plugged = desk.bench.plugIn("lumora-1.2");
    ASSERT_TRUE(desk.bench.link.Connect(Light, true));
    form->menu.mnuHelpTroubleshootingPowerCycle.choose();
    EXPECT_EQ(desk.bench.timesLogged("Resetting device."), 2); // after the exit, and once more
    form->menu.mnuHelpTroubleshootingReprogramCorvaneEEPROM.choose();
    EXPECT_EQ(desk.person.takeMessage(),
              "Success: Corvane EEPROM reprogramming complete.\r\n\r\nPlease disconnect and "
              "reconnect the Corvane for the change to take effect.");
    plugged.link->plugIn(desk.bench.clock.sinceStart());
    const bench::LinkStrings& strings = plugged.link->strings();
    EXPECT_EQ(strings.description + ", " + strings.manufacturer, "Corvane, Ortaline Works");
    EXPECT_THAT(strings.serialNumber, testing::MatchesRegex("KO[0-9A-F]+"));
    EXPECT_EQ(strings.serialNumber.size(), 9U);
    EXPECT_FALSE(desk.person.busy || desk.person.sawBusyMessage);
}

TEST_F(MainFormTest, TheAboutBoxsLinkFollowsTheMouse) {
    form->about.show();
    EXPECT_EQ(form->about.VersionLabel.Caption(), std::string("Version: ") + ProgramVersion);
    HyperlinkControl& site = form->about.Site;
    bool over = true;
    const Connection onLook = site.PointerLookedFor.connect([&](bool& is) { is = over; });
    site.mouseMoved();
    site.HighlightTimerHack.Fired.raise();
    EXPECT_EQ(site.ForeColor(), HyperlinkControl::Hovered);
    site.mousePressed();
    EXPECT_EQ(site.ForeColor(), HyperlinkControl::Pressed);
    site.mouseReleased(true);
    EXPECT_THAT(desk.programs.started, ElementsAre(MakerSite));
    over = false;
    site.HighlightTimerHack.Fired.raise();
    EXPECT_EQ(site.ForeColor(), HyperlinkControl::Normal);
    EXPECT_FALSE(site.HighlightTimerHack.Enabled());
}

TEST_F(MainFormTest, AControlThatDoesNotMakeWayStays) {
    form->Initialize("");
    desk.bench.plugIn("pactor-2.1");
    desk.bench.link.setMaintainConnection(true);
    tick(500);
    EXPECT_EQ(desk.bench.link.Class(), Relay);
    EXPECT_EQ(form->interface().InterfaceClass(), Light);
    EXPECT_FALSE(form->interface().ready());
    EXPECT_THAT(shown().heard, IsEmpty());
}

TEST_F(MainFormTest, ReadyChangesAndPacketsReachTheControlOfTheSameProduct) {
    form->Initialize("");
    auto& plugged =
        desk.bench.plugIn(scripted([](std::uint8_t channel, bench::ByteView, bench::Reply& reply) {
            if (channel == 208)
                reply.send(80, bench::Bytes{1});
        }));
    desk.bench.link.setMaintainConnection(true);
    tick(500);
    EXPECT_EQ(shown().heard, std::vector<bool>{true});
    KOPacket request = desk.bench.link.makePacket();
    request.setChannel(208);
    EXPECT_TRUE(request.Send());
    tick(200);
    EXPECT_EQ(shown().channels, std::vector<int>{80});
    desk.bench.unplug(plugged);
    tick(100);
    EXPECT_EQ(shown().heard, (std::vector<bool>{true, false}));
}

} // namespace
} // namespace corvane
