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

UpdateBandView::UpdateBandView(SoftwareUpdateBand& band, QWidget* parent)
    : QWidget(parent), band_(band), main_(new QWidget(this)), buttons_(new QWidget(main_)) {
    for (Timer* timer : {&band.SoftwareUpdateTimer, &band.DownloadHideTimer, &band.AnimationTimer})
        Bind(this, *timer);
    notify_ = MakeLabel(band.NotifyLabel, main_);
    notify_->setWordWrap(true);
    auto* choice = new QWidget(buttons_);
    auto* choiceRow = new QHBoxLayout(choice);
    choiceRow->setContentsMargins(0, 0, 0, 0);
    choiceRow->setSpacing(Theme::Spacing / 2);
    choiceRow->addWidget(MakeToolButton(band.YesButton, choice));
    choiceRow->addWidget(MakeToolButton(band.NoButton, choice));
    choiceRow->addWidget(MakeToolButton(band.SkipButton, choice));
    BindWidget(choice, band.YesNoButtons);
    buttonRow_ = new QBoxLayout(QBoxLayout::LeftToRight, buttons_);
    buttonRow_->setContentsMargins(0, 0, 0, 0);
    buttonRow_->setSpacing(Theme::Spacing);
    buttonRow_->addStretch();
    buttonRow_->addWidget(choice, 0, Qt::AlignRight);
    buttonRow_->addWidget(MakeToolButton(band.RestartButton, buttons_), 0, Qt::AlignRight);
    buttonRow_->addWidget(MakeToolButton(band.DetailsButton, buttons_), 0, Qt::AlignRight);
    row_ = new QBoxLayout(QBoxLayout::LeftToRight, main_);
    row_->setContentsMargins(Theme::Spacing, 0, Theme::Spacing, 0);
    row_->setSpacing(Theme::Spacing);
    row_->addWidget(notify_, 1);
    row_->addWidget(buttons_);
    const auto refit = [this] { fitTo(fitted_); };
    Follow(this, band.NotifyLabel, refit);
    Follow(this, band.YesNoButtons, refit);
    Follow(this, band.RestartButton, refit);

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
    layout->addWidget(main_);
    auto* details = new QHBoxLayout;
    details->setContentsMargins(Theme::Spacing, 0, Theme::Spacing, 0);
    details->addWidget(log);
    layout->addLayout(details, 1);
    layout->addStretch();
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base); // desktops may leave the other one of their dark colours out
    setObjectName("updateBand");
    hide();
}

void UpdateBandView::fitTo(int width) {
    constexpr int twipsPerPixel = 15;
    constexpr int usual = SoftwareUpdateBand::MainHeight / twipsPerPixel;
    fitted_ = width;
    if (width <= 0)
        return;
    // Beside its buttons if the text has room there in the usual height, or else above them.
    // And what is asked above the others if they have no room for their words in one row.
    const int wide = width - 2 * Theme::Spacing;
    buttonRow_->setDirection(QBoxLayout::LeftToRight);
    if (buttons_->sizeHint().width() > wide)
        buttonRow_->setDirection(QBoxLayout::TopToBottom);
    const QSize buttons = buttons_->sizeHint();
    const int beside = wide - buttons.width() - Theme::Spacing;
    const auto heightFor = [this](int room) {
        return room < fontMetrics().averageCharWidth() * 20 ? usual + 1
                                                            : notify_->heightForWidth(room);
    };
    const bool fits = heightFor(beside) <= usual;
    row_->setDirection(fits ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    const int margin = fits ? 0 : Theme::Spacing;
    row_->setContentsMargins(Theme::Spacing, margin, Theme::Spacing, margin);
    const int height =
        fits ? usual : notify_->heightForWidth(wide) + buttons.height() + 3 * Theme::Spacing;
    main_->setFixedHeight(height);
    band_.setMainHeight(height * twipsPerPixel);
}

void UpdateBandView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawLine(0, 0, width(), 0);
}

} // namespace corvane
