#pragma once

#include "support/Hands.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QTabBar>
#include <gtest/gtest.h>

#include <functional>

namespace corvane {

/// Begins every drag that can be begun in a part of a window, at places close enough together to
/// hit each handle, and gives it up: by Escape before the button is released, and by a click of the
/// right button in the middle. Nothing may come of it: `document` stays the same, and nothing is
/// stuck. Buttons and tabs are clicked, not dragged.
inline void giveUpEveryDrag(const Hands& hands, QWidget& part,
                            const std::function<std::string()>& document) {
    constexpr QPoint steps(13, 26); // pixels
    constexpr QPoint far(57, -38);
    const std::string before = document();
    const auto widgetAt = [&part](QPoint at) -> QWidget* {
        QWidget* widget = part.childAt(at);
        const bool clicked = qobject_cast<QAbstractButton*>(widget) != nullptr ||
                             qobject_cast<QTabBar*>(widget) != nullptr ||
                             qobject_cast<QComboBox*>(widget) != nullptr;
        return clicked || widget == nullptr || !widget->isEnabled() ? nullptr : widget;
    };
    const auto expectNothing = [&](const char* what, QPoint at) {
        hands.moveTo(part, at + QPoint(3, 5));
        EXPECT_EQ(QWidget::mouseGrabber(), nullptr);
        ASSERT_EQ(document(), before) << what << " at " << at.x() << ", " << at.y();
    };
    for (int y = steps.y() / 2; y < part.height(); y += steps.y())
        for (int x = steps.x() / 2; x < part.width(); x += steps.x()) {
            const QPoint at(x, y);
            if (widgetAt(at) == nullptr)
                continue;
            hands.startDrag(part, at, at + far);
            hands.key(Qt::Key_Escape);
            hands.moveTo(part, at - far);
            hands.release(part, at - far);
            ASSERT_NO_FATAL_FAILURE(expectNothing("Escape", at));
            if (widgetAt(at) == nullptr)
                continue;
            hands.startDrag(part, at, at + far);
            if (qobject_cast<QLineEdit*>(widgetAt(at)) == nullptr) { // which has a menu of its own
                hands.press(part, at + far, Qt::RightButton);
                hands.release(part, at + far, Qt::RightButton);
                while (QWidget* menu = QApplication::activePopupWidget())
                    menu->close(); // where nothing is dragged
            }
            hands.moveTo(part, at - far);
            hands.release(part, at - far);
            ASSERT_NO_FATAL_FAILURE(expectNothing("a right click", at));
        }
}

} // namespace corvane
