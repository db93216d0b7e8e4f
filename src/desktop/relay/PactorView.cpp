#include "desktop/relay/PactorView.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/TripPointView.h"
#include "desktop/Widgets.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>

namespace corvane {

namespace {

constexpr int Narrow = Theme::Spacing / 2;

/// A light-emitting diode that shines in the colour of its child, black for dark.
class Led final : public QWidget {
  public:
    Led(PictureBox& child, QWidget* parent) : QWidget(parent), child_(child) {
        setFixedSize(56, 56);
        Follow(this, child, [this] {
            setToolTip(QString::fromStdString(child_.ToolTipText()));
            setAccessibleName(toolTip());
            update();
        });
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor color = Theme::fromRgb(child_.BackColor());
        const QRectF lens = QRectF(rect()).adjusted(12, 12, -12, -12);
        if (child_.BackColor() != 0) {
            QRadialGradient glow(lens.center(), width() / 2.0);
            glow.setColorAt(0, color);
            QColor faint = color;
            faint.setAlpha(0);
            glow.setColorAt(1, faint);
            painter.fillRect(rect(), glow);
        }
        QRadialGradient glass(lens.center() - QPointF(5, 6), lens.width());
        glass.setColorAt(0, child_.BackColor() == 0 ? QColor(90, 90, 90) : color.lighter(190));
        glass.setColorAt(0.5, color);
        painter.setBrush(glass);
        painter.setPen(QPen(palette().color(QPalette::Mid), 1.5));
        painter.drawEllipse(lens);
    }

  private:
    PictureBox& child_;
};

/// "Relay:  o On  o Off"
void addPair(QGridLayout& grid, const QString& name, OptionButton& on, OptionButton& off,
             QGroupBox* frame) {
    const int row = grid.rowCount();
    auto* label = new QLabel(name + ":", frame);
    grid.addWidget(label, row, 0);
    auto* group = new QButtonGroup(frame);
    int column = 0;
    for (OptionButton* option : {&on, &off}) {
        auto* button = new QRadioButton(frame);
        Bind(button, *option);
        button->setAccessibleName(frame->title() + ", " + name + " " + button->text());
        group->addButton(button);
        grid.addWidget(button, row, ++column);
    }
}

} // namespace

PactorView::PactorView(PactorControl& control, QWidget* parent) : QWidget(parent) {
    auto* bar = new QTabBar(this);
    bar->setAccessibleName("Settings or simulator");
    bar->setExpanding(false);
    Bind(bar, control.tabs);
    auto* pages = new QHBoxLayout;
    pages->setSpacing(Theme::Spacing);
    pages->addWidget(makeSettings(control), 1);
    pages->addWidget(makeSimulator(control), 1);
    pages->addWidget(new TripPointView(control.tripPoint, this));
    auto* buttons = MakeRow(
        {MakeButton(control.ReadSettingsButton, this), MakeButton(control.ProgramButton, this)});
    buttons->addStretch();
    auto* status = MakeLabel(control.ProgrammingLabel, this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::Spacing, Narrow, Theme::Spacing, Narrow);
    layout->setSpacing(Narrow);
    layout->addWidget(bar);
    layout->addLayout(pages, 1);
    layout->addLayout(buttons);
    layout->addWidget(status);
}

QWidget* PactorView::makeSettings(PactorControl& control) {
    auto* page = new QWidget(this);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Narrow);
    for (std::size_t slot = 0; slot < control.OptionFrame.size(); ++slot) {
        auto* frame =
            new QGroupBox(QString::fromStdString(control.OptionFrame[slot].Caption()), page);
        auto* grid = new QGridLayout(frame);
        grid->setContentsMargins(Theme::Spacing, Narrow, Theme::Spacing, Narrow);
        grid->setVerticalSpacing(0);
        grid->setColumnMinimumWidth(0, frame->fontMetrics().horizontalAdvance("Indicator LED:  "));
        grid->setColumnStretch(3, 1);
        if (2 * slot < control.optIndicator.size())
            addPair(*grid, "Indicator LED", control.optIndicator[2 * slot],
                    control.optIndicator[2 * slot + 1], frame);
        addPair(*grid, "Relay", control.optRelay[2 * slot], control.optRelay[2 * slot + 1], frame);
        layout->addWidget(frame);
    }
    auto* hysteresis = MakeRow({new QLabel("Hysteresis: +/-", page),
                                MakeNumberBox(control.Hysteresis, "Hysteresis in percent", page),
                                new QLabel("%", page)});
    hysteresis->addStretch();
    layout->addLayout(hysteresis);
    layout->addStretch();
    BindWidget(page, control.SettingsTab);
    return page;
}

QWidget* PactorView::makeSimulator(PactorControl& control) {
    auto* page = new QWidget(this);
    auto* led = new Led(control.SimulatorRelay.IndicatorPicture, page);
    auto* relay = MakeLabel(control.SimulatorRelay.RelayLabel, page);
    relay->setAlignment(Qt::AlignCenter);
    relay->setFrameShape(QFrame::StyledPanel);
    relay->setFixedSize(relay->fontMetrics().horizontalAdvance("RELAY OFF") + 4 * Theme::Spacing,
                        relay->fontMetrics().height() + 2 * Theme::Spacing);
    Bind(page, control.SimulatorRelay.TimerBlink);
    auto* loss = new QCheckBox(page);
    Bind(loss, control.SimulateLossOfSignalCheck);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::Spacing);
    layout->addStretch();
    layout->addWidget(led, 0, Qt::AlignHCenter);
    layout->addWidget(relay, 0, Qt::AlignHCenter);
    layout->addStretch();
    layout->addWidget(loss);
    BindWidget(page, control.SimulatorTab);
    return page;
}

} // namespace corvane
