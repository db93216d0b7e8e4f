// Jobs over wires on which everything goes wrong at once, the clock included.
#include "bench/LumoraMemory.h"
#include "eeprom/GenericEEPROMProgrammer.h"
#include "light/LumoraProgrammer.h"
#include "support/Desk.h"
#include "support/Effort.h"
#include "support/Writing.h"

#include <gtest/gtest.h>

#include <random>

namespace corvane {
namespace {

using namespace std::chrono_literals;

/// One wire with its faults, a product with a memory, and a job.
class FaultyRun {
  public:
    explicit FaultyRun(unsigned seed, std::string product = {}, std::string faults = {})
        : random_(seed), product_(std::move(product)), faults_(std::move(faults)) {
        const bool anything = product_.empty();
        if (anything)
            chooseAnything();
        bench::Setup setup;
        setup.eepromFile = desk_.folder.path() / "memory";
        setup.writeTime = std::chrono::milliseconds(random_() % 5);
        std::string error;
        desk_.bench.plugIn(*bench::makeBench(product_, setup, error), faults_, seed);
        desk_.bench.run(50);
        desk_.person.answers = std::deque<Answer>(9, Answer::Yes);
        if (anything && random_() % 3 == 0)
            letClockGoWrong();
    }
    void work() {
        if (product_.starts_with("lumora"))
            return programLight();
        GenericEEPROMProgrammer programmer(desk_.place);
        if (programmer.Connect("Corvane.EEPROMEditorControl", "product", true)) {
            random_() % 2 == 0 ? read(programmer) : write(programmer);
        }
        programmer.Disconnect(false);
    }
    [[nodiscard]] const KOCommLink& link() const { return desk_.bench.link; }
    [[nodiscard]] auto seconds() const { return desk_.bench.clock.sinceStart() / 1s; }
    [[nodiscard]] bool done() const { return done_; }
    [[nodiscard]] std::string told() const { return product_ + " " + faults_; }

  private:
    void chooseAnything() {
        static constexpr const char* products[] = {"lumora-1.1", "lumora-1.2", "pactor-3.1",
                                                   "eeprom"};
        product_ = products[random_() % std::size(products)];
        faults_ = "drop=" + std::to_string(within(0.25)) +
                  ",corrupt=" + std::to_string(within(0.25)) +
                  ",delay=" + std::to_string(random_() % 60);
        for (const char* end : {",mute-after=", ",unplug-after="})
            if (random_() % 4 == 0)
                faults_ += end + std::to_string(random_() % 60);
    }
    void letClockGoWrong() {
        static constexpr std::int64_t jumps[] = {-3000, -3600000, 3600000, 30LL * 24 * 3600000, 0};
        const std::int64_t by = jumps[random_() % std::size(jumps)]; // 0: it stands still
        faults_ += ",clock=" + std::to_string(by);
        desk_.bench.clock.Passing = [this, by, left = random_() % 600]() mutable {
            if (left == 0 || --left > 0)
                return;
            by == 0 ? desk_.bench.clock.standStill(20000) : desk_.bench.clock.goWrong(by);
        };
    }
    double within(double most) {
        // A sound wire now and then.
        return random_() % 3 == 0 ? 0 : std::uniform_real_distribution<double>(0, most)(random_);
    }
    [[nodiscard]] std::string memory() const { return desk_.folder.content("memory"); }
    KOBuffer anyBytes(int length) {
        KOBuffer bytes;
        for (int i = 0; i < length; ++i)
            bytes.Append(static_cast<std::uint8_t>(random_()));
        return bytes;
    }
    void programLight() {
        LumoraDocument document({desk_.person, desk_.person, desk_.files});
        for (int i = 1; i <= 5; ++i)
            writable(document, 1).InsertTrack(i, 0.5, static_cast<int>(random_() % 101), {}, 0);
        const JobOutcome outcome = LumoraProgrammer(desk_.place, document).run();
        done_ = outcome.done();
        EXPECT_NE(outcome.text, "");
        if (!done_)
            return;
        const std::string sent = product_ == "lumora-1.2" ? imageOf(document) : tablesOf(document);
        EXPECT_EQ(memory().substr(0, sent.size()), sent);
    }
    static std::string imageOf(const LumoraDocument& document) {
        LumoraImageCompiler compiler(document);
        static_cast<void>(compiler.compile());
        const auto image = compiler.image().bytes();
        return {image.begin(), image.end()};
    }
    /// What the older controller keeps of the transfers.
    std::string tablesOf(const LumoraDocument& document) {
        LumoraTransferCompiler compiler(document, desk_.person);
        static_cast<void>(compiler.compile());
        std::string tables(bench::TablesLength, '\xFF');
        for (const LumoraTransfer& transfer : compiler.transfers()) {
            const auto data = transfer.data.bytes();
            if (transfer.kind == bench::BlocksKind) {
                for (std::size_t i = 0; i + 2 < data.size(); i += 3)
                    for (std::size_t part : {1, 2})
                        tables[bench::BlocksOffset + std::size_t{2} * data[i] + part - 1] =
                            static_cast<char>(data[i + part]);
                continue;
            }
            for (const bench::TablePlace& place : bench::tablePlaces)
                if (place.kind == transfer.kind)
                    std::copy(data.begin(), data.end(),
                              tables.begin() + static_cast<std::ptrdiff_t>(place.offset));
        }
        return tables;
    }
    void read(GenericEEPROMProgrammer& reader) {
        const std::string kept = memory();
        const int length = static_cast<int>(random_() % 100) + 1;
        KOBuffer bytes;
        done_ = reader.ReadExactly(0, length, bytes);
        if (done_) {
            EXPECT_EQ(kept.substr(0, static_cast<std::size_t>(length)),
                      std::string(bytes.bytes().begin(), bytes.bytes().end()));
        }
    }
    void write(GenericEEPROMProgrammer& writer) {
        const KOBuffer bytes = anyBytes(static_cast<int>(random_() % 20) + 1);
        done_ = writer.WriteEEPROM(3, bytes);
        if (done_) {
            EXPECT_EQ(memory().substr(3, static_cast<std::size_t>(bytes.Length())),
                      std::string(bytes.bytes().begin(), bytes.bytes().end()));
        }
    }

    std::mt19937 random_;
    Desk desk_{RunModes{}};
    std::string product_;
    std::string faults_;
    bool done_ = false;
};

TEST(MixedFaults, EveryJobEndsInTimeAndIsDoneOnlyIfItIs) {
    int done = 0;
    for (int run = 1; run <= effort(500, 5000); ++run) {
        FaultyRun job(static_cast<unsigned>(run));
        job.work();
        done += job.done() ? 1 : 0;
        // A connection, every byte tried as often as it may, the letting go, and a clock that
        // stands still for a while.
        EXPECT_LT(job.seconds(), 320);
        EXPECT_FALSE(job.link().Negotiated());
        EXPECT_FALSE(job.link().InUse());
        if (testing::Test::HasFailure())
            FAIL() << "run " << run << ": " << job.told();
    }
    // Neither of the two ends of a job is the rule.
    EXPECT_GT(done, effort(500, 5000) / 4);
    EXPECT_LT(done, effort(500, 5000));
}

TEST(MixedFaults, FiftyLightProgramsGoThroughWhereEachHundredthByteIsLostOrDamaged) {
    for (unsigned run = 1; run <= 50; ++run) {
        FaultyRun job(run, "lumora-1.2", "drop-bytes=0.005,damage-bytes=0.005");
        job.work();
        EXPECT_TRUE(job.done()) << run;
    }
}

} // namespace
} // namespace corvane
