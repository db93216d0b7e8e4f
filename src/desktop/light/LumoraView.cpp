#include "desktop/light/LumoraView.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/TripPointView.h"
#include "desktop/Widgets.h"
#include "desktop/light/ProgrammingDialog.h"
#include "desktop/light/SimulatorView.h"
#include "desktop/light/TracksCanvas.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProxyStyle>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>

namespace corvane {

namespace {

/// Draws tabs close enough together that all nine fit into the usual window.
class CloseTabs final : public QProxyStyle {
  public:
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option,
                                  const QWidget* widget) const override {
        return metric == PM_TabBarTabHSpace ? 2 * Theme::Spacing
                                            : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

/// A patch of a light's colour.
class ColorSample final : public QWidget {
  public:
    ColorSample(Label& child, QWidget* parent) : QWidget(parent), child_(child) {
        setFixedSize(34, 20);
        setAccessibleName("Light colour");
        Follow(this, child, [this] {
            update();
            setToolTip("Colour " + Theme::fromRgb(child_.ForeColor()).name());
        });
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), Theme::fromRgb(child_.ForeColor()));
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }

  private:
    Label& child_;
};

} // namespace

LumoraView::LumoraView(LumoraControl& control, QWidget* parent) : QWidget(parent) {
    auto* tabs = new QTabBar(this);
    auto* style = new CloseTabs;
    style->setParent(tabs);
    tabs->setStyle(style);
    tabs->setElideMode(Qt::ElideNone);
    tabs->setExpanding(false);
    tabs->setDrawBase(true);
    tabs->setAccessibleName("Channels and views");
    Bind(tabs, control.TabStrip1);

    auto* tracks = new QWidget(this);
    canvas_ = new TracksCanvas(control, tracks);
    auto* scroll = new QScrollBar(Qt::Horizontal, tracks);
    scroll->setAccessibleName("Time");
    Bind(scroll, control.tracks.HScroll);
    auto* stacked = new QVBoxLayout(tracks);
    stacked->setContentsMargins(0, 0, 0, 0);
    stacked->setSpacing(0);
    stacked->addWidget(canvas_, 1);
    stacked->addWidget(scroll);
    BindWidget(tracks, control.TracksFrame);

    QWidget* transmitter = makeTransmitter(control.options);
    auto* empty = new QWidget(this); // keeps the height where there is nothing else
    Follow(empty, control.options.TransmitterFrame,
           [empty, &control] { empty->setVisible(control.options.TransmitterFrame.Visible()); });
    simulator_ = new SimulatorView(control.simulatorControl, this);
    BindWidget(simulator_, control.SimulatorFrame);

    auto* main = new QVBoxLayout;
    main->setSpacing(Theme::Spacing);
    main->addWidget(tracks, 1);
    main->addWidget(simulator_, 1);
    main->addWidget(transmitter, 0, Qt::AlignLeft);
    main->addWidget(empty, 1);
    auto* middle = new QHBoxLayout;
    middle->setSpacing(Theme::Spacing);
    middle->addLayout(main, 1);
    middle->addWidget(new TripPointView(control.tripPoint, this));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::Spacing, Theme::Spacing / 2, Theme::Spacing, Theme::Spacing);
    layout->setSpacing(Theme::Spacing);
    layout->addWidget(tabs);
    layout->addLayout(middle, 1);
    layout->addWidget(makeOptions(control));
    layout->addWidget(makeTools(control)); // at the bottom, so that it stays where it is
    auto* debugging = MakeRow(
        {MakeButton(control.DebugButton, this), MakeButton(control.DebugDisconnectButton, this)});
    debugging->addStretch();
    layout->addLayout(debugging);
    On(this, control.ProgrammingShown,
       [this](LumoraProgramming& run) { (new ProgrammingDialog(run, window()))->show(); });
}

