#include "desktop/UpdateBandView.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>

namespace corvane {

UpdateBandView::UpdateBandView(SoftwareUpdateBand& band, QWidget* parent) : QWidget(parent) {
    constexpr int twipsPerPixel = 15;
    for (Timer* timer : {&band.SoftwareUpdateTimer, &band.DownloadHideTimer, &band.AnimationTimer})
        Bind(this, *timer);
    auto* main = new QWidget(this);
    main->setFixedHeight(SoftwareUpdateBand::MainHeight / twipsPerPixel);
    QLabel* notify = MakeLabel(band.NotifyLabel, main);
    notify->setWordWrap(true);
    auto* choice = new QWidget(main);
    auto* choiceRow = new QHBoxLayout(choice);
    choiceRow->setContentsMargins(0, 0, 0, 0);
    choiceRow->setSpacing(Theme::Spacing / 2);
    choiceRow->addWidget(MakeToolButton(band.YesButton, choice));
    choiceRow->addWidget(MakeToolButton(band.NoButton, choice));
    BindWidget(choice, band.YesNoButtons);
    auto* row = new QHBoxLayout(main);
    row->setContentsMargins(Theme::Spacing, 0, Theme::Spacing, 0);
    row->setSpacing(Theme::Spacing);
    row->addWidget(notify, 1);
    row->addWidget(choice);
    row->addWidget(MakeToolButton(band.RestartButton, main));
    row->addWidget(MakeToolButton(band.DetailsButton, main));

    auto* log = new QPlainTextEdit(this);
    log->setReadOnly(true);
    log->setAccessibleName("What is new");
    log->setTabChangesFocus(true);
    BindWidget(log, band.DetailsRegion);
    Follow(log, band.ChangeLogText, [log, &band] {
        log->setPlainText(QString::fromStdString(band.ChangeLogText.Caption()));
    });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, Theme::Spacing / 2);
    layout->setSpacing(0);
    layout->addWidget(main);
    auto* details = new QHBoxLayout;
    details->setContentsMargins(Theme::Spacing, 0, Theme::Spacing, 0);
    details->addWidget(log);
    layout->addLayout(details, 1);
    layout->addStretch();
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    setObjectName("updateBand");
    hide();
}

void UpdateBandView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawLine(0, 0, width(), 0);
}

} // namespace corvane
