// Jobs over wires on which everything goes wrong at once, the clock included, and jobs of a program
// that is killed, the next one of which starts while what was under way on the wires still arrives.
#include "eeprom/GenericEEPROMProgrammer.h"
#include "light/LumoraProgrammer.h"
#include "pwm/QuillonTransfer.h"
#include "relay/PactorSettings.h"
#include "support/Desk.h"
#include "support/Effort.h"
#include "support/OtherProducts.h"
#include "support/Writing.h"

#include <gtest/gtest.h>

#include <random>

namespace corvane {
namespace {

using namespace std::chrono_literals;

const char* vendorOf(std::string_view product) {
    return product == "quillon" ? "RQ" : "KO";
}

/// The jobs that a program may be at. Each gives what it has read, or that it was done; nothing if
/// it was not.
using Job = std::string (*)(Desk&);
constexpr const char* Done = "done";

std::string programLight(Desk& desk) {
    LumoraDocument document({desk.person, desk.person, desk.files});
    for (int i = 1; i <= 5; ++i)
        writable(document, 1).InsertTrack(i, 0.5, 17 * i, {}, 0);
    const JobOutcome outcome = LumoraProgrammer(desk.place, document).run();
    EXPECT_NE(outcome.text, "");
    return outcome.done() ? Done : "";
}
std::string programRelay(Desk& desk) {
    GenericEEPROMProgrammer writer(desk.place);
    desk.bench.run(50);
    const bool done = writer.Connect("Corvane.PactorControl", "relay", false) &&
                      writer.WriteEEPROM(0, PactorSettings().toImage());
    writer.Disconnect(false);
    return done ? Done : "";
}
std::string upload(Desk& desk) {
    desk.bench.run(50);
    QuillonTransfer transfer(desk.place);
    KOBuffer blocks;
    blocks.SetLength(200, 7);
    return transfer.Connect() && transfer.Upload(0, blocks) ? Done : "";
}
std::string readMemory(Desk& desk) {
    GenericEEPROMProgrammer reader(desk.place);
    desk.bench.run(50);
    bool done = reader.Connect(desk.bench.link.Class(), "product", true);
    std::string read;
    for (int i = 0; done && i < 20; ++i) {
        KOBuffer piece;
        done = reader.ReadExactly(255 * i, 255, piece);
        read += piece.ToString();
    }
    reader.Disconnect(false);
    return done ? read : "";
}

struct Case {
    const char* product;
    const char* name; // by which it is to be identified
    Job job;          // that is killed
    Job own;          // that must succeed afterwards
};

constexpr std::array jobsOfProducts{Case{"lumora-1.1", "Lumora 1.1", programLight, programLight},
                                    Case{"lumora-1.2", "Lumora 1.2", programLight, programLight},
                                    Case{"pactor-2.1", "Pactor 2.1", readMemory, programRelay},
                                    Case{"pactor-3.1", "Pactor 3.1", programRelay, programRelay},
                                    Case{"eeprom", "KOEEPROM 255.1", readMemory, readMemory},
                                    Case{"quillon", "Quillon 100.1", upload, upload}};

/// At some time during a job the clock jumps by so many milliseconds, or by 0 stands still.
struct ClockFault {
    unsigned after = 0; // ms; 0: never
    std::int64_t by = 0;
};

/// Does a job over a wire of its own. What there is afterwards on both sides of it; nothing if the
/// job was not done.
std::string outcomeOf(const Case& test, const std::string& faults, unsigned seed,
                      ClockFault clock = {}) {
    Desk desk({}, vendorOf(test.product));
    desk.bench.plugIn(test.product, faults, seed,
                      {.eepromFile = desk.folder.path() / "memory",
                       .writeTime = std::chrono::milliseconds(seed % 5)});
    desk.bench.run(50);
    desk.bench.clock.Passing = [&desk, clock]() mutable {
        if (clock.after == 0 || --clock.after > 0)
            return;
        clock.by == 0 ? desk.bench.clock.standStill(20000) : desk.bench.clock.goWrong(clock.by);
    };
    const std::string result = test.job(desk);
    // A connection, every byte tried as often as it may, the letting go, and a clock that stands
    // still for a while.
    EXPECT_LT(desk.bench.clock.sinceStart() / 1s, 320);
    EXPECT_FALSE(desk.bench.link.Negotiated() || desk.bench.link.InUse());
    return result.empty() ? result : result + desk.folder.content("memory");
}

TEST(MixedFaults, EveryJobEndsInTimeAndIsDoneOnlyIfItIs) {
    const int runs = effort(500, 5000);
    int done = 0;
    for (int run = 1; run <= runs; ++run) {
        const auto seed = static_cast<unsigned>(run);
        std::mt19937 random(seed);
        const Case& test = jobsOfProducts[random() % jobsOfProducts.size()];
        const auto share = [&random] { // a sound wire now and then
            return random() % 3 == 0 ? 0 : std::uniform_real_distribution<>(0, 0.25)(random);
        };
        std::string faults = "drop=" + std::to_string(share()) +
                             ",corrupt=" + std::to_string(share()) +
                             ",delay=" + std::to_string(random() % 60);
        for (const char* end : {",mute-after=", ",unplug-after="})
            if (random() % 4 == 0)
                faults += end + std::to_string(random() % 60);
        static constexpr std::int64_t jumps[] = {-3000, -3600000, 3600000, 30LL * 24 * 3600000, 0};
        const ClockFault clock = random() % 3 == 0
                                     ? ClockFault{static_cast<unsigned>(random() % 600),
                                                  jumps[random() % std::size(jumps)]}
                                     : ClockFault{};
        const std::string outcome = outcomeOf(test, faults, seed, clock);
        if (!outcome.empty()) {
            ++done;
            EXPECT_EQ(outcome, outcomeOf(test, {}, seed)); // as over a sound wire
        }
        if (testing::Test::HasFailure())
            FAIL() << "run " << run << ": " << test.product << " " << faults << ", clock "
                   << clock.by << " after " << clock.after;
    }
    // Neither of the two ends of a job is the rule.
    EXPECT_GT(done, runs / 8);
    EXPECT_LT(done, runs);
}

TEST(MixedFaults, FiftyLightProgramsGoThroughWhereEachHundredthByteIsLostOrDamaged) {
    for (unsigned seed = 1; seed <= 50; ++seed)
        EXPECT_NE(outcomeOf(jobsOfProducts[1], "drop-bytes=0.005,damage-bytes=0.005", seed), "")
            << seed;
}

class KilledSession : public testing::TestWithParam<Case> {
  protected:
    static LinkBench::Plugged& plugIn(LinkBench& bench, const std::string& product, int delay,
                                      unsigned seed) {
        bench.noteFrames = true;
        return bench.plugIn(product, "delay=" + std::to_string(delay), seed, {.eepromSize = 65536});
    }
    /// How long the whole job takes, in ms.
    static std::uint64_t length(const Case& test, int delay) {
        Desk desk({}, vendorOf(test.product));
        plugIn(desk.bench, test.product, delay, 1);
        const auto start = desk.bench.clock.now();
        EXPECT_NE(test.job(desk), "");
        return desk.bench.clock.now() - start;
    }
    /// At the job for so long, and then no more.
    static void killAfter(Desk& desk, std::uint64_t milliseconds, Job job) {
        const auto end = desk.bench.clock.now() + milliseconds;
        // What the program goes through from then on happens to nobody: it has no link any more.
        desk.bench.clock.Passing = [&desk, end] {
            if (TimeDiff(desk.bench.clock.now(), static_cast<std::uint32_t>(end)) >= 0)
                desk.bench.kill();
        };
        static_cast<void>(job(desk));
        desk.bench.clock.Passing = nullptr;
        desk.bench.kill();
    }
    /// The next program finds what is there, whichever of its jobs comes first.
    static void expectRight(Desk& desk, const Case& test, LinkBench::Plugged& plugged,
                            bool otherJobFirst) {
        const auto identify = [&] {
            EXPECT_TRUE(ReachProduct(desk.place, desk.bench.link.Class(), true).done());
            EXPECT_EQ(desk.bench.link.Product().name(), test.name);
            desk.bench.link.DisconnectAndBlock(false);
        };
        const auto otherJobs = [&] {
            plugged.frames.clear();
            for (const Job job : {&programLight, &programRelay, &upload})
                if (job != test.own) {
                    EXPECT_EQ(job(desk), "");
                }
            EXPECT_EQ(WritesAmong(plugged.frames), 0);
        };
        if (!otherJobFirst)
            identify();
        otherJobs();
        if (otherJobFirst)
            identify();
        EXPECT_NE(test.own(desk), "");
    }
};

TEST_P(KilledSession, LeavesNothingThatTheNextOneTakesForItsOwn) {
    const Case& test = GetParam();
    for (const int delay : {0, 10, 50}) {
        const std::uint64_t whole = length(test, delay);
        for (unsigned seed = 1; seed <= 40; ++seed) {
            std::mt19937 random(seed);
            Desk desk({}, vendorOf(test.product));
            LinkBench::Plugged& plugged = plugIn(desk.bench, test.product, delay, seed);
            killAfter(desk, random() % whole, test.job);
            Desk next(desk.bench);
            // As long as its start takes; what arrives meanwhile is lost or kept for it.
            next.bench.clock.advance(random() % 60);
            if (seed % 2 == 0)
                static_cast<void>(plugged.link->run(next.bench.clock.sinceStart()));
            expectRight(next, test, plugged, seed % 4 < 2);
            if (HasFailure())
                FAIL() << test.product << ", delay " << delay << ", seed " << seed;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Products, KilledSession, testing::ValuesIn(jobsOfProducts));

} // namespace
} // namespace corvane
