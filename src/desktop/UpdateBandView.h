#pragma once

#include "update/SoftwareUpdateBand.h"

#include <QWidget>

namespace corvane {

/// The update band's looks. The main window places it.
class UpdateBandView final : public QWidget {
  public:
    UpdateBandView(SoftwareUpdateBand& band, QWidget* parent);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace corvane
