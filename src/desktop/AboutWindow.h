#pragma once

#include "shell/AboutForm.h"

#include <QDialog>
#include <QLabel>

namespace corvane {

/// Text that opens its address on a click, or on Enter while it has the focus.
class HyperlinkLabel final : public QLabel {
  public:
    HyperlinkLabel(HyperlinkControl& control, QWidget* parent);

  protected:
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    HyperlinkControl& control_;
};

/// The about box, beside the main window as long as the form is open.
class AboutWindow final : public QDialog {
  public:
    AboutWindow(AboutForm& form, QWidget* parent);

  private:
    void done(int result) override;

    AboutForm& form_;
};

} // namespace corvane
