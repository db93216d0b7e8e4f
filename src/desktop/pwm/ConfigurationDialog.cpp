#include "desktop/pwm/ConfigurationDialog.h"

#include "desktop/Binders.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"
#include "desktop/Widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace corvane {

ConfigurationDialog::ConfigurationDialog(QuillonControllerConfiguration& configuration,
                                         QWidget* parent)
    : QDialog(parent) {
    setWindowTitle("Controller Configuration");
    setAttribute(Qt::WA_DeleteOnClose);
    auto* receivers = MakeRow({new QLabel("Receiver Number:", this)});
    receivers->setSpacing(2 * Theme::Spacing);
    for (OptionButton& option : configuration.optReceiver) {
        auto* button = new QRadioButton(this);
        Bind(button, option);
        button->setAccessibleName("Receiver number " + button->text());
        receivers->addWidget(button);
    }
    receivers->addStretch();
    auto* ok = MakeButton(configuration.OKButton, this);
    ok->setDefault(true);
    auto* buttons = MakeRow({});
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(MakeButton(configuration.CancelButton, this));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2 * Theme::Spacing, 2 * Theme::Spacing, 2 * Theme::Spacing,
                               2 * Theme::Spacing);
    layout->setSpacing(2 * Theme::Spacing);
    layout->addLayout(receivers);
    layout->addLayout(buttons);
    On(this, configuration.Closed, [this] { close(); });
}

} // namespace corvane