QWidget* LumoraView::makeTools(LumoraControl& control) {
    auto* tools = new QWidget(this);
    auto* layout = new QHBoxLayout(tools);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::Spacing / 2);
    for (Button* child : {&control.AddButton, &control.InsertButton, &control.DeleteButton})
        layout->addWidget(MakeToolButton(*child, tools));
    layout->addSpacing(2 * Theme::Spacing);
    for (Button* child :
         {&control.ZoomInButton, &control.ZoomOutButton, &control.ZoomToFitButton}) {
        QPushButton* zoom = MakeToolButton(*child, tools);
        zoom->setFocusPolicy(Qt::TabFocus); // a click leaves the focus in the tracks
        layout->addWidget(zoom);
    }
    layout->addStretch();
    layout->addWidget(MakeLabel(control.BlockCountLabel, tools));
    layout->addSpacing(Theme::Spacing);
    layout->addWidget(MakeToolButton(control.ProgramButton, tools));
    return tools;
}

QWidget* LumoraView::makeOptions(LumoraControl& control) {
    LumoraOptions& options = control.options;
    auto* all = new QWidget(this);
    auto* layout = new QHBoxLayout(all);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::Spacing);

    auto* usual = new QGroupBox(all);
    usual->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    auto* usualRows = new QVBoxLayout(usual);
    usualRows->addLayout(MakeRow({new QLabel("Light Color:", usual),
                                  new ColorSample(options.ChannelLightColorSample, usual),
                                  MakeButton(options.ChangeLightColorButton, usual)}));
    auto* current =
        MakeRow({MakeLabel(options.MaxCurrentLabel, usual),
                 MakeNumberBox(options.ChannelMaxCurrent, "Maximum current in mA", usual),
                 MakeLabel(options.MaxCurrentUnit, usual)});
    current->addStretch();
    usualRows->addLayout(current);
    usualRows->addStretch();
    BindWidget(usual, options.OptionsFrame);

    auto* more = MakeButton(control.AdvancedButton, all); // before what the Tab key reaches next
    auto* advanced = new QGroupBox(all);
    advanced->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    auto* advancedRows = new QVBoxLayout(advanced);
    auto* levels =
        MakeRow({new QLabel("Turn Off Below:", advanced),
                 MakeNumberBox(options.ChannelTurnOffPoint, "Turn off below, percent", advanced),
                 new QLabel("%", advanced)});
    levels->addSpacing(2 * Theme::Spacing);
    for (QWidget* widget : std::initializer_list<QWidget*>{
             new QLabel("Hysteresis: +/-", advanced),
             MakeNumberBox(options.ChannelHysteresis, "Hysteresis, percent", advanced),
             new QLabel("%", advanced)})
        levels->addWidget(widget);
    levels->addStretch();
    advancedRows->addLayout(levels);
    auto* top = new QRadioButton(advanced);
    Bind(top, options.ChannelNoSignalTopTrack);
    auto* bottom = new QRadioButton(advanced);
    Bind(bottom, options.ChannelNoSignalBottomTrack);
    auto* noSignal = MakeRow({new QLabel("No Signal Default:", advanced), top, bottom});
    noSignal->addStretch();
    advancedRows->addLayout(noSignal);
    advancedRows->addStretch();
    BindWidget(advanced, options.AdvancedOptionsFrame);

    // Other tabs have the room for their tracks.
    Follow(all, options.OptionsFrame,
           [all, &options] { all->setVisible(options.OptionsFrame.Visible()); });
    layout->addWidget(usual);
    layout->addWidget(more, 0, Qt::AlignVCenter);
    layout->addWidget(advanced);
    layout->addStretch();
    return all;
}

QWidget* LumoraView::makeTransmitter(LumoraOptions& options) {
    auto* frame = new QGroupBox(this);
    auto* layout = new QVBoxLayout(frame);
    auto* range = MakeRow(
        {new QLabel("Range:", frame),
         MakeNumberBox(options.TransmitterRangeMin, "Shortest pulse in microseconds", frame),
         new QLabel("-", frame),
         MakeNumberBox(options.TransmitterRangeMax, "Longest pulse in microseconds", frame),
         new QLabel("µs", frame)});
    range->addSpacing(2 * Theme::Spacing);
    range->addWidget(MakeButton(options.TransmitterRangeResetButton, frame));
    layout->addLayout(range);
    BindWidget(frame, options.TransmitterFrame);
    return frame;
}

} // namespace corvane
