// Changes that fail half-way, at every point at which anything is told of them: what there is
// afterwards is what there was before, or what there would be had nothing failed.
#include "support/Instrumented.h"
#include "support/KeptWork.h"
#include "support/Person.h"
#include "support/RandomEdits.h"
#include "support/TemporaryFolder.h"
#include "system/DiskFiles.h"

#include <gtest/gtest.h>

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
struct Sabotaged {
    Sabotaged() {
        saboteur.onAll(document);
        saboteur.onHistory(history);
    }

    /// All of what a person has, in one text.
    [[nodiscard]] std::string whole() const {
        return WholeWork(history) + (history.SaveDirty() ? "dirty" : "clean") + stateOf(document);
    }
    /// The document is what its changes make of a new one, which is saved as the same file, and the
    /// journal holds it.
    void expectSound() {
        const std::string bytes = WholeWork(history);
        Document other({person, person, files});
        ASSERT_TRUE(other.HistoryObject().OpenHistory(place.file("twin", bytes)));
        ASSERT_EQ(stateOf(document), stateOf(other));
        ASSERT_EQ(WholeWork(other.HistoryObject()), bytes);
        ASSERT_EQ(frozen, 0);
        if (history.isJournalUpToDate()) {
            ASSERT_EQ(KeptWork(journals), bytes);
        }
    }

    /// Does something that is to fail at this step. Whether that comes too late for it.
    template<class Act>
    bool failsTooLate(int step, Act act) {
        saboteur.failAt(step);
        try {
            act();
        } catch (const Sabotage&) {
            ++failed;
        }
        const bool tooLate = saboteur.isWaiting();
        saboteur.failAt(0);
        expectSound();
        return tooLate;
    }

    TemporaryFolder place;
    Person person;
    DiskFiles files;
    Journals journals{place.path() / "journals", files};
    Document document{{person, person, files, &journals}};
    History& history = document.HistoryObject();
    Saboteur saboteur;
    int failed = 0;
    int frozen = 0;
    Connection onFreezing = history.Freezing.connect([this] { ++frozen; });
    Connection onUnfreezing = history.Unfreezing.connect([this](bool) { --frozen; });
};

/// A few segments that come or go at once, which have steps in between.
void editMuch(LumoraDocument& document, Random& random) {
    auto change = std::make_unique<LumoraUndoableTrackChange>();
    const LumoraTrack& track = document.Channel(1, false);
    std::vector<LumoraPlacedElement> segments;
    if (track.GetTrackCount() > 4) {
        for (const int index : {1, 2, 4})
            segments.push_back({index, track.GetTrack(index)});
        change->InitializeGroup(document, false, 1, false, std::move(segments));
    } else {
        for (int index = 1; index <= 4; ++index)
            segments.push_back({index, {random.below(101), 1, "P", 7}});
        change->InitializeGroup(document, true, 1, false, std::move(segments));
    }
    document.HistoryObject().Record(std::move(change));
}
template<class Document>
void editMuch(Document& document, Random& random) {
    editAtRandom(document, random);
}

template<class Document>
void actOn(Document& document, Random& random) {
    History& history = document.HistoryObject();
    const int choice = random.below(8);
    if (choice < 2 && history.CanUndo())
        history.Undo();
    else if (choice < 4 && history.CanRedo())
        history.Redo();
    else if (choice < 6)
        editMuch(document, random);
    else
        editAtRandom(document, random);
}

template<class Document>
class FailingChange : public testing::Test {};
using SabotagedDocuments =
    testing::Types<LumoraDocument, PactorDocument, KOEEPROMDocument, QuillonProgram>;
TYPED_TEST_SUITE(FailingChange, SabotagedDocuments);

TYPED_TEST(FailingChange, LeavesWhatWasOrWhatWouldBe) {
    constexpr unsigned Seeds = Instrumented ? 2 : 5;
    constexpr int Acts = 25;
    int failed = 0;
    for (unsigned seed = 1; seed <= Seeds; ++seed) {
        Sabotaged<TypeParam> core;
        Random random(seed);
        for (int i = 0; i < Acts; ++i) {
            // The same act again and again, each time failing one step later, until none fails.
            for (int step = 1; true; ++step) {
                Random same = random;
                const std::string before = core.whole();
                const bool tooLate = core.failsTooLate(step, [&] { actOn(core.document, same); });
                if (this->HasFatalFailure())
                    FAIL() << "seed " << seed << ", act " << i << ", step " << step;
                if (tooLate || core.whole() != before) {
                    random = same;
                    break;
                }
            }
        }
        failed += core.failed;
        while (core.history.position() > 0)
            core.history.Undo();
        const Sabotaged<TypeParam> fresh;
        ASSERT_EQ(stateOf(core.document), stateOf(fresh.document)) << "seed " << seed;
    }
    EXPECT_GT(failed, 100);
}

TYPED_TEST(FailingChange, LeavesADocumentThatIsLeftWithoutEnd) {
    for (int step = 1; true; ++step) {
        Sabotaged<TypeParam> core;
        Random random(3);
        for (int i = 0; i < 12; ++i)
            actOn(core.document, random);
        core.person.answers = {Answer::No};
        const bool tooLate =
            core.failsTooLate(step, [&] { static_cast<void>(core.history.NewHistory()); });
        core.history.Record(std::make_unique<KODoNothingChange>()); // and the journal holds all
        core.expectSound();
        EXPECT_TRUE(core.history.isJournalUpToDate());
        if (this->HasFatalFailure() || tooLate)
            break;
    }
}

} // namespace
} // namespace corvane
