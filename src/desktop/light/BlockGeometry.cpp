#include "desktop/light/BlockGeometry.h"

#include "light/LumoraScrollableTracks.h"

namespace corvane {

namespace {

constexpr int pixels(int twips) {
    return twips / LumoraScrollableTracks::TwipsPerPixel;
}

constexpr int HandleWidth = pixels(SegmentBlock::HandleWidth);
constexpr int BoxesWidth = pixels(SegmentBlock::BoxesWidth);
constexpr int PanelWidth = pixels(SegmentBlock::PanelWidth);
constexpr int PanelHeight = pixels(SegmentBlock::PanelHeight);
constexpr int TallPanelHeight = pixels(SegmentBlock::TallPanelHeight);
constexpr int Margin = 4;
constexpr int FieldWidth = 40;
constexpr int FieldHeight = 21;
constexpr int FieldStep = 24;
constexpr int LabelHeight = 14;

} // namespace

BlockGeometry BlockGeometry::of(const LumoraTrackElement& element, int left, int right, int top,
                                int height) {
    BlockGeometry geometry;
    geometry.block = QRect(left, top, right - left, height);
    int room = geometry.block.width();
    if (room >= HandleWidth) {
        geometry.handle = QRect(right - HandleWidth, top, HandleWidth, height);
        room -= HandleWidth;
    }
    const bool tall =
        !element.functionCode().empty() && room >= BoxesWidth && height >= TallPanelHeight;
    const int panelHeight = tall ? TallPanelHeight : PanelHeight;
    if (room < PanelWidth || height < panelHeight)
        return geometry;
    geometry.boxes = room >= BoxesWidth && (tall || element.functionCode().empty());
    const int width = geometry.boxes ? BoxesWidth : PanelWidth;
    geometry.panel =
        QRect(left + (room - width) / 2, top + (height - panelHeight) / 2, width, panelHeight);
    const QRect inside = geometry.panel.adjusted(2, Margin, -Margin, -Margin);
    geometry.gradient = QRect(inside.left(), inside.top(), PanelWidth - 2, inside.height());
    if (!geometry.boxes)
        return geometry;
    int y = inside.top();
    if (tall) {
        geometry.function = QRect(geometry.gradient.right() + Margin, y,
                                  inside.right() - geometry.gradient.right() - Margin, LabelHeight);
        y += LabelHeight;
    }
    const auto field = [&] {
        const QRect place(inside.right() - FieldWidth + 1, y, FieldWidth, FieldHeight);
        y += FieldStep;
        return place;
    };
    geometry.brightness = field();
    if (tall)
        geometry.brightness2 = field();
    geometry.time = field();
    return geometry;
}

} // namespace corvane
