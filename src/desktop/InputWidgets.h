#pragma once

#include "controls/Inputs.h"
#include "desktop/PointerDrag.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QSlider>

#include <functional>

class QCheckBox;
class QRadioButton;
class QScrollBar;
class QTabBar;

namespace corvane {

/// Something that a person leaves, and whose value counts only then. All ways of leaving it are
/// one: the focus goes, a press anywhere else, a command, a tab, a drop, the end of the program.
class Leavable {
  public:
    virtual ~Leavable() = default;
    /// Lets what has been typed or chosen count, if it does not yet.
    virtual void commit() = 0;
};

/// A line of text that is a text box of the core. Ctrl+Z takes back typing as long as there is
/// some, and is the document's otherwise.
class Box final : public QLineEdit, public Leavable {
  public:
    explicit Box(QWidget* parent);
    /// Bound to one text box for good.
    Box(TextBox& child, const QString& accessibleName, QWidget* parent);

    /// Shows another text box, or none. It must outlive that or the next call.
    void bindTo(TextBox* child);
    /// Shows other characters in place of some; `typed` does the opposite of `shown`.
    using Translation = std::function<std::string(std::string_view)>;
    void setTranslation(Translation shown, Translation typed);
    void commit() override;

  protected:
    bool event(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void showText();
    void showTint();

    TextBox* child_ = nullptr;
    QPointer<QObject> held_;
    Translation shown_;
    Translation typed_;
};

/// A list that drops down and is one of the core's.
class DropDown final : public QComboBox, public Leavable {
  public:
    DropDown(const QString& accessibleName, QWidget* parent);

    /// Shows another list, or none. It must outlive that or the next call.
    void bindTo(DropDownList* child);
    void commit() override;

  protected:
    void focusOutEvent(QFocusEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void showText();

    DropDownList* child_ = nullptr;
    QPointer<QObject> held_;
    bool pending_ = false; // an entry was chosen, and does not count yet
};

/// A vertical slider whose top means the lowest value of the core's slider. What is done to it
/// counts once: a drag or a click when the button is released, a run of keys or of notches of the
/// wheel when the slider is left.
class UpsideDownSlider final : public QSlider, public Leavable {
  public:
    UpsideDownSlider(Slider& child, QWidget* parent);

    void commit() override;

  protected:
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    Slider& child_;
    PointerDrag drag_;
    int pressedAt_ = 0;    // its value then
    bool pending_ = false; // moved since the child was last told of the end
};

/// Lets what has been typed or chosen where the focus is count, before something else is done.
void CommitFocusedBox();

void Bind(QRadioButton* button, OptionButton& child);
void Bind(QCheckBox* box, CheckBox& child);
void Bind(QTabBar* bar, TabStrip& child);
void Bind(QScrollBar* bar, ScrollBar& child);

} // namespace corvane
