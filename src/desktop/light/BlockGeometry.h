#pragma once

#include "light/LumoraTrackEditor.h"

#include <QRect>

namespace corvane {

/// Where the parts of one segment's block stand on the canvas, in pixels. Parts that do not show
/// are empty.
struct BlockGeometry {
    QRect block;
    QRect handle;   ///< For dragging the width.
    QRect panel;    ///< Holds what follows.
    QRect gradient; ///< For dragging the brightness.
    QRect function; ///< The label that opens the function menu.
    QRect brightness;
    QRect brightness2;
    QRect time;
    bool boxes = false; ///< The boxes can be used.

    /// `left` and `right` are the block's edges on the canvas, in pixels.
    static BlockGeometry of(const LumoraTrackElement& element, int left, int right, int top,
                            int height);
};

} // namespace corvane
