#pragma once

#include "desktop/light/BlockGeometry.h"

#include <QFont>
#include <QPalette>
#include <QPen>

#include <initializer_list>

class QPainter;

namespace corvane {

/// What a block shows, apart from where.
struct BlockLook {
    const LumoraTrackElement* element = nullptr;
    int lightColor = 0;
    QString brightness;
    QString brightness2;
    QString time;
    int level1 = 0; ///< Percent, as in the boxes.
    int level2 = 0;
    bool marked = false;  ///< Shows that it is selected.
    bool focused = false; ///< Has the input focus.
};

/// Draws segments' blocks: their light, and on it the panel with the values.
class BlockPainter {
  public:
    BlockPainter(QPainter& painter, const QFont& font, const QPalette& palette)
        : painter_(painter), font_(font), palette_(palette) {}

    void draw(const BlockGeometry& geometry, const BlockLook& look);

  private:
    void drawLight(const BlockGeometry& geometry, const BlockLook& look);
    void drawFrame(const BlockGeometry& geometry, int inset, std::initializer_list<QPen> pens);
    /// The values as plain text, where there is no room for boxes.
    void drawValues(const BlockGeometry& geometry, const BlockLook& look);
    void drawHandle(const BlockGeometry& geometry);
    void drawPanel(const BlockGeometry& geometry, const BlockLook& look);
    void drawGradientControl(const QRect& rect, const BlockLook& look);
    void drawField(const QRect& rect, const QRect& panel, const QString& label,
                   const QString& text);

    [[nodiscard]] QFont fitting(const QString& text, int width) const;

    QPainter& painter_;
    QFont font_;
    QPalette palette_;
};

} // namespace corvane
