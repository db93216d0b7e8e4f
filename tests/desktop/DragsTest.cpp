// Every drag on every product's window, given up: nothing comes of it.
#include "support/EveryProduct.h"

#include <QComboBox>
#include <QSlider>

namespace corvane {
namespace {

/// The lines of all that is open in a window.
std::string lines(const ProductDesk& desk) {
    std::string lines;
    for (History* history : desk.form.control()->Histories())
        EXPECT_TRUE(history->Compose(lines));
    return lines;
}

class Drags : public testing::TestWithParam<ProductUnderTest> {
  protected:
    ProductWalk walk{GetParam()};
    const std::string before = lines(walk);
    QWidget& view = *walk.window.view();

    /// Buttons, tabs and lists are clicked, not dragged.
    [[nodiscard]] QWidget* draggedAt(QPoint at) const {
        QWidget* widget = view.childAt(at);
        const bool clicked = qobject_cast<QAbstractButton*>(widget) != nullptr ||
                             qobject_cast<QTabBar*>(widget) != nullptr ||
                             qobject_cast<QComboBox*>(widget) != nullptr;
        return clicked || widget == nullptr || !widget->isEnabled() ? nullptr : widget;
    }
    void end(QPoint at, QPoint way, const char* what) {
        Hands::moveTo(view, at - way);
        Hands::release(view, at - way);
        Hands::moveTo(view, at + QPoint(3, 5));
        EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
        ASSERT_EQ(lines(walk), before) << what << " at " << at.x() << ", " << at.y();
    }
    /// By Escape before the button is released, and by a click of the right button in the middle.
    void giveUpAt(QPoint at) {
        constexpr QPoint way(57, -38);
        if (draggedAt(at) == nullptr)
            return;
        Hands::startDrag(view, at, at + way);
        Hands::key(Qt::Key_Escape);
        ASSERT_NO_FATAL_FAILURE(end(at, way, "Escape"));
        if (draggedAt(at) == nullptr)
            return;
        Hands::startDrag(view, at, at + way);
        if (qobject_cast<QLineEdit*>(draggedAt(at)) == nullptr) { // which has a menu of its own
            Hands::press(view, at + way, Qt::RightButton);
            Hands::release(view, at + way, Qt::RightButton);
            Hands::closeMenus(); // where nothing is dragged
        }
        end(at, way, "a right click");
    }
};

TEST_P(Drags, ThatAreGivenUpLeaveNothing) {
    if (before.empty())
        GTEST_SKIP() << "nothing is dragged here";
    walk.eachTab([this](const QString&) {
        // Close enough together to hit each handle.
        for (int y = 13; y < view.height(); y += 26)
            for (int x = 6; x < view.width(); x += 13)
                ASSERT_NO_FATAL_FAILURE(giveUpAt({x, y}));
    });
    // It can be saved, and another window opens it.
    Hands::key(Qt::Key_S, Qt::ControlModifier);
    ProductDesk other(GetParam().vendor);
    other.open(walk.file);
    EXPECT_EQ(lines(other), before);
}

INSTANTIATE_TEST_SUITE_P(OfEveryProduct, Drags, testing::ValuesIn(EveryProduct()), nameOfProduct);

/// A run of keys, a run of notches, a drag: each is one act at a slider, and one change.
TEST(Sliders, OneActIsOneChange) {
    for (const auto& [extension, typeCode] :
         {std::pair("lumora", "Lumora"), std::pair("relay", "Pactor")}) {
        SCOPED_TRACE(extension);
        ProductDesk desk;
        desk.openEmpty(extension, typeCode);
        const Hands& hands = desk.hands;
        const History& history = *desk.form.HistoryObject();
        auto& slider = *desk.window.view()->findChild<QSlider*>();
        const QPoint handle = slider.rect().center(); // at 50
        hands.drag(slider, handle, handle + QPoint(0, 40));
        EXPECT_EQ(history.Length(), 1);
        for (int i = 0; i < 5; ++i)
            hands.key(Qt::Key_Up);
        EXPECT_EQ(history.Length(), 1);
        hands.key(Qt::Key_Tab);
        EXPECT_EQ(history.Length(), 2);
        slider.setFocus();
        for (int i = 0; i < 3; ++i)
            hands.turnWheel(slider, handle, 120);
        hands.key(Qt::Key_Z, Qt::ControlModifier); // takes back the notches, which it ends
        EXPECT_EQ(history.Length(), 3);
        EXPECT_EQ(history.position(), 2);
        hands.key(Qt::Key_Down);
        hands.clickTab(*desk.window.view()->findChild<QTabBar*>(), 1);
        EXPECT_EQ(history.Length(), 3);
        EXPECT_EQ(history.position(), 3);
    }
}

} // namespace
} // namespace corvane
