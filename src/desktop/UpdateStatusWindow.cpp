#include "desktop/UpdateStatusWindow.h"

#include "desktop/Binders.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvane {

UpdateStatusWindow::UpdateStatusWindow(UpdateStatusForm& form, QWidget* parent)
    : QDialog(parent), form_(form) {
    constexpr int width = 380; // pixels
    constexpr int lines = 4;   // so that nothing jumps when the text changes
    setWindowTitle(QString::fromStdString(form.Title()));
    setObjectName("updateStatus");
    Bind(this, form.LookTimer);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(3 * Theme::Spacing, 3 * Theme::Spacing, 3 * Theme::Spacing,
                               2 * Theme::Spacing);
    layout->setSpacing(Theme::Spacing);
    for (Label* label : {&form.StatusLabel, &form.NewsLabel}) {
        QLabel* text = MakeLabel(*label, this);
        text->setWordWrap(true);
        text->setFixedWidth(width);
        text->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(text);
    }
    layout->itemAt(0)->widget()->setMinimumHeight(lines * fontMetrics().lineSpacing());
    auto* ok = new QPushButton(this);
    Bind(ok, form.OKButton);
    ok->setDefault(true);
    ok->setFocus();
    layout->addWidget(ok, 0, Qt::AlignHCenter);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    On(this, form.Closed, [this] { close(); });
    On(this, form.FocusWanted, [this] {
        raise();
        activateWindow();
    });
}

void UpdateStatusWindow::done(int result) {
    QDialog::done(result);
    form_.close();
}

} // namespace corvane
