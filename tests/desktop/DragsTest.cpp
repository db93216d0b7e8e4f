// Every drag on every product's window, given up: nothing comes of it.
#include "support/Drags.h"

#include "pwm/QuillonControl.h"
#include "support/ProductWindow.h"

namespace corvane {
namespace {

/// The lines of all that is open in a window.
std::string lines(ProductDesk& desk) {
    std::string lines;
    if (auto* pwm = dynamic_cast<QuillonControl*>(desk.form.control())) {
        for (const std::size_t slot : {0U, 1U})
            EXPECT_TRUE(pwm->slot(slot).program.HistoryObject().Compose(lines));
    } else {
        EXPECT_TRUE(desk.form.HistoryObject()->Compose(lines));
    }
    return lines;
}

struct Product {
    const char* vendor;
    const char* file;
    const char* content;      // of the file
    std::vector<int> tabs{0}; // from 0, those that differ
};

class Drags : public testing::TestWithParam<Product> {};

TEST_P(Drags, ThatAreGivenUpLeaveNothing) {
    const Product& product = GetParam();
    ProductDesk desk(product.vendor);
    desk.open(desk.desk.folder.file(product.file, product.content));
    QWidget& view = *desk.window.view();
    auto* bar = view.findChild<QTabBar*>();
    for (const int tab : product.tabs) {
        if (bar != nullptr)
            desk.hands.click(*bar, bar->tabRect(tab).center());
        giveUpEveryDrag(desk.hands, view, [&desk] { return lines(desk); });
        ASSERT_FALSE(testing::Test::HasFatalFailure()) << "on tab " << tab;
    }
    // It can be saved, and another window opens it.
    const std::string before = lines(desk);
    desk.hands.key(Qt::Key_S, Qt::ControlModifier);
    ProductDesk other(product.vendor);
    other.open(desk.desk.folder.path() / product.file);
    EXPECT_EQ(lines(other), before);
}

/// A run of keys, a run of notches, a drag: each is one act at a slider, and one change.
TEST(Sliders, OneActIsOneChange) {
    for (const char* file : {"a.lumora", "a.relay"}) {
        ProductDesk desk;
        desk.open(desk.desk.folder.file(file, file == std::string("a.relay")
                                                  ? "Pactor\t0\t0\t0\t1\n"
                                                  : "Lumora\t0\t0\t0\t2\n"));
        const Hands& hands = desk.hands;
        const History& history = *desk.form.HistoryObject();
        auto& slider = *desk.window.view()->findChild<QSlider*>();
        auto& bar = *desk.window.view()->findChild<QTabBar*>();
        const QPoint handle = slider.rect().center(); // at 50
        hands.drag(slider, handle, handle + QPoint(0, 40));
        EXPECT_EQ(history.Length(), 1) << file;
        for (int i = 0; i < 5; ++i)
            hands.key(Qt::Key_Up);
        EXPECT_EQ(history.Length(), 1) << file;
        hands.key(Qt::Key_Tab);
        EXPECT_EQ(history.Length(), 2) << file;
        slider.setFocus();
        for (int i = 0; i < 3; ++i)
            hands.turnWheel(slider, handle, 120);
        hands.key(Qt::Key_Z, Qt::ControlModifier); // takes back the notches, which it ends
        EXPECT_EQ(history.Length(), 3) << file;
        EXPECT_EQ(history.position(), 2) << file;
        hands.key(Qt::Key_Down);
        hands.click(bar, bar.tabRect(1).center());
        EXPECT_EQ(history.Length(), 3) << file;
        EXPECT_EQ(history.position(), 3) << file;
    }
}

INSTANTIATE_TEST_SUITE_P(
    OfAllProducts, Drags,
    testing::Values(
        Product{"KO",
                "a.lumora",
                "Lumora\t3\t3\t0\t2\nLumoraTrackInsert2\t1\t0\t1\t100\t.8\t\t0\t2\t60\t1.1\t\t0\t3"
                "\t10\t.05\t\t0\t4\t90\t.9\tP\t10\nLumoraTrackInsert\t1\t1\t1\t30\t1\n"
                "LumoraTrackInsert\t5\t0\t1\t100\t1.2\t2\t0\t1.2\n",
                {0, 6, 7, 8}},
        Product{"KO", "a.relay", "Pactor\t1\t1\t0\t1\nPactorText\t0\tTrip Point\t50\t60\n", {0, 1}},
        Product{"KO", "a.ko_eeprom",
                "KOEEPROM\t2\t2\t0\t1\nKOEEPROMListAdd\t1\t2\t2\tspeed\t0102\tHex\n"
                "KOEEPROMListAdd\t2\t9\t2\tlight\t0102\tHex\n"},
        Product{"RQ", "a.Quillon", "Quillon\t1\t1\t0\t1\nQuillonPWM\t100\n"}),
    [](const auto& given) { return std::string(given.param.file).substr(2); });

} // namespace
} // namespace corvane
