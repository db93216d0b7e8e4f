#include "desktop/pwm/QuillonView.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"
#include "desktop/pwm/ConfigurationDialog.h"
#include "desktop/pwm/ProgramCurve.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QPainter>
#include <QPushButton>

namespace corvane {

namespace {

/// Shows text that may change thousands of times before it is painted once.
class LiveLabel final : public QWidget {
  public:
    LiveLabel(Label& child, const char* widest, Qt::Alignment alignment, QWidget* parent)
        : QWidget(parent), child_(child), alignment_(alignment) {
        setFixedHeight(fontMetrics().height());
        setMinimumWidth(fontMetrics().horizontalAdvance(widest));
        setToolTip(QString::fromStdString(child.ToolTipText()));
        On(this, child.Changed, [this] { update(); });
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        const QString text = QString::fromStdString(child_.Caption());
        setAccessibleName(text);
        QPainter(this).drawText(rect(), static_cast<int>(alignment_), text);
    }

  private:
    Label& child_;
    Qt::Alignment alignment_;
};

} // namespace

QuillonView::QuillonView(QuillonControl& control, QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::Spacing, Theme::Spacing / 2, Theme::Spacing, Theme::Spacing);
    layout->setSpacing(Theme::Spacing / 2);
    for (std::size_t index = 0; index < QuillonControl::SlotCount; ++index)
        layout->addWidget(makeSlot(control.slot(index)), 1);
    On(this, control.ConfigurationShown, [this](QuillonControllerConfiguration& configuration) {
        (new ConfigurationDialog(configuration, window()))->show();
    });
}

QWidget* QuillonView::makeSlot(QuillonSlot& slot) {
    auto* frame = new QGroupBox(this);
    Follow(frame, slot.ProgramFrame, [frame, &slot] {
        frame->setTitle(QString::fromStdString(slot.ProgramFrame.Caption()).replace("&", "&&"));
    });
    auto* grid = new QGridLayout(frame);
    grid->setContentsMargins(Theme::Spacing, Theme::Spacing / 2, Theme::Spacing,
                             Theme::Spacing / 2);
    grid->setSpacing(Theme::Spacing / 2);
    auto* curve = new ProgramCurve(slot.program, frame);
    curve->setObjectName(QString::number(slot.index));
    grid->addWidget(curve, 0, 0, 1, 2);
    grid->addWidget(new LiveLabel(slot.ProgramInfo, "0000.00 seconds", Qt::AlignLeft, frame), 1, 0);
    grid->addWidget(new LiveLabel(slot.ProgramProgress, "100%", Qt::AlignRight, frame), 1, 1);
    const QString number = " program " + QString::number(slot.index + 1);
    int place = 0;
    for (const auto& [child, name] :
         {std::pair(&slot.DownloadButton, "Download"), std::pair(&slot.OpenButton, "Load"),
          std::pair(&slot.UploadButton, "Upload"), std::pair(&slot.SaveButton, "Save")}) {
        QPushButton* button = MakeButton(*child, frame);
        button->setAccessibleName(name + number);
        grid->addWidget(button, 2 + place / 2, place % 2);
        ++place;
    }
    grid->setRowStretch(0, 1);
    return frame;
}

} // namespace corvane
