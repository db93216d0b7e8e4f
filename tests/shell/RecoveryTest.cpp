#include "light/LumoraUndoableTrackChange.h"
#include "relay/PactorDocument.h"
#include "shell/MainForm.h"
#include "support/Desk.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

class RecoveryTest : public testing::Test {
  protected:
    /// What a killed program leaves that had this document open, on this path, and changed it.
    template<class Document, class Work>
    void leave(const std::string& name, const std::string& path, Work work) {
        const fs::path aside = desk.folder.path() / "killed";
        Journals killed(aside, desk.files);
        Document document({desk.person, desk.person, desk.files, &killed});
        if (!path.empty()) {
            desk.person.files = {path};
            ASSERT_TRUE(document.HistoryObject().SaveHistoryAs());
        }
        work(document);
        fs::create_directories(journals.folder());
        fs::permissions(journals.folder(), fs::perms(0700));
        for (const auto& entry : fs::directory_iterator(aside))
            fs::copy_file(entry.path(), journals.folder() / name);
    }
    void leaveRelay(const std::string& name, const std::string& path) {
        leave<PactorDocument>(name, path, [](PactorDocument& relay) {
            relay.record(PactorDocument::TripPoint, 0, "33");
            relay.record(PactorDocument::Hysteresis, 0, "7");
            relay.HistoryObject().Undo();
        });
    }
    void start(const std::string& file = {}) {
        form.reset();
        form = std::make_unique<MainForm>(place, controls, application);
        form->Initialize(file);
    }
    History& history() { return *form->control()->HistoryObject(); }
    Texts questions() {
        Texts all;
        for (const MessageBox& box : desk.person.messages)
            all.push_back(box.text);
        desk.person.messages.clear();
        return all;
    }
    Texts names() {
        Texts all;
        for (const auto& entry : fs::directory_iterator(journals.folder()))
            all.push_back(entry.path().filename());
        std::sort(all.begin(), all.end());
        return all;
    }

    Desk desk;
    Journals journals{desk.folder.path() / "state", desk.files};
    Workplace place = [this] {
        Workplace same = desk.place;
        same.journals = &journals;
        return same;
    }();
    Application application{desk.programs, desk.person};
    ProductControls controls{place, desk.keys};
    std::unique_ptr<MainForm> form;
    const std::string relayFile = desk.folder.path() / "mine.relay";
};

constexpr const char* AboutMine = "Corvane did not close properly. Would you like to get back the "
                                  "changes made to mine.relay?";
constexpr const char* AboutNew = "Corvane did not close properly. Would you like to get back the "
                                 "changes made to a new document?";

TEST_F(RecoveryTest, YesOpensItWithAllItsChangesUnderItsPath) {
    leaveRelay("1-1.journal", relayFile);
    desk.person.answers = {Answer::Yes};
    start();
    ASSERT_THAT(desk.person.messages, SizeIs(1));
    EXPECT_EQ(desk.person.messages[0].icon, MessageBox::Icon::Question);
    EXPECT_EQ(desk.person.messages[0].buttons, MessageBox::Buttons::YesNo);
    EXPECT_THAT(questions(), ElementsAre(AboutMine));
    EXPECT_EQ(form->Title(), "Dervan/Maltrex - " + relayFile + "*");
    EXPECT_TRUE(form->menu.mnuEditUndo.Enabled() && form->menu.mnuEditRedo.Enabled());
    EXPECT_FALSE(fs::exists(journals.folder() / "1-1.journal"));
    EXPECT_THAT(names(), SizeIs(1)); // it is kept again, by this program
    form->menu.mnuFileSave.choose();
    EXPECT_THAT(names(), IsEmpty());
    start();
    EXPECT_THAT(questions(), IsEmpty());
}

TEST_F(RecoveryTest, NoKeepsItAsideAndAsksNoMore) {
    leaveRelay("1-1.journal", {});
    desk.person.answers = {Answer::No};
    start();
    start();
    EXPECT_THAT(questions(), ElementsAre(AboutNew));
    EXPECT_THAT(names(), ElementsAre("1-1.journal.aside"));
    EXPECT_EQ(form->interface().InterfaceClass(), "Corvane.LumoraControl");
}

TEST_F(RecoveryTest, OfAFileThatAnotherChangedItIsANewDocument) {
    leaveRelay("1-1.journal", relayFile);
    desk.folder.file("mine.relay", "Pactor\t0\t0\t0\t1\n\n");
    desk.person.answers = {Answer::Yes};
    start();
    EXPECT_THAT(questions(), ElementsAre(AboutMine));
    EXPECT_EQ(form->Title(), "Dervan/Maltrex*");
    EXPECT_EQ(history().position(), 1);
}

