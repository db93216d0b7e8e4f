#include "support/Notes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

constexpr const char* NotUnderstood = "Error: Can't understand the file format.";

class HistoryTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    Person person;
    DiskFiles files;
    Notes notes{{person, person, files}};
    History& history = notes.history;
    Lines events;
    Lines failed; // names of files that could not be opened

    HistoryTest() {
        listen(history.Changed, "changed");
        listen(history.NewFileCreating, "creating");
        listen(history.NewFileCreated, "created");
        listen(history.Freezing, "freezing");
        listen(history.ResettingToDefaults, "defaults");
        listen(history.SaveStateChanged, "save state");
        listen(history.UndoStateChanged, "undo state");
        connections.push_back(history.FileOpened.connect([this](const std::string&) {
            EXPECT_TRUE(person.busy);
            events.emplace_back("opened");
        }));
        connections.push_back(history.FileOpenFailed.connect([this](const std::string& path) {
            failed.push_back(std::filesystem::path(path).filename());
        }));
        connections.push_back(history.Unfreezing.connect([this](bool quick) {
            events.emplace_back(quick ? "quick unfreezing" : "unfreezing");
        }));
        connections.push_back(
            history.FilteringRequested.connect([this](UndoableChange&, bool undoing, bool&) {
                events.emplace_back(undoing ? "filter undo" : "filter redo");
            }));
    }
    Lines take() { return std::exchange(events, {}); }
    void saveAs(const std::string& name) {
        person.files.push_back(folder.path() / name);
        ASSERT_TRUE(history.SaveHistoryAs());
    }
    /// Opens a file of this content and gives the message, empty if it opened.
    std::string open(const std::string& content) {
        person.messages.clear();
        const bool opened = history.OpenHistory(folder.file("x.note", content));
        EXPECT_EQ(opened, person.messages.empty());
        EXPECT_FALSE(person.busy);
        return person.takeMessage();
    }

  private:
    void listen(Event<>& event, const char* name) {
        connections.push_back(event.connect([this, name] { events.emplace_back(name); }));
    }
    std::vector<Connection> connections;
};

TEST_F(HistoryTest, AChangeThatComesWhileUndoOrRedoIsLookedAtIsNeitherUndoneNorLost) {
    const Connection typed = history.FilteringRequested.connect(
        [this](UndoableChange&, bool, bool&) { notes.add("typed"); });
    notes.add("a");
    history.Undo();
    EXPECT_THAT(notes.lines, ElementsAre("a", "typed"));
    history.Undo(true);
    history.Redo();
    EXPECT_THAT(notes.lines, ElementsAre("a", "typed"));
    EXPECT_FALSE(history.CanRedo());
}

TEST_F(HistoryTest, RecordingUndoAndRedoRaiseTheirEventsInOrder) {
    notes.add("a");
    EXPECT_THAT(take(),
                ElementsAre("freezing", "undo state", "save state", "unfreezing", "changed"));
    history.Undo();
    EXPECT_THAT(take(), ElementsAre("filter undo", "freezing", "save state", "undo state",
                                    "unfreezing", "changed"));
    history.Redo();
    EXPECT_THAT(take(), ElementsAre("filter redo", "freezing", "save state", "undo state",
                                    "unfreezing", "changed"));
    history.Undo(true);
    EXPECT_THAT(take(), ElementsAre("freezing", "undo state", "unfreezing", "changed"));
}

TEST_F(HistoryTest, OpeningRaisesItsEventsInsideOneFreeze) {
    const std::string path = folder.file("a.note", "Notes\t2\t2\t0\t2\nNote\ta\nNote\tb\n");
    EXPECT_TRUE(history.OpenHistory(path));
    EXPECT_THAT(take(), ElementsAre("freezing", "defaults", "undo state", "changed", "undo state",
                                    "changed", "undo state", "save state", "opened", "unfreezing"));
}

TEST_F(HistoryTest, TheStopPointHoldsUpThePersonButNotTheReset) {
    notes.add("a");
    notes.add("b");
    history.SetUndoStopPoint();
    EXPECT_FALSE(history.CanUndo());
    history.Undo(true);
    EXPECT_EQ(history.undoStopPoint(), 1);
    person.answers = {Answer::No};
    EXPECT_TRUE(history.NewHistory());
    EXPECT_EQ(history.undoStopPoint(), 0);
    EXPECT_EQ(history.position(), 0);
    EXPECT_TRUE(notes.lines.empty());
}

