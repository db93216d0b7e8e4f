#pragma once

#include "light/LumoraProgramming.h"

#include <QDialog>

namespace corvane {

/// Shows one programming run beside the main window. It can be closed once the run is over.
class ProgrammingDialog final : public QDialog {
  public:
    ProgrammingDialog(LumoraProgramming& run, QWidget* parent);

  protected:
    void done(int result) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    LumoraProgramming* run_; // nothing once it has been confirmed
};

} // namespace corvane
