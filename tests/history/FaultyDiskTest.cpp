// Every call for files fails once, in turn, and the clocks go wrong at every reading, while a
// person works and saves: after each thing that was done the work is on the screen and safe, or the
// person was told that it is not, once.
#include "support/FaultyDisk.h"

#include "support/Notes.h"
#include "support/Worker.h"
#include "system/KORegistry.h"

#include <gmock/gmock.h>

#include <sys/file.h>

namespace corvane {
namespace {

/// A document, its file, its journal and the settings on one disk.
struct DiskWorker : Worker<Notes> {
    [[nodiscard]] int told() const { return static_cast<int>(person.messages.size()) + failures; }
    void save() {
        const std::string before = folder.content("a.note");
        person.files = {folder.path() / "a.note"}; // asked for once
        const int toldBefore = told();
        history.SaveHistory();
        if (history.SaveDirty()) {
            EXPECT_EQ(folder.content("a.note"), before); // whole, as it was
            EXPECT_EQ(told(), toldBefore + 1);
        } else {
            EXPECT_EQ(folder.content("a.note"), whole());
        }
    }
    void setting(int value) {
        bool created = false;
        const int before = key.CreateKey(RegistryRoot::CurrentUser, "Software\\Test", created)
                               ? key.Integers("x")
                               : 0;
        if (key.Opened())
            key.setIntegers("x", value);
        if (key.Opened()) {
            EXPECT_THAT(key.Integers("x"), testing::AnyOf(before, value));
        }
    }
    void expectSafe() {
        journals.WriteOut();
        if (!history.SaveDirty()) {
            EXPECT_EQ(folder.content("a.note"), whole());
        } else if (history.isJournalUpToDate()) {
            EXPECT_EQ(kept(), whole());
        } else {
            EXPECT_EQ(told(), 1);
        }
        EXPECT_LE(told(), 1);
    }

    Notes& notes = document;
    const TemporaryFolder& folder = *place;
    SettingsStore store{folder.path() / "config", files};
    RegistryKey key{store};
    int failures = 0;
    Connection onFailed = journals.Failed.connect([this](const std::string&) { ++failures; });
};

TEST(FaultyDisk, LosesNothingAtAnyCall) {
    constexpr int day = 24 * 60 * 60;
    constexpr std::array<std::pair<const char*, int>, 11> faults{{{"write", EIO},
                                                                  {"pwrite", EIO},
                                                                  {"fsync", EIO},
                                                                  {"fdatasync", EIO},
                                                                  {"rename", EIO},
                                                                  {"linkat", EIO},
                                                                  {"flock", EWOULDBLOCK},
                                                                  {"ftruncate", EIO},
                                                                  {"clock_gettime", -day},
                                                                  {"clock_gettime", day},
                                                                  {"clock_gettime", 0}}};
    for (const auto& [call, error] : faults) {
        for (int n = 1; n < 40; ++n) {
            DiskWorker worker;
            worker.store.Patience = std::chrono::milliseconds(5);
            worker.journals.RetryAfter = {};
            worker.journals.InPieces = n % 2 == 0;
            bool failed = false;
            {
                const FaultyDisk disk(call, n, error);
                const std::vector<std::function<void()>> steps{
                    [&] { worker.notes.add("one"); },
                    [&] { worker.history.Undo(); },
                    [&] { worker.history.Redo(); },
                    [&] { worker.setting(1); },
                    [&] { worker.save(); },
                    [&] { worker.notes.add("two"); },
                    [&] { static_cast<void>(worker.journals.Look()); },
                    [&] { worker.setting(2); },
                    [&] { worker.notes.add("three"); },
                    [&] { worker.save(); },
                };
                for (std::size_t step = 0; step < steps.size(); ++step) {
                    SCOPED_TRACE(std::string(call) + " " + std::to_string(n) + " at step " +
                                 std::to_string(step));
                    steps[step]();
                    if (!worker.journals.InPieces || step % 3 != 0) // two things at one go
                        worker.expectSafe();
                }
                failed = disk.hasFailed();
            }
            // And with a disk that works again all is as if nothing had been.
            SCOPED_TRACE(std::string(call) + " " + std::to_string(n) + " afterwards");
            EXPECT_EQ(worker.notes.lines, (std::vector<std::string>{"one", "two", "three"}));
            worker.notes.add("four");
            worker.journals.WriteOut();
            EXPECT_TRUE(worker.history.isJournalUpToDate());
            EXPECT_EQ(worker.kept(), worker.whole());
            worker.save();
            EXPECT_EQ(worker.folder.content("a.note"), worker.whole());
            worker.setting(3);
            EXPECT_EQ(worker.key.Integers("x"), 3);
            EXPECT_LE(worker.told(), 1);
            if (!failed)
                break;
        }
    }
}

TEST(FaultyDisk, ALockThatIsNotLetGoHoldsNobodyUp) {
    const TemporaryFolder folder;
    DiskFiles files;
    SettingsStore store(folder.path() / "config", files);
    RegistryKey key(store);
    bool created = false;
    ASSERT_TRUE(key.CreateKey(RegistryRoot::CurrentUser, "Software\\Test", created));
    key.setIntegers("x", 1);
    {
        const Handle other(
            ::open((folder.path() / "config" / "settings.lock").c_str(), O_RDWR | O_CLOEXEC));
        ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
        const FaultyDisk clock("clock_gettime", 1, 0); // whatever the clock says
        key.setIntegers("x", 2);                       // waits a little, and no more after that
        EXPECT_EQ(key.Integers("x"), 1);
        store.Patience = std::chrono::hours(1);
        for (int i = 0; i < 20; ++i)
            key.setIntegers("x", 3);
        EXPECT_EQ(key.Integers("x"), 1);
    }
    key.setIntegers("x", 4);
    EXPECT_EQ(key.Integers("x"), 4);
}

} // namespace
} // namespace corvane
