#include "desktop/LinkWindow.h"

#include <QVBoxLayout>

namespace corvane {

namespace {
constexpr int TickInterval = 50; // ms
}

LinkWindow::LinkWindow(KOCommLink& link, LinkStatus& status)
    : onChanged_(status.Changed.connect([this, &status] { show(status); })) {
    setWindowTitle("Corvane");
    resize(734, 518);

    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 2);
    headline_.setFont(large);
    headline_.setAccessibleName("Link");
    detail_.setAccessibleName("Link details");
    for (QLabel* label : {&headline_, &detail_}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(12);
    layout->addStretch();
    layout->addWidget(&headline_);
    layout->addWidget(&detail_);
    layout->addStretch();
    show(status);

    QObject::connect(&tmrUpdate_, &QTimer::timeout, this, [&link] { link.Update(); });
    tmrUpdate_.start(TickInterval);
}

void LinkWindow::show(const LinkStatus& status) {
    headline_.setText(QString::fromStdString(status.headline()));
    detail_.setText(QString::fromStdString(status.detail()));
}

} // namespace corvane
