#include "desktop/ProgrammerView.h"

#include "desktop/Binders.h"
#include "desktop/PictureButton.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvane {

ProgrammerView::ProgrammerView(ProgrammerControl& control, QWidget* parent) : QWidget(parent) {
    constexpr int logoSize = 112;
    auto* logo = MakeLogo(control.Logo, logoSize, this);
    auto* title = new QLabel("Corvane Programmer", this);
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    title->setFont(large);
    QPushButton* button = MakeButton(control.ProgramButton, this);
    button->setMinimumSize(180, 40);
    // One chip after another is programmed with the same key.
    Follow(button, control.ProgramButton, [button] {
        if (button->isEnabled())
            button->setFocus();
    });
    QLabel* state = MakeLabel(control.StateLabel, this);
    state->setMinimumHeight(state->fontMetrics().height());

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(2 * Theme::Spacing);
    layout->addStretch();
    for (QWidget* widget : std::initializer_list<QWidget*>{logo, title, button, state})
        layout->addWidget(widget, 0, Qt::AlignHCenter);
    layout->addStretch();
}

} // namespace corvane