TEST_F(HistoryTest, FreezesNestAndQuickOnesDoNotCount) {
    history.Freeze();
    notes.add("a");
    history.QuickUnfreeze();
    history.QuickFreeze();
    history.Unfreeze();
    EXPECT_THAT(take(), ElementsAre("freezing", "undo state", "save state", "changed",
                                    "quick unfreezing", "freezing", "unfreezing"));
}

TEST_F(HistoryTest, DirtinessIsAFlagOfItsOwn) {
    notes.add("a", true);
    EXPECT_EQ(history.GetCaption("Notes", false), "Notes");
    EXPECT_TRUE(history.CanUndo());
    notes.add("b");
    EXPECT_EQ(history.GetCaption("Notes", false), "Notes*");
    person.files = {folder.path() / "a.note"};
    EXPECT_TRUE(history.SaveHistoryAs());
    history.Undo();
    history.Redo();
    EXPECT_EQ(history.GetCaption("Notes", true), "Notes - a.note*");
}

TEST_F(HistoryTest, ANewDocumentComesAfterTheQuestion) {
    notes.add("a");
    take();
    person.answers = {Answer::Cancel, Answer::Yes, Answer::No};
    EXPECT_FALSE(history.NewHistory());
    EXPECT_FALSE(history.ExitHistory()); // Yes, and then no file is chosen
    EXPECT_EQ(person.asked, Lines{"save Notes (*.note)|*.note|All Files (*.*)|*.* as "});
    EXPECT_TRUE(take().empty());
    EXPECT_TRUE(history.NewHistory());
    EXPECT_THAT(take(), ElementsAre("freezing", "undo state", "changed", "unfreezing", "defaults",
                                    "undo state", "save state", "creating", "created"));
    EXPECT_FALSE(person.busy);
    EXPECT_TRUE(history.ExitHistory()); // nothing to lose, nothing to ask
    EXPECT_EQ(person.messages.size(), 3U);
}

TEST_F(HistoryTest, OpeningIsForgivingAndSavingWritesThePresentForm) {
    EXPECT_EQ(open("Notes\t4\t2\t1\t1\textra\nNote\ta\nMarker\tany\tthing\nNote\tc\nNote\td\n"
                   "junk\n"),
              "");
    EXPECT_EQ(notes.lines, Lines{"a"});
    EXPECT_EQ(history.undoStopPoint(), 1);
    history.SaveHistory();
    EXPECT_EQ(folder.content("x.note"),
              "Notes\t4\t2\t1\t2\nNote\ta\nMarker\tNothing\nNote\tc\nNote\td\n");
    // A stop point that the position never reaches counts as none.
    for (const char* stop : {"2", "99", "-5"}) {
        EXPECT_EQ(open(std::string("Notes\t2\t1\t") + stop + "\t1\nNote\ta\nNote\tb\n"), "");
        EXPECT_EQ(history.undoStopPoint(), 0);
    }
}

