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

} // namespace corvane
