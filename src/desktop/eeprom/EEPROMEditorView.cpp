#include "desktop/eeprom/EEPROMEditorView.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"
#include "desktop/eeprom/EntryRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>

namespace corvane {

namespace {

/// The titles over the columns of the rows below.
class TitleRow final : public QWidget {
  public:
    TitleRow(EEPROMEditorControl& control, QWidget* parent) : QWidget(parent), control_(control) {
        setFixedHeight(titles_[0]->sizeHint().height());
        On(this, control.Rearranged, [this] { place(); });
    }

  protected:
    void resizeEvent(QResizeEvent*) override { place(); }

  private:
    void place() {
        constexpr int twipsPerPixel = 15;
        const auto columns = EntryColumns(control_.rowWidth() / twipsPerPixel, height());
        for (std::size_t i = 0; i < titles_.size(); ++i)
            titles_[i]->setGeometry(
                columns[i].translated(EEPROMEditorControl::RowLeft / twipsPerPixel, 0));
    }

    EEPROMEditorControl& control_;
    std::array<QLabel*, 4> titles_{new QLabel("Address", this), new QLabel("Length", this),
                                   new QLabel("Comments", this), new QLabel("Value", this)};
};

} // namespace

EEPROMEditorView::EEPROMEditorView(EEPROMEditorControl& control, QWidget* parent)
    : QWidget(parent) {
    auto* bar = new QTabBar(this);
    bar->setAccessibleName("Settings");
    bar->setExpanding(false);
    Bind(bar, control.tabs);
    auto* titles = new TitleRow(control, this);
    entries_ = new EntriesView(control, bar, this);
    auto* buttons = MakeRow({MakeButton(control.NewVariableButton, this)});
    buttons->addSpacing(2 * Theme::Spacing);
    buttons->addWidget(MakeButton(control.ReadSettingsButton, this));
    buttons->addWidget(MakeButton(control.ProgramButton, this));
    buttons->addSpacing(Theme::Spacing);
    buttons->addWidget(MakeLabel(control.ProgrammingLabel, this), 1);
    buttons->addWidget(MakeCutLabel(control.OverlapLabel, this), 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::Spacing, Theme::Spacing / 2, Theme::Spacing, Theme::Spacing);
    layout->setSpacing(Theme::Spacing / 2);
    layout->addWidget(bar);
    layout->addWidget(titles);
    layout->addWidget(entries_, 1);
    layout->addLayout(buttons);
}

} // namespace corvane
