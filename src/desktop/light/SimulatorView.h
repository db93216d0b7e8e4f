#pragma once

#include "desktop/PointerDrag.h"
#include "light/LumoraSimulatorControl.h"

#include <QImage>
#include <QWidget>

namespace corvane {

/// The simulator's picture: draws background and lights, and lets lights be dragged.
class SimulatorCanvas final : public QWidget {
  public:
    SimulatorCanvas(LumoraSimulatorControl& control, QWidget* parent);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void showMenu(int channel);
    void moveLight(QPoint point);
    void showLight(int channel);

    LumoraSimulatorControl& control_;
    PointerDrag drag_;
    QImage background_;
    std::array<QRect, LumoraDocument::ChannelCount> shown_; // where each light was last
    Connections on_;
};

/// The "Simulator" tab: the canvas, and what belongs to it below.
class SimulatorView final : public QWidget {
  public:
    SimulatorView(LumoraSimulatorControl& control, QWidget* parent);

    [[nodiscard]] SimulatorCanvas& canvas() { return *canvas_; }

  private:
    SimulatorCanvas* canvas_;
};

} // namespace corvane
