#include "base/Assert.h"
#include "support/Notes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* NotUnderstood = "Error: Can't understand the file format.";

class HistoryFiles : public testing::Test {
  protected:
    TemporaryFolder folder;
    Person person;
    DiskFiles files;
    Notes notes{person, person, files};
    History& history = notes.history;
    Lines events;

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
    Connection opened_ = history.FileOpened.connect(
        [this](const std::string& name) { events.push_back("opened " + short_(name)); });
    Connection failed_ = history.FileOpenFailed.connect(
        [this](const std::string& name) { events.push_back("failed " + short_(name)); });
    Connection saved_ =
        history.FileSaved.connect([this](const std::string& name, const std::string& before) {
            events.push_back("saved " + short_(name) + " before " + short_(before));
        });
    static std::string short_(const std::string& path) {
        return std::filesystem::path(path).filename();
    }
};

TEST_F(HistoryFiles, TheFileIsTheListOfChanges) {
    saveAs("empty.note");
    EXPECT_EQ(folder.content("empty.note"), "Notes\t0\t0\t0\t2\n");
    for (const char* line : {"one", "tab\there", "", "four", "five"})
        notes.add(line);
    history.Undo();
    history.Undo();
    saveAs("a.note");
    EXPECT_EQ(folder.content("a.note"),
              "Notes\t5\t3\t0\t2\nNote\tone\nNote\ttab\\there\nNote\t\nNote\tfour\nNote\tfive\n");
    EXPECT_EQ(events, (Lines{"saved empty.note before ", "saved a.note before empty.note"}));
    EXPECT_FALSE(history.SaveDirty());
    history.Redo();
    history.SaveHistory(); // to the same place, without a dialog
    EXPECT_EQ(folder.content("a.note").substr(0, 14), "Notes\t5\t4\t0\t2\n");
    EXPECT_EQ(events.back(), "saved a.note before a.note");
}

TEST_F(HistoryFiles, OpeningReplaysAndCanBeUndoneAndRedone) {
    const std::string path = folder.file(
        "a.note",
        "Notes\t4\t2\t1\t1\textra\nNote\ta\nMarker\tany\tthing\nNote\tc\nNote\td\njunk\n");
    EXPECT_TRUE(history.OpenHistory(path));
    EXPECT_EQ(notes.lines, Lines{"a"});
    EXPECT_EQ(history.GetCaption("N", true), "N - a.note");
    EXPECT_EQ(history.undoStopPoint(), 1);
    history.Redo();
    history.Redo();
    EXPECT_EQ(notes.lines, (Lines{"a", "c", "d"}));
    EXPECT_TRUE(history.SaveDirty());
    history.SaveHistory();
    EXPECT_EQ(folder.content("a.note"),
              "Notes\t4\t4\t1\t2\nNote\ta\nMarker\tNothing\nNote\tc\nNote\td\n");
    // A stop point that the position never reaches counts as none.
    for (const char* stop : {"2", "99", "-5"}) {
        EXPECT_EQ(open(std::string("Notes\t2\t1\t") + stop + "\t1\nNote\ta\nNote\tb\n"), "");
        EXPECT_EQ(history.undoStopPoint(), 0);
    }
}

TEST_F(HistoryFiles, UnsoundFilesAreToldAndLeaveTheDocument) {
    notes.add("mine");
    saveAs("mine.note");
    notes.add("more", true);
    const std::string newer = "Error: This file was made with a newer version of the "
                              "program.\r\n\r\nYou will need to get the new version to view it.";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", NotUnderstood},
        {"Notes\t0\t0\t0\n", NotUnderstood},
        {"notes\t0\t0\t0\t2\n", NotUnderstood},
        {"Pactor\t0\t0\t0\t1\n", NotUnderstood},
        {"Notes\t0\t0\t0\t3\n", newer},
        {"Notes\t2\t0\t0\t2\nNote\ta\n", NotUnderstood}, // too few lines
        {"Notes\t1\t2\t0\t2\nNote\ta\n", NotUnderstood}, // position above the length
        {"Notes\t2000000000\t0\t0\t2\nNote\ta\n", NotUnderstood},
        {"Notes\t-1\t0\t0\t2\nNote\ta\n", NotUnderstood},
        {"Notes\t1\t-1\t0\t2\nNote\ta\n", NotUnderstood},
        {std::string("\x7f\x45\x4c\x46\0\x01", 6), NotUnderstood},
        {std::string(1 << 20, 'x'), NotUnderstood},
        {"Notes\t1\t1\t0\t2\nnote\ta\n",
         "Error: Can't understand the file format (unrecognized prefix)."},
        {"Notes\t1\t1\t0\t2\nNote\ta\tb\n",
         "Error: Can't understand the file format (deserialization error)."},
    };
    for (const auto& [content, message] : cases) {
        EXPECT_EQ(open(content), message) << content.substr(0, 40);
        EXPECT_EQ(events.back(), "failed x.note");
        EXPECT_EQ(notes.lines, (Lines{"mine", "more"}));
        EXPECT_EQ(history.savePath(), folder.path() / "mine.note");
    }
    std::string tooMany = "Notes\t13\t0\t0\t2\n"; // which this product finds unsound as a whole
    for (int i = 0; i < 13; ++i)
        tooMany += "Marker\n";
    EXPECT_EQ(open(tooMany), "Error: Can't understand the file format (deserialization error).");
    EXPECT_FALSE(history.OpenHistory(folder.path() / "nowhere.note"));
    EXPECT_EQ(person.takeMessage(), "Error: File not found.");
    EXPECT_FALSE(history.OpenHistory(folder.path())); // a folder
    EXPECT_EQ(person.takeMessage(), NotUnderstood);
    EXPECT_FALSE(person.sawBusyMessage);
    EXPECT_EQ(history.Length(), 2);
}

