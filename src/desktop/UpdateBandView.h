#pragma once

#include "update/SoftwareUpdateBand.h"

#include <QBoxLayout>
#include <QWidget>

class QLabel;

namespace corvane {

/// The update band's looks. The main window places it.
class UpdateBandView final : public QWidget {
  public:
    UpdateBandView(SoftwareUpdateBand& band, QWidget* parent);

    /// Lays it out for a width in pixels, and tells the band how high that makes it.
    void fitTo(int width);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    SoftwareUpdateBand& band_;
    QWidget* main_;
    QLabel* notify_;
    QWidget* buttons_;
    QBoxLayout* buttonRow_;
    QBoxLayout* row_;
    int fitted_ = 0; // pixels
};

} // namespace corvane
