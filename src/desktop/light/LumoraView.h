#pragma once

#include "light/LumoraControl.h"

#include <QWidget>

namespace corvane {

class TracksCanvas;

/// The light editor's screen.
class LumoraView final : public QWidget {
  public:
    LumoraView(LumoraControl& control, QWidget* parent);

    [[nodiscard]] TracksCanvas& canvas() { return *canvas_; }

  private:
    [[nodiscard]] QWidget* makeTools(LumoraControl& control);
    [[nodiscard]] QWidget* makeOptions(LumoraControl& control);
    [[nodiscard]] QWidget* makeTransmitter(LumoraOptions& options);

    TracksCanvas* canvas_;
};

} // namespace corvane
