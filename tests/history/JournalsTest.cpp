#include "history/LostJournal.h"
#include "support/Notes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Lines = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr int Day = 24 * 60 * 60;

class JournalsTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    const fs::path state = folder.path() / "journals";
    Person person;
    DiskFiles files;
    Journals journals{state, files};
    std::optional<Notes> notes{std::in_place,
                               History::Surroundings{person, person, files, &journals}};

    [[nodiscard]] Lines names() const {
        Lines all;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(state, error))
            all.push_back(entry.path().filename());
        return all;
    }
    /// What the program would leave if it were killed now.
    [[nodiscard]] LostJournal kept() { return {Handle(), state / names().at(0), files}; }
    void leaveText(const std::string& text, const std::string& name = "1-1.journal") const {
        fs::create_directories(state);
        fs::permissions(state, fs::perms(0700));
        std::ofstream(state / name) << text;
    }
    void saveAs(const std::string& name) {
        person.files = {folder.path() / name};
        ASSERT_TRUE(notes->history.SaveHistoryAs());
    }
    void age(const std::string& name, int days) const {
        const timespec then{::time(nullptr) - static_cast<long>(days) * Day, 0};
        const timespec both[2] = {then, then};
        ::utimensat(AT_FDCWD, (state / name).c_str(), both, 0);
    }
};

TEST_F(JournalsTest, AnOpenedDocumentsChangesAndStopPointAreInIt) {
    folder.file("a.note", "Notes\t3\t2\t2\t1\nNote\ta\nMarker\tNothing\nNote\tc\n");
    ASSERT_TRUE(notes->history.OpenHistory(folder.path() / "a.note"));
    notes->history.Redo();
    for (const char* head : {"Notes\t3\t2\t2\t2\n", "Notes\t3\t1\t1\t2\n"}) {
        notes->history.Undo(); // and then beyond the stop point
        EXPECT_EQ(kept().document(), std::string(head) + "Note\ta\nMarker\tNothing\nNote\tc\n");
    }
}

TEST_F(JournalsTest, ATornLastLineIsDroppedAndAnythingElseRefuses) {
    const std::string head = "CorvaneJournal\t1\t\t\nNotes\t1\t1\t0\t2\nNote\ta\n";
    const auto documentOf = [&](const std::string& journal) {
        leaveText(journal);
        const LostJournal lost = std::move(journals.Lost().at(0));
        return lost.isSound() ? lost.document() : "unsound";
    };
    EXPECT_EQ(documentOf(head + "Record\tNote\tb\nUndo"), "Notes\t2\t2\t0\t2\nNote\ta\nNote\tb\n");
    EXPECT_EQ(documentOf(head + "Undo\nRecord\tNote\tb" + std::string(5000, '\0')),
              "Notes\t1\t0\t0\t2\nNote\ta\n");
    for (const std::string& bad :
         {std::string(), std::string("\n"), head.substr(0, 19), head.substr(0, 30),
          "CorvaneJournal\t2" + head.substr(16), "Notes\t0\t0\t0\t2\n" + head, head + "Redo\n",
          head + "Undo\nUndo\n", head + "undo\n", head + "Record\n", head + "\n",
          std::string("CorvaneJournal\t1\t\t\nNotes\t1\t2\t0\t2\nNote\ta\n"),
          std::string("CorvaneJournal\t1\t\t\nNotes\t-1\t-2\t0\t2\n\xff\n"),
          std::string("CorvaneJournal\t1\t\t\nNotes\t999999999\t0\t0\t2\nNote\ta\n")})
        EXPECT_EQ(documentOf(bad), "unsound") << bad;
}

TEST_F(JournalsTest, OneThatIsCutRemovedOrTakenIsBegunAnewAndToldOnce) {
    int told = 0;
    const Connection onReplaced = journals.Replaced.connect([&told] { ++told; });
    EXPECT_FALSE(journals.Look()); // there is nothing to look after
    notes->add("first");
    const auto path = [this] { return state / names().at(0); };
    const std::vector<std::function<void()>> harms{
        [&] { fs::resize_file(path(), 0); },
        [&] { fs::resize_file(path(), fs::file_size(path()) - 1); },
        [&] { fs::remove(path()); },
        [&] { fs::remove_all(state); },
        [&] {
            const fs::path same = path();
            fs::remove(same);
            leaveText("another's", same.filename());
        },
    };
    for (const auto& harm : harms) {
        harm();
        notes->add("line");
        notes->history.Undo();
        EXPECT_TRUE(journals.Look());
        std::string whole;
        ASSERT_TRUE(notes->history.Compose(whole));
        Lines all;
        for (const std::string& name : names())
            all.push_back(LostJournal(Handle(), state / name, files).document());
        EXPECT_THAT(all, testing::Contains(whole));
    }
    EXPECT_EQ(told, 1);
    EXPECT_THAT(names(), SizeIs(2)); // nobody else's file has gone
    saveAs("a.note");
    EXPECT_FALSE(journals.Look());
    EXPECT_THAT(names(), SizeIs(1));
}

