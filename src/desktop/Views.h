#pragma once

#include "link/ProductControl.h"

class QWidget;

namespace corvane {

/// The view of a product control, which must outlive it. An empty widget for a control that has no
/// view.
[[nodiscard]] QWidget* MakeView(ProductControl& control, QWidget* parent);

} // namespace corvane
