// Changes that fail half-way, at every point at which anything is told of them: what there is
// afterwards is what there was before, or what there would be had nothing failed.
#include "support/Instrumented.h"
#include "support/Worker.h"

namespace corvane {
namespace {

struct Sabotage : std::runtime_error {
    Sabotage() : std::runtime_error("sabotage") {}
};

/// Listens to everything that a document and its history tell, and throws at the n-th thing.
class Saboteur {
  public:
    /// 0 for never.
    void failAt(int n) { left_ = n; }
    [[nodiscard]] bool isWaiting() const { return left_ > 0; }

    template<class... Args>
    void on(const Event<Args...>& event) {
        connections_.push_back(event.connect([this](Args...) {
            if (left_ > 0 && --left_ == 0)
                throw Sabotage();
        }));
    }
    void onAll(PactorDocument& document) { on(document.SettingChanged); }
    void onAll(QuillonProgram& document) { on(document.Changed); }
    void onAll(KOEEPROMDocument& document) {
        on(document.EntryAdded);
        on(document.EntryRemoved);
        on(document.EntryChanged);
    }
    void onAll(LumoraDocument& document) {
        on(document.SettingChanged);
        for (int index = 1; index <= LumoraDocument::TrackCount; ++index) {
            const LumoraTrack& track = document.track(index);
            on(track.SegmentInserted);
            on(track.SegmentRemoving);
            on(track.SegmentRemoved);
            on(track.SegmentChanged);
            on(track.ColorChanged);
        }
    }
    void onHistory(History& history) {
        on(history.Freezing);
        on(history.Unfreezing);
        on(history.UndoStateChanged);
        on(history.SaveStateChanged);
        on(history.Changed);
    }

  private:
    int left_ = 0;
    std::vector<Connection> connections_;
};

/// A document whose every step can be made to fail, and what must be true of it always.
template<class Document>
struct Sabotaged : Worker<Document> {
    Sabotaged() {
        saboteur.onAll(this->document);
        saboteur.onHistory(this->history);
    }

    /// All of what a person has, in one text.
    [[nodiscard]] std::string everything() const {
        return this->whole() + (this->history.SaveDirty() ? "dirty" : "clean") +
               stateOf(this->document);
    }
    /// Does something that fails at this step. Whether it has come to that.
    bool failsAt(int step, const std::function<void()>& act) {
        saboteur.failAt(step);
        try {
            act();
        } catch (const Sabotage&) {
        }
        const bool failed = !saboteur.isWaiting();
        saboteur.failAt(0);
        this->expectSound();
        EXPECT_EQ(frozen, 0);
        if (this->history.isJournalUpToDate()) {
            EXPECT_EQ(this->kept(), this->whole());
        }
        return failed;
    }

  private:
    Saboteur saboteur;
    int frozen = 0;
    Connection onFreezing = this->history.Freezing.connect([this] { ++frozen; });
    Connection onUnfreezing = this->history.Unfreezing.connect([this](bool) { --frozen; });
};

template<class Document>
class FailingChange : public testing::Test {};
TYPED_TEST_SUITE(FailingChange, EveryDocument);

TYPED_TEST(FailingChange, LeavesWhatWasOrWhatWouldBe) {
    constexpr unsigned Seeds = Instrumented ? 2 : 5;
    constexpr int Acts = 25;
    int failed = 0;
    for (unsigned seed = 1; seed <= Seeds; ++seed) {
        Sabotaged<TypeParam> core;
        Random random(seed);
        for (int i = 0; i < Acts; ++i) {
            // The same act again and again, each time failing one step later, until none fails.
            const std::string before = core.everything();
            Random same = random;
            for (int step = 1; core.everything() == before; ++step) {
                same = random;
                if (!core.failsAt(step, [&] { core.act(same); }))
                    break;
                ++failed;
            }
            random = same;
            if (this->HasFailure())
                FAIL() << "seed " << seed << ", act " << i;
        }
        while (core.history.position() > 0)
            core.history.Undo();
        ASSERT_EQ(stateOf(core.document), stateOf(Worker<TypeParam>().document)) << seed;
    }
    EXPECT_GT(failed, 100);
}

TYPED_TEST(FailingChange, LeavesADocumentThatIsLeftWithoutEnd) {
    bool failed = true;
    for (int step = 1; failed && !this->HasFailure(); ++step) {
        Sabotaged<TypeParam> core;
        Random random(3);
        for (int i = 0; i < 12; ++i)
            core.act(random);
        core.person.answers = {Answer::No};
        failed = core.failsAt(step, [&] { static_cast<void>(core.history.NewHistory()); });
        core.history.Record(std::make_unique<KODoNothingChange>()); // and the journal holds all
        EXPECT_TRUE(core.history.isJournalUpToDate());
        EXPECT_EQ(core.kept(), core.whole());
    }
}

} // namespace
} // namespace corvane