TEST_F(JournalsTest, WhatIsDoneAtOneGoIsWrittenInOnePiece) {
    journals.InPieces = true;
    const auto kept = [this] {
        return LostJournal(Handle(), state / names().at(0), files).Length();
    };
    for (int i = 0; i < 4; ++i)
        notes->add("line");
    EXPECT_EQ(kept(), 1); // the one that it began with
    journals.WriteOut();
    EXPECT_EQ(kept(), 4);
    notes->add(std::string(1 << 17, 'x')); // too much to be held back
    EXPECT_EQ(kept(), 5);
    notes->add("line");
    fs::resize_file(state / names()[0], 0);
    journals.WriteOut();
    EXPECT_EQ(kept(), 6);
    notes->add("line");
    saveAs("a.note");
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(JournalsTest, NobodyTakesWhatAnotherHolds) {
    notes->add("a");
    Journals second(state, files);
    EXPECT_THAT(second.Lost(), IsEmpty());
    Notes beside({person, person, files, &second});
    beside.add("b");
    EXPECT_THAT(names(), SizeIs(2));
    EXPECT_THAT(journals.Lost(), IsEmpty());
    leaveText("");
    {
        const std::vector<LostJournal> held = journals.Lost();
        EXPECT_THAT(held, SizeIs(1));
        EXPECT_THAT(second.Lost(), IsEmpty()); // its question is on the other's screen
    }
    EXPECT_THAT(second.Lost(), SizeIs(1));
}

TEST_F(JournalsTest, IsForItsUserAlone) {
    ::umask(0);
    notes->add("a");
    ::umask(022);
    struct stat status {};
    ASSERT_EQ(::stat((state / names()[0]).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(::stat(state.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    notes.reset();
    // Neither a link nor another's file is taken for one of this user's.
    const std::string elsewhere = folder.file("elsewhere", "precious");
    fs::create_symlink(elsewhere, state / "1-1.journal");
    fs::create_directory(state / "1-2.journal");
    leaveText("", "1-3.journal");
    if (::chown((state / "1-3.journal").c_str(), 65534, 65534) != 0)
        fs::remove(state / "1-3.journal"); // only root may give files away
    EXPECT_THAT(journals.Lost(), IsEmpty());
    EXPECT_EQ(folder.content("elsewhere"), "precious");
}

/// Work without journals goes on, the person is told why, and once.
class NoJournals : public JournalsTest {
  protected:
    Lines told;
    Connection onFailed =
        journals.Failed.connect([this](const std::string& why) { told.push_back(why); });

    void expectWorkGoesOn() {
        for (int i = 0; i < 3; ++i)
            notes->add("line");
        notes->history.Undo();
        notes->history.Redo();
        saveAs("a.note");
        notes->add("line");
        EXPECT_THAT(notes->lines, SizeIs(4));
        EXPECT_FALSE(notes->history.isJournalUpToDate());
        EXPECT_THAT(told, SizeIs(1));
    }
};

TEST_F(NoJournals, WhereTheFolderCantBeWritten) {
    const bool root = ::geteuid() == 0;
    fs::create_directory(state);
    fs::permissions(state, fs::perms(0500));
    if (root) { // for whom rights do not count
        fs::permissions(folder.path(), fs::perms(0777));
        ASSERT_EQ(::chown(state.c_str(), 65534, 65534), 0);
        ASSERT_EQ(::seteuid(65534), 0);
    }
    expectWorkGoesOn();
    EXPECT_THAT(journals.Lost(), IsEmpty());
    ASSERT_EQ(::seteuid(root ? 0 : ::getuid()), 0);
    EXPECT_THAT(told, ElementsAre("Permission denied"));
}

TEST_F(NoJournals, WhereTheFolderIsOpenToOthersOrIsNone) {
    fs::create_directory(state);
    fs::permissions(state, fs::perms(0777));
    leaveText("", "1-1.journal");
    fs::permissions(state, fs::perms(0777));
    expectWorkGoesOn();
    EXPECT_THAT(journals.Lost(), IsEmpty());
    Journals nowhere(folder.file("file", "") + "/journals", files);
    Notes beside({person, person, files, &nowhere});
    beside.add("a");
    EXPECT_THAT(nowhere.Lost(), IsEmpty());
}

TEST_F(NoJournals, AFullDiskCostsOnlyWhatDidNotFit) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit tight{100000, before.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &tight);
    const std::string line(1000, 'x');
    while (told.empty() && notes->history.Length() < 1000)
        notes->add(line);
    notes->history.Undo();
    ::setrlimit(RLIMIT_FSIZE, &before);
    const int whole = notes->history.Length() - 1;
    EXPECT_EQ(kept().Length(), whole);
    notes->add(line); // too soon for the next try
    EXPECT_FALSE(notes->history.isJournalUpToDate());
    saveAs("a.note");
    notes->history.Undo();
    EXPECT_TRUE(notes->history.isJournalUpToDate());
    EXPECT_EQ(kept().Length(), whole + 1);
    EXPECT_THAT(told, SizeIs(1));
}

TEST_F(JournalsTest, WhatWasPutAsideStaysAWeekWhateverTheClockSays) {
    for (const char* name : {"1-1.journal", "1-2.journal", "1-3.journal", "1-4.journal"}) {
        leaveText("", name);
        age(name, 30); // lost long ago is not put aside long ago
    }
    leaveText("", "1-1.journal.aside");
    for (const LostJournal& lost : journals.Lost())
        lost.SetAside();
    EXPECT_THAT(journals.Lost(), IsEmpty());
    EXPECT_THAT(names(), SizeIs(5));
    EXPECT_THAT(journals.LostAndAside(), SizeIs(5));
    age("1-2.journal.aside", 6);
    age("1-3.journal.aside", 8);
    age("1-4.journal.aside", -3); // the clock was set back
    age("1-1.journal.aside", 20000);
    EXPECT_THAT(journals.Lost(), IsEmpty());
    EXPECT_FALSE(fs::exists(state / "1-3.journal.aside"));
    EXPECT_THAT(names(), SizeIs(4));
    struct stat status {};
    for (const char* name : {"1-4.journal.aside", "1-1.journal.aside"}) {
        ASSERT_EQ(::stat((state / name).c_str(), &status), 0);
        EXPECT_LT(std::abs(::time(nullptr) - status.st_mtim.tv_sec), 60) << name;
    }
}

} // namespace
} // namespace corvane
