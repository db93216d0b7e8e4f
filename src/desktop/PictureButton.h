#pragma once

#include "controls/ChildControl.h"

#include <QAbstractButton>

namespace corvane {

/// A drawn picture that can be pressed, with its caption below if it has one.
class PictureButton final : public QAbstractButton {
  public:
    /// `picture` by its name in the program's pictures, `size` in logical pixels.
    PictureButton(Button& child, QString picture, QSize size, const QString& accessibleName,
                  QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString picture_;
    QSize size_;
};

/// The maker's logo, which leads to the maker's web site. For the mouse alone: the keyboard should
/// not come upon it on the way to something else.
[[nodiscard]] PictureButton* MakeLogo(Button& child, int width, QWidget* parent);

} // namespace corvane
