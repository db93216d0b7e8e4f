#include "desktop/ListDialog.h"

#include "desktop/QtDialogs.h"
#include "support/Screen.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace corvane {
namespace {

const ListQuestion LostOnes{"Corvane",
                            "Which changes would you like to get back?\r\nThe others are kept.",
                            {{"landing.lumora, 2026-03-01 17:20, 12 changes", true},
                             {"New document (Pactor), 2026-03-01 17:21, 2 changes"},
                             {"Damaged: 1-3.journal, 2026-03-01 17:22", false, false}},
                            "Get Back"};

void pressIn(const ListDialog& dialog, const char* caption) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == caption)
            return QTest::mouseClick(button, Qt::LeftButton);
    FAIL() << caption;
}

TEST(ListDialogTest, APersonTicksWithTheKeyboard) {
    QtDialogs dialogs;
    whenShown<ListDialog>([](ListDialog& dialog) {
        auto* list = dialog.findChild<QListWidget*>();
        EXPECT_FALSE(list->accessibleName().isEmpty());
        QTest::keyClick(list, Qt::Key_Home);
        QTest::keyClick(list, Qt::Key_Space);
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Space);
        pressIn(dialog, "Get Back");
    });
    EXPECT_EQ(dialogs.PickFromList(LostOnes), (std::vector<bool>{false, true, false}));
    whenShown<ListDialog>([](ListDialog& dialog) { pressIn(dialog, "Get Back"); });
    EXPECT_EQ(dialogs.PickFromList(LostOnes), (std::vector<bool>{true, false, false}));
    whenShown<ListDialog>([](ListDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(dialogs.PickFromList(LostOnes), std::nullopt);
    whenShown<ListDialog>([](ListDialog& dialog) {
        EXPECT_EQ(dialog.findChildren<QPushButton*>().size(), 1);
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    EXPECT_EQ(dialogs.PickFromList({"Corvane", "Damaged.", {LostOnes.items.back()}, "OK"}),
              std::vector<bool>{false});
}

} // namespace
} // namespace corvane
