#include "desktop/Views.h"

#include "desktop/DefaultView.h"

namespace corvane {

QWidget* MakeView(ProductControl& control, QWidget* parent) {
    if (auto* start = dynamic_cast<DefaultControl*>(&control))
        return new DefaultView(*start, parent);
    return new QWidget(parent);
}

} // namespace corvane
