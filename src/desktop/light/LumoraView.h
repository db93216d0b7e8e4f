#pragma once

#include "light/LumoraControl.h"

#include <QWidget>

namespace corvane {

class SimulatorView;
class TracksCanvas;

/// The light editor's screen.
class LumoraView final : public QWidget {
  public:
    LumoraView(LumoraControl& control, QWidget* parent);

    [[nodiscard]] TracksCanvas& canvas() { return *canvas_; }
    [[nodiscard]] SimulatorView& simulator() { return *simulator_; }

  private:
    [[nodiscard]] QWidget* makeTools(LumoraControl& control);
    [[nodiscard]] QWidget* makeOptions(LumoraControl& control);
    [[nodiscard]] QWidget* makeTransmitter(LumoraOptions& options);

    TracksCanvas* canvas_;
    SimulatorView* simulator_;
};

} // namespace corvane
