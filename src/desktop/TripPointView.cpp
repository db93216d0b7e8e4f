#include "desktop/TripPointView.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace corvane {

TripPointView::TripPointView(TripPointControl& control, QWidget* parent) : QWidget(parent) {
    auto* label = new QLabel(this);
    label->setAlignment(Qt::AlignHCenter);
    Bind(label, control.TripPointLabel);
    auto* slider = new UpsideDownSlider(control.TripPointSlider, this);
    slider->setTickPosition(QSlider::TicksBothSides);
    slider->setTickInterval(10);
    slider->setPageStep(10);
    auto* value = new Box(control.TripPointValue, {}, this);
    value->setAlignment(Qt::AlignRight);
    value->setFixedWidth(value->fontMetrics().horizontalAdvance("0000") + 2 * Theme::Spacing);
    auto* percent = new QLabel("%", this);
    Follow(this, control.TripPointLabel, [label, slider, value] {
        const QString name = label->text().chopped(1);
        slider->setAccessibleName(name);
        value->setAccessibleName(name + " in percent");
    });
    BindWidget(this, control.TripPointFrame);

    auto* number = new QHBoxLayout;
    number->setSpacing(3);
    number->addStretch();
    number->addWidget(value);
    number->addWidget(percent);
    number->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(slider, 1, Qt::AlignHCenter);
    layout->addLayout(number);
    setFixedWidth(std::max(57, sizeHint().width())); // the label's text must not move the rest
    setMinimumWidth(fontMetrics().horizontalAdvance("Trip Point:") + Theme::Spacing);
    setMaximumWidth(std::max(57, minimumWidth()));
}

} // namespace corvane
