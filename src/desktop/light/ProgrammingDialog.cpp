#include "desktop/light/ProgrammingDialog.h"

#include "desktop/Binders.h"
#include "desktop/EventLoop.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace corvane {

ProgrammingDialog::ProgrammingDialog(LumoraProgramming& run, QWidget* parent)
    : QDialog(parent), run_(&run) {
    setWindowTitle(LumoraProgramming::Caption);
    setAttribute(Qt::WA_DeleteOnClose);
    auto* status = new QLabel(this);
    QFont bold = font();
    bold.setBold(true);
    status->setFont(bold);
    status->setWordWrap(true);
    status->setMinimumWidth(360);
    Bind(status, run.Status);
    auto* cure = new QLabel(this);
    cure->setWordWrap(true);
    Bind(cure, run.Cure);
    auto* values = new QFormLayout;
    values->setHorizontalSpacing(3 * Theme::Spacing);
    for (const auto& [name, value] : {std::pair("Segments Used", &run.SegmentsUsedLabel),
                                      std::pair("Segment Limit", &run.SegmentLimitLabel),
                                      std::pair("Memory in Use", &run.MemoryInUseLabel)})
        values->addRow(name, MakeLabel(*value, this));
    auto* bar = new QProgressBar(this);
    bar->setRange(0, 100);
    bar->setAccessibleName("Progress in percent");
    Follow(bar, run.Progress, [bar, &run] { bar->setValue(run.Progress.Value()); });
    auto* ok = new QPushButton(this);
    ok->setDefault(true);
    Bind(ok, run.OKButton);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(3 * Theme::Spacing, 2 * Theme::Spacing, 3 * Theme::Spacing,
                               2 * Theme::Spacing);
    layout->setSpacing(2 * Theme::Spacing);
    layout->addWidget(status);
    layout->addWidget(cure);
    layout->addLayout(values);
    layout->addWidget(bar);
    layout->addWidget(ok, 0, Qt::AlignRight);
    On(this, run.Refresh, [this] {
        repaint();
        RepaintWithoutInput();
    });
    On(this, run.Cure.Changed, [this] { adjustSize(); });
    On(this, run.Closed, [this] {
        run_ = nullptr;
        close();
    });
}

void ProgrammingDialog::done(int result) {
    if (run_ == nullptr)
        QDialog::done(result);
    else
        run_->OKButton.press(); // Escape is an OK, once there is one
}

void ProgrammingDialog::closeEvent(QCloseEvent* event) {
    if (run_ != nullptr && !run_->over())
        event->ignore();
    else
        QDialog::closeEvent(event);
}

} // namespace corvane
