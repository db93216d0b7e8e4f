#pragma once

#include "pwm/QuillonControllerConfiguration.h"

#include <QDialog>

namespace corvane {

/// The window of the PWM product's setting. Deletes itself when it is closed.
class ConfigurationDialog final : public QDialog {
  public:
    ConfigurationDialog(QuillonControllerConfiguration& configuration, QWidget* parent);
};

} // namespace corvane