TEST_F(HistoryTest, UnsoundFilesAreToldAndLeaveTheDocument) {
    notes.add("mine");
    saveAs("mine.note");
    notes.add("more", true);
    const auto expectRefused = [this](const std::string& content, const std::string& message) {
        EXPECT_EQ(open(content), message) << content.substr(0, 40);
        EXPECT_EQ(failed.back(), "x.note");
        EXPECT_EQ(notes.lines, (Lines{"mine", "more"}));
        EXPECT_EQ(history.savePath(), folder.path() / "mine.note");
    };
    // Too few lines and a position above the length are among them.
    for (const std::string& content :
         {std::string(), std::string("Notes\t0\t0\t0\n"), std::string("notes\t0\t0\t0\t2\n"),
          std::string("Pactor\t0\t0\t0\t1\n"), std::string("Notes\t2\t0\t0\t2\nNote\ta\n"),
          std::string("Notes\t1\t2\t0\t2\nNote\ta\n"),
          std::string("Notes\t2000000000\t0\t0\t2\nNote\ta\n"),
          std::string("Notes\t-1\t0\t0\t2\nNote\ta\n"),
          std::string("Notes\t1\t-1\t0\t2\nNote\ta\n"), std::string("\x7f\x45\x4c\x46\0\x01", 6),
          std::string(1 << 20, 'x')})
        expectRefused(content, NotUnderstood);
    expectRefused("Notes\t0\t0\t0\t3\n",
                  "Error: This file was made with a newer version of the program.\r\n\r\nYou will "
                  "need to get the new version to view it.");
    expectRefused("Notes\t1\t1\t0\t2\nnote\ta\n",
                  "Error: Can't understand the file format (unrecognized prefix).");
    std::string tooMany = "Notes\t13\t0\t0\t2\n"; // which this product finds unsound as a whole
    for (int i = 0; i < 13; ++i)
        tooMany += "Marker\n";
    for (const std::string& content : {std::string("Notes\t1\t1\t0\t2\nNote\ta\tb\n"), tooMany})
        expectRefused(content, "Error: Can't understand the file format (deserialization error).");
    EXPECT_FALSE(history.OpenHistory(folder.path() / "nowhere.note"));
    EXPECT_EQ(person.takeMessage(), "Error: File not found.");
    EXPECT_FALSE(history.OpenHistory(folder.path())); // a folder
    EXPECT_EQ(person.takeMessage(), NotUnderstood);
    EXPECT_FALSE(person.sawBusyMessage);
}

TEST_F(HistoryTest, ThePersonMayThinkBetterOfIt) {
    notes.add("mine");
    const std::string good = folder.file("good.note", "Notes\t0\t0\t0\t2\n");
    person.answers = {Answer::Cancel, Answer::No, Answer::No};
    EXPECT_FALSE(history.OpenHistory(good));
    EXPECT_EQ(std::exchange(failed, {}), Lines{"good.note"});
    EXPECT_FALSE(history.OpenHistory("")); // and no file is chosen
    EXPECT_EQ(person.asked, Lines{"open Notes (*.note)|*.note|All Files (*.*)|*.*"});
    EXPECT_TRUE(failed.empty());
    EXPECT_TRUE(history.SaveDirty());
    person.files = {good};
    EXPECT_TRUE(history.OpenHistory(""));
    EXPECT_FALSE(history.SaveDirty());
}

TEST_F(HistoryTest, AFailedSaveLeavesEverythingAndCountsAsCancelled) {
    notes.add("mine");
    person.answers = {Answer::Yes};
    person.files = {folder.path() / "no" / "such" / "folder.note"};
    EXPECT_FALSE(history.NewHistory());
    EXPECT_EQ(person.takeMessage(), "Error: Can't save the file.");
    EXPECT_FALSE(person.sawBusyMessage);
    EXPECT_TRUE(history.SaveDirty());
    EXPECT_EQ(history.savePath(), "");
}

TEST_F(HistoryTest, WhatAnotherProgramWroteIsNotLostUnasked) {
    const std::string theirs = "Notes\t1\t1\t0\t2\nNote\ttheirs\n";
    const std::string mine = "Notes\t1\t1\t0\t2\nNote\tmine\n";
    saveAs("a.note");
    notes.add("mine");
    folder.file("a.note", theirs);
    history.SaveHistory(); // cancelled
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].yes + person.messages[0].no, "Save AsOverwrite");
    EXPECT_EQ(person.takeMessage(),
              "Corvane: a.note was changed by another program.\r\n\r\nOverwrite puts your document "
              "in its place. Save As keeps both.");
    EXPECT_EQ(folder.content("a.note"), theirs);
    EXPECT_TRUE(history.SaveDirty());

    // Under the same name, and again, and under another.
    person.answers = {Answer::Yes, Answer::Yes};
    person.files = {folder.path() / "a.note", folder.path() / "b.note"};
    history.SaveHistory();
    EXPECT_EQ(folder.content("a.note"), theirs);
    EXPECT_EQ(folder.content("b.note"), mine);

    folder.file("b.note", theirs);
    person.answers = {Answer::No};
    history.SaveHistory();
    EXPECT_EQ(folder.content("b.note"), mine);
    std::filesystem::remove(folder.path() / "b.note"); // nothing is there that could be lost
    person.messages.clear();
    history.SaveHistory();
    history.SaveHistory();
    EXPECT_TRUE(person.messages.empty());
}

} // namespace
} // namespace corvane
