// Programs that are killed while a person edits: everything that was done must come back.
#include "support/Effort.h"
#include "support/Worker.h"

#include <atomic>
#include <csignal>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {
namespace {

const auto Kills = static_cast<unsigned>(effort(20, 50)); // of each product

/// One thing that a person does, which now and then is a saving.
template<class Document>
void work(Worker<Document>& worker, const char* file, Random& random) {
    if (random.below(40) != 0)
        return worker.act(random);
    worker.person.files = {worker.place->path() / file};
    if (!worker.history.SaveHistoryAs())
        throw std::runtime_error("not saved");
}

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
    static int workUntilKilled(const typename Worker<Document>::Place& place, unsigned seed,
                               int after) {
        const SharedCounter done;
        const int child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            Worker<Document> worker(place);
            Random random(seed);
            while (true) {
                work(worker, "document", random);
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

TYPED_TEST_SUITE(KilledProgram, EveryDocument);

TYPED_TEST(KilledProgram, LosesNothingThatWasDone) {
    Random moments(11);
    unsigned inJournals = 0;
    for (unsigned seed = 1; seed <= Kills; ++seed) {
        const auto place = std::make_shared<const TemporaryFolder>();
        const int done = this->workUntilKilled(place, seed, moments.below(300));

        Worker<TypeParam> reference(place, false);
        Random random(seed);
        for (int i = 0; i < done; ++i)
            work(reference, "reference", random);

        Worker<TypeParam> restarted(place);
        const std::vector<LostJournal> lost = restarted.journals.Lost();
        ASSERT_LE(lost.size(), 1U);
        std::string held = place->content("document");
        if (!lost.empty() && !lost[0].isNothingLost()) {
            ASSERT_TRUE(lost[0].isSound());
            held = lost[0].document();
            ++inJournals;
        }
        // What it was just doing may be there or not.
        if (held != reference.whole() && !(held.empty() && reference.history.Length() == 0))
            work(reference, "reference", random);
        if (held.empty() && reference.history.Length() == 0)
            continue;
        ASSERT_EQ(held, reference.whole()) << "seed " << seed << ", done " << done;

        ASSERT_TRUE(restarted.history.OpenHistory(place->file("held", held)));
        restarted.expectSound();
        while (restarted.history.position() > 0)
            restarted.history.Undo();
        restarted.expectSound();
    }
    EXPECT_GT(inJournals, Kills / 2);
}

} // namespace
} // namespace corvane
