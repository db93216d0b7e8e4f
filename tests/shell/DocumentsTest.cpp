#include "link/DefaultControl.h"
#include "shell/ProductTable.h"
#include "support/Desk.h"
#include "support/RandomEdits.h"
#include "system/File.h"

#include <gtest/gtest.h>

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

TEST(Products, HaveAControlAndDocumentsOfTheirOwn) {
    for (const char* vendor : {"KO", "RQ"}) {
        Desk desk({}, vendor);
        const ProductControls controls(desk.place, desk.keys);
        for (int row = 1; row <= desk.bench.products.Size(); ++row) {
            const KOProductProfile& product = desk.bench.products.ByIndex(row);
            EXPECT_EQ(dynamic_cast<DefaultControl*>(controls.create(product.Class).get()), nullptr)
                << product.Class;
            const auto history =
                MakeDocument(product.Class, {desk.person, desk.person, desk.files});
            ASSERT_NE(history, nullptr) << product.Class;
            EXPECT_EQ(history->TypeCode(), product.Name);
        }
    }
}

template<class Document>
class RandomDocuments : public testing::Test {};
using AllDocuments =
    testing::Types<LumoraDocument, PactorDocument, KOEEPROMDocument, QuillonProgram>;
TYPED_TEST_SUITE(RandomDocuments, AllDocuments);

TYPED_TEST(RandomDocuments, SurviveSavingOpeningUndoingAndRedoing) {
    Desk desk;
    const std::string path = desk.folder.path() / "d";
    const TypeParam fresh({desk.person, desk.person, desk.files});
    TypeParam document({desk.person, desk.person, desk.files});
    History& history = document.HistoryObject();
    for (unsigned seed = 1; seed <= 200; ++seed) {
        desk.person.answers = {Answer::No};
        history.NewHistory();
        Random random(seed);
        std::vector<std::string> states{stateOf(document)}; // by position
        for (int i = 0; i < 25; ++i) {
            editAtRandom(document, random);
            states.resize(static_cast<std::size_t>(history.position()));
            states.push_back(stateOf(document));
            if (random.below(5) == 0 && history.CanUndo())
                history.Undo(true);
        }
        const auto expectState = [&] {
            ASSERT_EQ(stateOf(document), states[static_cast<std::size_t>(history.position())])
                << seed;
        };
        desk.person.files = {path};
        ASSERT_TRUE(history.SaveHistoryAs());
        const std::string saved = desk.folder.content("d");
        ASSERT_TRUE(history.OpenHistory(path)) << seed << desk.person.takeMessage();
        ASSERT_NO_FATAL_FAILURE(expectState());
        const int position = history.position();
        while (history.position() > 0) {
            history.Undo(true);
            ASSERT_NO_FATAL_FAILURE(expectState());
        }
        ASSERT_EQ(stateOf(document), stateOf(fresh)) << seed;
        while (history.position() < position) {
            history.Redo(true);
            ASSERT_NO_FATAL_FAILURE(expectState());
        }
        history.SaveHistory();
        ASSERT_EQ(desk.folder.content("d"), saved) << seed;
    }
}

} // namespace
} // namespace corvane
