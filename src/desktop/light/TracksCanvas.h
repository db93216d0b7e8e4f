#pragma once

#include "desktop/InputWidgets.h"
#include "desktop/PointerDrag.h"
#include "desktop/light/BlockPainter.h"
#include "light/LumoraControl.h"

#include <QWidget>

class QHelpEvent;
class QLabel;

namespace corvane {

/// The tracks as a picture that can be worked on: one widget for all blocks, of which only those
/// in view are drawn. The block with the focus has real boxes over it.
class TracksCanvas final : public QWidget {
  public:
    TracksCanvas(LumoraControl& control, QWidget* parent);

    /// The block that a test or a person points at: its parts, by track and segment from 1.
    [[nodiscard]] BlockGeometry geometryOf(int trackIndex, int elementIndex) const;
    [[nodiscard]] Box& brightnessBox() { return brightness_; }
    [[nodiscard]] Box& timeBox() { return time_; }

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    enum class Drag { None, Width, Brightness };
    /// What lies under a point.
    struct Hit {
        int track = 0;
        int element = 0;
        BlockGeometry geometry;
    };

    [[nodiscard]] Hit hitAt(QPoint point) const;
    [[nodiscard]] QRect trackRect(int trackIndex) const;
    [[nodiscard]] BlockLook lookOf(const LumoraTrackEditor& track, int elementIndex) const;
    void paintTrack(QPainter& painter, int trackIndex, const QRect& clip) const;
    void paintEmptyTrack(QPainter& painter, int trackIndex, const QRect& rect) const;
    void followFocus();
    void placeBoxes();
    void describe();
    void startDrag(const Hit& hit, QPoint point);
    void continueDrag(QPoint point);
    void endDrag();
    void cancelDrag();
    void showBubble(QPoint point, const QString& text);
    void showMenu(const Hit& hit, QPoint globalPoint);
    void showTip(const QHelpEvent& help);
    void edit(Box& box);
    void editFocused();
    [[nodiscard]] std::vector<Box*> boxesInUse();
    [[nodiscard]] bool walk(bool next);
    void leave(bool next);
    [[nodiscard]] SegmentBlock* block() const;
    [[nodiscard]] bool hasFocusInside() const;

    LumoraControl& control_;
    LumoraScrollableTracks& tracks_;
    Box brightness_{this};
    Box brightness2_{this};
    Box time_{this};
    QLabel* bubble_;
    SegmentBlock* shown_ = nullptr; // the block that the boxes show
    PointerDrag pointer_;
    Drag drag_ = Drag::None;
    bool dragMoves_ = false; // the pointer has moved far enough
    Hit dragged_;
    QPoint pressedAt_;
    int pressedX_ = 0; // from the handle, in twips
    double wheelSteps_ = 0;
    bool atTheEnd_ = false; // Tab has come to the end of all segments
    Connections on_;
};

} // namespace corvane