TEST_F(RecoveryTest, AGivenFileOpensAfterIt) {
    leaveRelay("1-1.journal", {});
    const std::string light = desk.folder.file("a.lumora", "Lumora\t0\t0\t0\t2\n");
    desk.person.answers = {Answer::Yes, Answer::Cancel}; // then asked to save what came back
    start(light);
    EXPECT_THAT(questions(), ElementsAre(AboutNew, "Changes have been made. Would you like to "
                                                   "save them?"));
    EXPECT_EQ(form->Title(), "Dervan/Maltrex*"); // and not lost by an answer that was none

    form.reset();
    leaveRelay("1-1.journal", {});
    desk.person.answers = {Answer::Yes, Answer::No};
    start(light);
    EXPECT_EQ(form->Title(), "Lumora - " + light);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(RecoveryTest, EachProductsDocumentIsOffered) {
    leaveRelay("1-1.journal", {});
    leave<LumoraDocument>("1-2.journal", {}, [](LumoraDocument& light) {
        auto change = std::make_unique<LumoraUndoableTrackChange>();
        change->Initialize(light, true, 1, false, {1, {50, 1.0, "P", 20}});
        light.HistoryObject().Record(std::move(change));
    });
    leave<PactorDocument>("1-3.journal", relayFile, [this](PactorDocument& relay) {
        relay.record(PactorDocument::TripPoint, 0, "33");
        desk.folder.file("mine.relay", "Pactor\t1\t1\t0\t1\nPactorText\t0\tTrip Point\t50\t33\n");
    }); // equal to its file: nothing to ask
    desk.person.picks = {std::vector<bool>{false, true}};
    start();
    EXPECT_THAT(questions(), IsEmpty());
    EXPECT_EQ(form->interface().InterfaceClass(), "Corvane.LumoraControl");
    EXPECT_EQ(history().Length(), 1);
    EXPECT_THAT(names(), SizeIs(2)); // the one put aside, and this program's own
}

TEST_F(RecoveryTest, ManyAreOneQuestionWithNamesAndTimes) {
    const auto write = [this](const std::string& name, const char* content) {
        std::ofstream(journals.folder() / name) << content;
    };
    leaveRelay("1-1.journal", relayFile);
    leaveRelay("1-2.journal", {});
    // One of a product that this program does not know is left for a program that does.
    write("1-3.journal", "CorvaneJournal\t1\t\t\nStranger\t1\t1\t0\t1\nOther\t0\n");
    constexpr int Damaged = 200;
    for (int i = 0; i < Damaged; ++i)
        write("2-" + std::to_string(i) + ".journal", "no journal\n");
    start(); // and the person would rather not answer now
    EXPECT_THAT(questions(), IsEmpty());
    ASSERT_THAT(desk.person.lists, SizeIs(1));
    const std::vector<ListQuestion::Item>& items = desk.person.lists[0].items;
    ASSERT_THAT(items, SizeIs(2 + Damaged));
    const std::string sound = items[0].text + "; " + items[1].text;
    for (const char* part : {"mine.relay, 20", "New document (Pactor), 20", ", 2 changes"})
        EXPECT_THAT(sound, testing::HasSubstr(part));
    EXPECT_TRUE(items[1].picked && !items[0].picked && items[0].pickable);
    EXPECT_THAT(items[2].text, testing::StartsWith("Damaged: 2-"));
    EXPECT_FALSE(items[2].pickable);
    // What was not answered is asked again, without those that can't be read.
    const bool mineFirst = items[0].text.starts_with("mine");
    desk.person.picks = {std::vector<bool>{mineFirst, !mineFirst}};
    start();
    ASSERT_THAT(desk.person.lists, SizeIs(2));
    EXPECT_THAT(desk.person.lists[1].items, SizeIs(2));
    EXPECT_EQ(form->Title(), "Dervan/Maltrex - " + relayFile + "*");
    start();
    write("3-1.journal", "no journal\n");
    start();
    ASSERT_THAT(desk.person.lists, SizeIs(3));
    EXPECT_EQ(desk.person.lists[2].button, "OK"); // there is nothing to choose
}

TEST_F(RecoveryTest, AnUnsoundOneIsRefusedInWordsAndKept) {
    leaveRelay("1-1.journal", {});
    std::ofstream(journals.folder() / "1-1.journal")
        << "CorvaneJournal\t1\t\t\nPactor\t1\t1\t0\t1\nOther\t0\n";
    desk.person.answers = {Answer::Yes};
    start();
    EXPECT_THAT(questions(),
                ElementsAre(AboutNew, "Can't understand the file format (unrecognized prefix)."));
    EXPECT_THAT(names(), ElementsAre("1-1.journal.aside"));
    EXPECT_FALSE(history().SaveDirty());
}

TEST_F(RecoveryTest, AJournalThatCantBeWrittenIsToldOnceWhenTheChangeIsOver) {
    desk.folder.file("state", "in the way");
    start(desk.folder.file("a.relay", "Pactor\t0\t0\t0\t1\n"));
    EXPECT_THAT(questions(), IsEmpty());
    history().Record(std::make_unique<KODoNothingChange>());
    EXPECT_THAT(questions(), IsEmpty());
    ASSERT_TRUE(form->tmrTell.Enabled());
    form->tmrTell.Fired.raise();
    EXPECT_THAT(questions(), SizeIs(1));
    history().Record(std::make_unique<KODoNothingChange>());
    EXPECT_FALSE(form->tmrTell.Enabled());
}

TEST_F(RecoveryTest, AJournalThatIsGoneIsNoticedAndTold) {
    start(desk.folder.file("a.relay", "Pactor\t0\t0\t0\t1\n"));
    EXPECT_FALSE(form->tmrJournals.Enabled()); // there is nothing to look after
    history().Record(std::make_unique<KODoNothingChange>());
    ASSERT_TRUE(form->tmrJournals.Enabled());
    EXPECT_LT(form->tmrJournals.Interval(), 1000);
    fs::remove(journals.folder() / names().at(0));
    form->tmrJournals.Fired.raise();
    EXPECT_THAT(names(), SizeIs(1));
    form->tmrTell.Fired.raise();
    EXPECT_THAT(questions(), ElementsAre(testing::HasSubstr("nothing is lost")));
    form->menu.mnuFileSave.choose();
    form->tmrJournals.Fired.raise();
    EXPECT_FALSE(form->tmrJournals.Enabled());
}

} // namespace
} // namespace corvane
