// How large the window is: never larger than its screen, never too small for what it shows, and as
// it was last left where a screen asks for no size.
#include "support/EveryProduct.h"

#include <QScreen>

namespace corvane {
namespace {

class WindowSize : public testing::TestWithParam<ProductUnderTest> {
  protected:
    static bool asksForASize(const ProductWalk& walk) {
        return walk.form.control()->GetSuggestedClientSize().has_value();
    }
    static void expectWholeOnScreen(const ProductWalk& walk) {
        EXPECT_TRUE(
            walk.window.screen()->availableGeometry().contains(walk.window.frameGeometry()));
    }
};

TEST_P(WindowSize, IsKeptAndFitsTheScreenAndWhatItShows) {
    TemporaryFolder folder;
    DiskFiles files;
    SettingsStore store(folder.path() / "windows", files);
    WindowSizes sizes(store);
    std::string control;
    QSize left;
    {
        ProductWalk walk(GetParam(), &sizes);
        expectWholeOnScreen(walk);
        if (const auto asked = walk.form.control()->GetSuggestedClientSize()) {
            const QSize wanted(asked->width / 15, asked->height / 15);
            EXPECT_EQ(walk.window.view()->size(), wanted);
            EXPECT_EQ(walk.window.view()->minimumSizeHint().expandedTo(wanted), wanted);
        }
        control = walk.form.interface().InterfaceClass();
        left = walk.window.view()->size() + QSize(24, 36);
        walk.window.resize(walk.window.size() + QSize(24, 36));
        QApplication::processEvents();
        EXPECT_EQ(walk.window.view()->size(), left);
        walk.window.close();
    }
    {
        ProductWalk walk(GetParam(), &sizes);
        EXPECT_EQ(walk.window.view()->size() == left, !asksForASize(walk));
        walk.window.resize(10, 10);
        QApplication::processEvents();
        const QSize least = walk.window.view()->minimumSizeHint();
        EXPECT_GE(walk.window.view()->width(), least.width());
        EXPECT_GE(walk.window.view()->height(), least.height());
        EXPECT_GT(least.height(), 60);
        // Which a window manager keeps to.
        const QSize told = walk.window.windowHandle()->minimumSize();
        EXPECT_EQ(told.expandedTo(least), told);
    }
    sizes.keep(control, {150000, 150000}); // of a screen that is gone
    ProductWalk walk(GetParam(), &sizes);
    expectWholeOnScreen(walk);
}

INSTANTIATE_TEST_SUITE_P(OfEveryProduct, WindowSize, testing::ValuesIn(EveryProduct()),
                         nameOfProduct);

} // namespace
} // namespace corvane