TEST_F(HistoryFiles, ThePersonMayThinkBetterOfIt) {
    notes.add("mine");
    const std::string good = folder.file("good.note", "Notes\t0\t0\t0\t2\n");
    const std::string bad = folder.file("bad.note", "?");
    person.answers = {Answer::Cancel};
    EXPECT_FALSE(history.OpenHistory(good));
    EXPECT_EQ(events, Lines{"failed good.note"});
    events.clear();
    person.answers = {Answer::No};
    EXPECT_FALSE(history.OpenHistory("")); // and no file is chosen
    EXPECT_EQ(person.asked, Lines{"open Notes (*.note)|*.note|All Files (*.*)|*.*"});
    EXPECT_TRUE(events.empty());
    person.answers = {Answer::No};
    EXPECT_FALSE(history.OpenHistory(bad));
    EXPECT_EQ(notes.lines, Lines{"mine"});
    EXPECT_TRUE(history.SaveDirty());
    person.answers = {Answer::No};
    person.files = {good};
    EXPECT_TRUE(history.OpenHistory(""));
    EXPECT_TRUE(notes.lines.empty());
    EXPECT_FALSE(history.SaveDirty());
}

TEST_F(HistoryFiles, AFailedSaveLeavesEverythingAndCountsAsCancelled) {
    notes.add("mine");
    person.answers = {Answer::Yes};
    person.files = {folder.path() / "no" / "such" / "folder.note"};
    EXPECT_FALSE(history.NewHistory());
    EXPECT_EQ(person.takeMessage(), "Error: Can't save the file.");
    EXPECT_FALSE(person.sawBusyMessage);
    EXPECT_TRUE(history.SaveDirty());
    EXPECT_EQ(history.savePath(), "");
    EXPECT_TRUE(events.empty());
    notes.add("not text: \xFF"); // what could not be read back is not even recorded
    EXPECT_EQ(person.takeMessage(), std::string("Error: ") + History::NotRecorded);
    EXPECT_EQ(notes.lines, Lines{"mine"});
    EXPECT_EQ(history.Length(), 1);
}

TEST_F(HistoryFiles, WhatAnotherProgramWroteIsNotLostUnasked) {
    const std::string theirs = "Notes\t1\t1\t0\t2\nNote\ttheirs\n";
    Notes other(person, person, files);
    saveAs("a.note");
    ASSERT_TRUE(other.history.OpenHistory(folder.path() / "a.note"));
    notes.add("mine");
    other.add("theirs");
    other.history.SaveHistory(); // has it as it was opened
    EXPECT_TRUE(person.messages.empty());
    ASSERT_EQ(folder.content("a.note"), theirs);

    history.SaveHistory(); // cancelled
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].yes, "Save As");
    EXPECT_EQ(person.messages[0].no, "Overwrite");
    EXPECT_EQ(person.takeMessage(),
              "Corvane: a.note was changed by another program.\r\n\r\nOverwrite puts your document "
              "in its place. Save As keeps both.");
    EXPECT_EQ(folder.content("a.note"), theirs);
    EXPECT_TRUE(history.SaveDirty());

    person.answers = {Answer::Yes}; // then the same name, and again, and another
    person.files = {folder.path() / "a.note", folder.path() / "b.note"};
    person.answers.push_back(Answer::Yes);
    history.SaveHistory();
    EXPECT_EQ(folder.content("a.note"), theirs);
    EXPECT_EQ(folder.content("b.note"), "Notes\t1\t1\t0\t2\nNote\tmine\n");
    EXPECT_FALSE(history.SaveDirty());

    folder.file("b.note", theirs);
    person.answers = {Answer::No};
    history.SaveHistory();
    EXPECT_EQ(folder.content("b.note"), "Notes\t1\t1\t0\t2\nNote\tmine\n");
    std::filesystem::remove(folder.path() / "b.note"); // nothing is there that could be lost
    person.messages.clear();
    history.SaveHistory();
    history.SaveHistory();
    EXPECT_TRUE(person.messages.empty());
    EXPECT_TRUE(person.answers.empty());
}

TEST_F(HistoryFiles, NeedWhatTheProductSets) {
    Notes other(person, person, files);
    other.history.setFilter("");
    EXPECT_THROW(other.history.SaveHistoryAs(), AssertionFailed);
    KOIOReader reader;
    std::string prefix;
    Lines values;
    EXPECT_THROW(reader.ReadArray(prefix, values), AssertionFailed);
    EXPECT_TRUE(reader.Load("a\tb\tc"));
    EXPECT_THROW(static_cast<void>(reader.Load("one")), AssertionFailed);
    reader.ReadArray(prefix, values);
    EXPECT_EQ(prefix, "a");
    EXPECT_EQ(values, (Lines{"b", "c"}));
    EXPECT_FALSE(reader.More());
}

} // namespace
} // namespace corvane
