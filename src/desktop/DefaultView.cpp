#include "desktop/DefaultView.h"

#include "desktop/Binders.h"
#include "desktop/PictureButton.h"
#include "desktop/Theme.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>

namespace corvane {

DefaultView::DefaultView(DefaultControl& control, QWidget* parent) : QWidget(parent) {
    constexpr int logoSize = 112;
    constexpr QSize productSize(180, 117);
    auto* logo = MakeLogo(control.Logo, logoSize, this);
    auto* lumora = new PictureButton(control.LumoraPicture, "lumora", productSize, "Lumora", this);
    auto* dervan =
        new PictureButton(control.DervanPicture, "relay", productSize, "Dervan/Maltrex", this);
    auto* please = new QLabel("Please plug in a supported Ortaline Works product, or choose one "
                              "from below:",
                              this);
    please->setWordWrap(true);
    please->setAlignment(Qt::AlignCenter);

    auto* pictures = new QHBoxLayout;
    pictures->setSpacing(4 * Theme::Spacing);
    pictures->addStretch();
    pictures->addWidget(lumora);
    pictures->addWidget(dervan);
    pictures->addStretch();
    auto* frame = new QGroupBox(this);
    frame->setMaximumWidth(620);
    auto* inside = new QVBoxLayout(frame);
    inside->setContentsMargins(3 * Theme::Spacing, 3 * Theme::Spacing, 3 * Theme::Spacing,
                               3 * Theme::Spacing);
    inside->setSpacing(3 * Theme::Spacing);
    inside->addWidget(please);
    inside->addLayout(pictures);

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(3 * Theme::Spacing);
    layout->addStretch();
    layout->addWidget(logo, 0, Qt::AlignHCenter);
    auto* centred = new QHBoxLayout;
    centred->addStretch();
    centred->addWidget(frame, 10);
    centred->addStretch();
    layout->addLayout(centred);
    layout->addStretch();
    lumora->setFocus();
}

} // namespace corvane
