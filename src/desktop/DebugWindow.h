#pragma once

#include "shell/DebugForm.h"

#include <QAbstractScrollArea>
#include <QPointer>

namespace corvane {

/// Lines of a log, of which only those in view cost anything. Follows the end as long as it is in
/// view. Lines are chosen with the mouse or Ctrl+A and copied with Ctrl+C.
class LogView final : public QAbstractScrollArea {
  public:
    LogView(LogBox& log, QWidget* parent);

    /// The lines that are chosen, as text.
    [[nodiscard]] QString selectedText() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

  private:
    void linesChanged();
    void catchUp();
    [[nodiscard]] int lineAt(int y) const;
    [[nodiscard]] int lineHeight() const { return fontMetrics().height(); }

    LogBox& log_;
    int timer_ = 0;  // while lines have come that do not show yet
    int first_ = -1; // of the chosen lines
    int last_ = -1;
    std::size_t measured_ = 0; // lines whose width is known
    int widest_ = 0;           // pixels
};

/// The log's window beside the main one.
class DebugWindow final : public QWidget {
  public:
    DebugWindow(DebugForm& form, QWidget* parent);

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    DebugForm& form_;
};

} // namespace corvane
