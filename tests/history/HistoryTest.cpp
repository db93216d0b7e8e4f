#include "base/Assert.h"
#include "support/Notes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using Lines = std::vector<std::string>;

class HistoryTest : public testing::Test {
  protected:
    Person person;
    DiskFiles files;
    Notes notes{person, person, files};
    History& history = notes.history;
    Lines events;

    HistoryTest() {
        listen(history.Changed, "changed");
        listen(history.NewFileCreating, "creating");
        listen(history.NewFileCreated, "created");
        listen(history.Freezing, "freezing");
        listen(history.ResettingToDefaults, "defaults");
        listen(history.SaveStateChanged, "save state");
        listen(history.UndoStateChanged, "undo state");
        connections.push_back(history.Unfreezing.connect([this](bool quick) {
            events.emplace_back(quick ? "quick unfreezing" : "unfreezing");
        }));
        connections.push_back(
            history.FilteringRequested.connect([this](UndoableChange&, bool undoing, bool& cancel) {
                events.emplace_back(undoing ? "filter undo" : "filter redo");
                cancel = refuse;
            }));
    }
    Lines take() { return std::exchange(events, {}); }

    bool refuse = false;

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
    EXPECT_FALSE(history.CanUndo() || history.CanRedo());
    EXPECT_EQ(history.Length(), 0);
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
    EXPECT_THROW(history.Undo(), AssertionFailed);
    EXPECT_THROW(history.Record(nullptr), AssertionFailed);
}

TEST_F(HistoryTest, OpeningRaisesItsEventsInsideOneFreeze) {
    const TemporaryFolder folder;
    const Connection onOpened = history.FileOpened.connect([this](const std::string&) {
        EXPECT_TRUE(person.busy);
        events.emplace_back("opened");
    });
    EXPECT_TRUE(
        history.OpenHistory(folder.file("a.note", "Notes\t2\t2\t0\t2\nNote\ta\nNote\tb\n")));
    EXPECT_THAT(take(), ElementsAre("freezing", "defaults", "undo state", "changed", "undo state",
                                    "changed", "undo state", "save state", "opened", "unfreezing"));
}

TEST_F(HistoryTest, ARecordingDropsWhatCouldBeRedone) {
    for (const char* line : {"a", "b", "c"})
        notes.add(line);
    history.Undo();
    history.Undo();
    EXPECT_EQ(history.Length(), 3);
    notes.add("d");
    EXPECT_EQ(history.Length(), 2);
    EXPECT_EQ(notes.lines, (Lines{"a", "d"}));
    EXPECT_FALSE(history.CanRedo());
    EXPECT_THROW(history.Redo(), AssertionFailed);
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

TEST_F(HistoryTest, ARefusedUndoChangesNothing) {
    notes.add("a", true);
    take();
    refuse = true;
    history.Undo();
    EXPECT_THAT(take(), ElementsAre("filter undo"));
    EXPECT_EQ(history.position(), 1);
    EXPECT_FALSE(history.SaveDirty());
    EXPECT_TRUE(history.CanUndo());
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
    const TemporaryFolder folder;
    EXPECT_EQ(history.GetCaption("Notes", false), "Notes");
    notes.add("a", true);
    EXPECT_EQ(history.GetCaption("Notes", false), "Notes");
    EXPECT_TRUE(history.CanUndo());
    notes.add("b");
    EXPECT_EQ(history.GetCaption("Notes", false), "Notes*");
    const std::string path = folder.path() / "a.note";
    person.files = {path};
    EXPECT_TRUE(history.SaveHistoryAs());
    EXPECT_EQ(history.GetCaption("Notes", false), "Notes - " + path);
    history.Undo();
    history.Redo();
    EXPECT_EQ(history.GetCaption("Notes", true), "Notes - a.note*");
}

TEST_F(HistoryTest, ANewDocumentComesAfterTheQuestion) {
    notes.add("a");
    take();
    person.answers = {Answer::Cancel, Answer::Yes, Answer::No};
    EXPECT_FALSE(history.NewHistory());
    EXPECT_EQ(person.takeMessage(),
              "Corvane: Changes have been made. Would you like to save them?");
    EXPECT_FALSE(history.ExitHistory()); // Yes, and then no file is chosen
    EXPECT_EQ(person.asked, Lines{"save Notes (*.note)|*.note|All Files (*.*)|*.* as "});
    EXPECT_TRUE(take().empty());
    EXPECT_EQ(history.Length(), 1);
    EXPECT_TRUE(history.NewHistory());
    EXPECT_THAT(take(), ElementsAre("freezing", "undo state", "changed", "unfreezing", "defaults",
                                    "undo state", "save state", "creating", "created"));
    EXPECT_EQ(history.Length(), 0);
    EXPECT_FALSE(history.SaveDirty());
    EXPECT_FALSE(person.busy);
    person.messages.clear();
    EXPECT_TRUE(history.ExitHistory()); // nothing to lose, nothing to ask
    EXPECT_TRUE(person.messages.empty());
}

} // namespace
} // namespace corvane
