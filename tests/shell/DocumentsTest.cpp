#include "link/DefaultControl.h"
#include "shell/ProductTable.h"
#include "support/Desk.h"
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

} // namespace
} // namespace corvane
