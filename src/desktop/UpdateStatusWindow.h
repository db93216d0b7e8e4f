#pragma once

#include "update/UpdateStatusForm.h"

#include <QDialog>

namespace corvane {

/// The looks of the window that tells how it stands with updates.
class UpdateStatusWindow final : public QDialog {
  public:
    UpdateStatusWindow(UpdateStatusForm& form, QWidget* parent);

    void done(int result) override;

  private:
    UpdateStatusForm& form_;
};

} // namespace corvane
