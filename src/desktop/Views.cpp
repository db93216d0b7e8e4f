#include "desktop/Views.h"

#include "desktop/DefaultView.h"
#include "desktop/light/LumoraView.h"

namespace corvane {

QWidget* MakeView(ProductControl& control, QWidget* parent) {
    if (auto* start = dynamic_cast<DefaultControl*>(&control))
        return new DefaultView(*start, parent);
    if (auto* light = dynamic_cast<LumoraControl*>(&control))
        return new LumoraView(*light, parent);
    return new QWidget(parent);
}

} // namespace corvane
