// Programs that are killed while a person edits: everything that was done must come back.
#include "support/Effort.h"
#include "support/KeptWork.h"
#include "support/Person.h"
#include "support/RandomEdits.h"
#include "support/TemporaryFolder.h"
#include "system/DiskFiles.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {
namespace {

const auto Kills = static_cast<unsigned>(effort(20, 50)); // of each product

/// A product's document on the real files and journals, with nobody at the screen.
template<class Document>
struct Core {
    Core(const TemporaryFolder& place, const std::string& name, bool keepsJournal)
        : path(place.path() / name), journals(place.path() / "journals", files) {
        document.emplace(
            History::Surroundings{person, person, files, keepsJournal ? &journals : nullptr});
    }

    History& history() { return document->HistoryObject(); }
    /// One thing that a person does.
    void act(Random& random) {
        const int choice = random.below(40);
        if (choice == 0) {
            person.files = {path};
            if (!history().SaveHistoryAs())
                throw std::runtime_error("not saved");
        } else if (choice < 7 && history().CanUndo()) {
            history().Undo();
        } else if (choice < 12 && history().CanRedo()) {
            history().Redo();
        } else {
            editAtRandom(*document, random);
        }
    }
    std::string whole() { return WholeWork(history()); }

    std::string path;
    Person person;
    DiskFiles files;
    Journals journals;
    std::optional<Document> document;
};

/// Counts in memory that outlives the process that counts.
struct SharedCounter {
    SharedCounter()
        : value(new (::mmap(nullptr, sizeof *value, PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<int>(0)) {}
    ~SharedCounter() { ::munmap(value, sizeof *value); }
    SharedCounter(const SharedCounter&) = delete;
    SharedCounter& operator=(const SharedCounter&) = delete;

    std::atomic<int>* value;
};

template<class Document>
class KilledProgram : public testing::Test {
  protected:
    /// Works in a process of its own and kills it once it has done so many things and a moment
    /// more. How many it had done.
    static int workUntilKilled(const TemporaryFolder& place, unsigned seed, int after) {
        const SharedCounter done;
        const int child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            Core<Document> core(place, "document", true);
            Random random(seed);
            while (true) {
                core.act(random);
                ++*done.value;
            }
        }
        while (*done.value < after && ::waitpid(child, nullptr, WNOHANG) == 0) {
        }
        ::usleep(seed * 7919 % 200);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        return *done.value;
    }
};

using Documents = testing::Types<LumoraDocument, PactorDocument, KOEEPROMDocument, QuillonProgram>;
TYPED_TEST_SUITE(KilledProgram, Documents);

TYPED_TEST(KilledProgram, LosesNothingThatWasDone) {
    Random moments(11);
    unsigned inJournals = 0;
    for (unsigned seed = 1; seed <= Kills; ++seed) {
        const TemporaryFolder place;
        const int done = this->workUntilKilled(place, seed, moments.below(300));

        Core<TypeParam> reference(place, "reference", false);
        Random random(seed);
        for (int i = 0; i < done; ++i)
            reference.act(random);

        Core<TypeParam> restarted(place, "document", true);
        const std::vector<LostJournal> lost = restarted.journals.Lost();
        ASSERT_LE(lost.size(), 1U);
        std::string held = place.content("document");
        if (!lost.empty() && !lost[0].isNothingLost()) {
            ASSERT_TRUE(lost[0].isSound());
            held = lost[0].document();
            ++inJournals;
        }
        // What it was just doing may be there or not.
        if (held != reference.whole() && !(held.empty() && reference.history().Length() == 0))
            reference.act(random);
        if (held.empty() && reference.history().Length() == 0)
            continue;
        ASSERT_EQ(held, reference.whole()) << "seed " << seed << ", done " << done;

        place.file("held", held);
        ASSERT_TRUE(restarted.history().OpenHistory(place.path() / "held"));
        EXPECT_EQ(stateOf(*restarted.document), stateOf(*reference.document));
        while (restarted.history().position() > 0)
            restarted.history().Undo();
        const Core<TypeParam> fresh(place, "fresh", false);
        EXPECT_EQ(stateOf(*restarted.document), stateOf(*fresh.document));
        for (Core<TypeParam>* core : {&restarted, &reference})
            while (core->history().CanRedo())
                core->history().Redo();
        EXPECT_EQ(stateOf(*restarted.document), stateOf(*reference.document));
        EXPECT_EQ(restarted.whole(), reference.whole());
    }
    EXPECT_GT(inJournals, Kills / 2);
}

} // namespace
} // namespace corvane
