#include "shell/ProductDocuments.h"
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
        const auto document =
            ProductDocuments().create(product->Class, {desk.person, desk.person, desk.text});
        ASSERT_TRUE(document->history().OpenHistory(path)) << path;
        EXPECT_TRUE(document->history().CanUndo()) << path;
        desk.person.files = {desk.folder.path() / "saved"};
        ASSERT_TRUE(document->history().SaveHistoryAs());
        std::string content;
        ASSERT_EQ(desk.files.ReadWhole(path, content), FileDoor::ReadResult::Done);
        EXPECT_EQ(desk.folder.content("saved"), content) << path;
        ++opened;
    }
    EXPECT_GE(opened, 5);
}

} // namespace
} // namespace corvane
