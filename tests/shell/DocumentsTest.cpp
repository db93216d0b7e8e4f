#include "shell/ProductTable.h"
#include "support/Desk.h"
#include "support/Worker.h"
#include "system/File.h"

namespace corvane {
namespace {

TEST(Examples, OpenAndAreTheSameWhenSavedAgain) {
    Desk desk;
    int opened = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CORVANE_EXAMPLES)) {
        const std::string path = entry.path();
        const KOProductProfile* product = desk.bench.products.ByExtension(KOIOExtension(path));
        if (product == nullptr)
            continue; // a picture
        const auto history = MakeDocument(product->Class, {desk.person, desk.person, desk.files});
        ASSERT_TRUE(history->OpenHistory(path)) << path;
        EXPECT_TRUE(history->CanUndo()) << path;
        desk.person.files = {desk.folder.path() / "saved"};
        ASSERT_TRUE(history->SaveHistoryAs());
        std::string content;
        ASSERT_EQ(desk.files.ReadWhole(path, content), FileDoor::ReadResult::Done);
        EXPECT_EQ(desk.folder.content("saved"), content) << path;
        ++opened;
    }
    EXPECT_GE(opened, 5);
}

template<class Document>
class RandomDocuments : public testing::Test {};
TYPED_TEST_SUITE(RandomDocuments, EveryDocument);

TYPED_TEST(RandomDocuments, SurviveSavingOpeningUndoingAndRedoing) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        Worker<TypeParam> worker;
        History& history = worker.history;
        Random random(seed);
        const auto expectSoundAfter = [&](auto act) {
            act();
            worker.expectSound();
            EXPECT_EQ(worker.kept(), history.isJournalUpToDate() ? worker.whole() : "");
        };
        for (int i = 0; i < 25; ++i)
            expectSoundAfter([&] { worker.act(random); });
        const std::string path = worker.place->path() / "d";
        worker.person.files = {path};
        ASSERT_TRUE(history.SaveHistoryAs());
        const std::string saved = worker.whole();
        worker.act(random); // which is given up
        worker.person.answers = {Answer::No};
        ASSERT_TRUE(history.OpenHistory(path)) << seed << worker.person.takeMessage();
        EXPECT_EQ(worker.kept(), "");
        const int position = history.position();
        while (history.position() > 0)
            expectSoundAfter([&] { history.Undo(true); });
        ASSERT_EQ(stateOf(worker.document), stateOf(Worker<TypeParam>().document));
        while (history.position() < position)
            expectSoundAfter([&] { history.Redo(true); });
        history.SaveHistory();
        ASSERT_EQ(worker.place->content("d"), saved) << seed;
        if (this->HasFailure())
            FAIL() << "seed " << seed;
    }
}

} // namespace
} // namespace corvane
