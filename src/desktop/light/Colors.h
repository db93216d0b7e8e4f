#pragma once

#include "base/KORgbValue.h"

#include <QColor>

namespace corvane {

/// A colour of the core, whose parts are 0 to 255, as the toolkit has it.
[[nodiscard]] inline QColor toQt(const KORgbValue& color) {
    return {color.R, color.G, color.B};
}

} // namespace corvane
