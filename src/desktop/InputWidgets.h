#pragma once

#include "controls/Inputs.h"

#include <QLineEdit>
#include <QPointer>
#include <QSlider>

class QCheckBox;
class QRadioButton;
class QScrollBar;
class QTabBar;

namespace corvane {

/// A line of text that is a text box of the core. Ctrl+Z takes back typing as long as there is
/// some, and is the document's otherwise.
class Box final : public QLineEdit {
  public:
    explicit Box(QWidget* parent) : QLineEdit(parent) {}
    /// Bound to one text box for good.
    Box(TextBox& child, const QString& accessibleName, QWidget* parent);

    /// Shows another text box, or none. It must outlive that or the next call.
    void bindTo(TextBox* child);
    /// Lets what has been typed count, as on leaving the box.
    void commit();

  protected:
    bool event(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void showText();

    TextBox* child_ = nullptr;
    QPointer<QObject> held_;
};

/// A vertical slider whose top means the lowest value of the core's slider.
class UpsideDownSlider final : public QSlider {
  public:
    UpsideDownSlider(Slider& child, QWidget* parent);

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

/// Lets what has been typed into the box with the focus count, before a command is run.
void CommitFocusedBox();

void Bind(QRadioButton* button, OptionButton& child);
void Bind(QCheckBox* box, CheckBox& child);
void Bind(QTabBar* bar, TabStrip& child);
void Bind(QScrollBar* bar, ScrollBar& child);

} // namespace corvane
