#pragma once

#include "controls/ChildControl.h"

#include <algorithm>
#include <vector>

namespace corvane {

/// A box for a line of text. What a person types counts only once it is validated.
class TextBox final : public ChildControl {
  public:
    Event<> Change;   ///< The person has typed something.
    Event<> Validate; ///< The person has left the box, or pressed Enter in it.

    [[nodiscard]] const std::string& Text() const { return text_; }
    void setText(const std::string& text) { assign(text_, text); }
    /// An RGB value that the ground is tinted with, red in the low byte; nothing for the usual one.
    [[nodiscard]] const std::optional<int>& Tint() const { return tint_; }
    void setTint(std::optional<int> color) { assign(tint_, color); }

    // What the view calls.
    void type(const std::string& text) {
        if (assign(text_, text))
            Change.raise();
    }
    void leave() const { Validate.raise(); }

  private:
    std::string text_;
    std::optional<int> tint_;
};

/// A list that drops down, of which one entry is chosen.
class DropDownList final : public ChildControl {
  public:
    explicit DropDownList(std::vector<std::string> items) : items_(std::move(items)) {}

    Event<> Click;    ///< The person has chosen an entry.
    Event<> Validate; ///< The person has left the list.

    [[nodiscard]] const std::vector<std::string>& Items() const { return items_; }
    /// The chosen entry; empty for none.
    [[nodiscard]] const std::string& Text() const { return text_; }
    void setText(const std::string& text) { assign(text_, text); }
    void choose(const std::string& text) {
        setText(text);
        Click.raise();
    }
    void leave() const { Validate.raise(); }

  private:
    std::vector<std::string> items_;
    std::string text_;
};

/// One of several choices.
class OptionButton final : public ChildControl {
  public:
    explicit OptionButton(std::string caption) : caption_(std::move(caption)) {}

    Event<> Click; ///< The person has chosen it.

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    [[nodiscard]] bool Value() const { return value_; }
    void setValue(bool value) { assign(value_, value); }
    void choose() {
        if (!Enabled() || !Visible())
            return;
        setValue(true);
        Click.raise();
    }

  private:
    std::string caption_;
    bool value_ = false;
};

/// Something that is on or off.
class CheckBox final : public ChildControl {
  public:
    explicit CheckBox(std::string caption) : caption_(std::move(caption)) {}

    Event<> Click; ///< The person has switched it.

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    [[nodiscard]] bool Value() const { return value_; }
    void toggle() {
        if (!Enabled() || !Visible())
            return;
        assign(value_, !value_);
        Click.raise();
    }

  private:
    std::string caption_;
    bool value_ = false;
};

/// A slider from `Min` to `Max`.
class Slider final : public ChildControl {
  public:
    Slider(int min, int max) : min_(min), max_(max), value_(min) {}

    Event<> Change;   ///< The person has moved it.
    Event<> Validate; ///< The person has let it go.

    [[nodiscard]] int Min() const { return min_; }
    [[nodiscard]] int Max() const { return max_; }
    [[nodiscard]] int Value() const { return value_; }
    void setValue(int value) { assign(value_, std::clamp(value, min_, max_)); }
    void move(int value) {
        if (assign(value_, std::clamp(value, min_, max_)))
            Change.raise();
    }
    void leave() const { Validate.raise(); }

  private:
    int min_;
    int max_;
    int value_;
};

/// A scroll bar from 0 to `Max`. `Moved` tells of every new value, whoever set it.
class ScrollBar final : public ChildControl {
  public:
    Event<> Moved;

    [[nodiscard]] int Max() const { return max_; }
    [[nodiscard]] int Value() const { return value_; }
    [[nodiscard]] int SmallChange() const { return smallChange_; }
    [[nodiscard]] int LargeChange() const { return largeChange_; }
    void setSteps(int smallChange, int largeChange) {
        assign(smallChange_, smallChange);
        assign(largeChange_, largeChange);
    }
    /// Takes the value along if it would lie beyond.
    void setMax(int max) {
        assign(max_, std::max(0, max));
        setValue(value_);
    }
    void setValue(int value) {
        if (assign(value_, std::clamp(value, 0, max_)))
            Moved.raise();
    }

  private:
    int max_ = 0;
    int value_ = 0;
    int smallChange_ = 1;
    int largeChange_ = 1;
};

/// A strip of tabs, counted from 1.
class TabStrip final : public ChildControl {
  public:
    struct Tab {
        std::string Caption;
        std::string Tag;
    };

    explicit TabStrip(std::vector<Tab> tabs) : tabs_(std::move(tabs)) {}

    Event<> Click; ///< Another tab is on show, whoever chose it.

    [[nodiscard]] const std::vector<Tab>& Tabs() const { return tabs_; }
    [[nodiscard]] int SelectedIndex() const { return selected_; }
    [[nodiscard]] const Tab& SelectedItem() const {
        return tabs_[static_cast<std::size_t>(selected_) - 1];
    }
    void select(int index) {
        if (index >= 1 && index <= static_cast<int>(tabs_.size()) && assign(selected_, index))
            Click.raise();
    }

  private:
    std::vector<Tab> tabs_;
    int selected_ = 1;
};

/// How far something has come, 0 to 100.
class ProgressBar final : public ChildControl {
  public:
    [[nodiscard]] int Value() const { return value_; }
    void setValue(int value) { assign(value_, std::clamp(value, 0, 100)); }

  private:
    int value_ = 0;
};

/// Groups other parts, which show only while it does.
class Frame final : public ChildControl {
  public:
    explicit Frame(std::string caption = {}) : caption_(std::move(caption)) {}

    [[nodiscard]] const std::string& Caption() const { return caption_; }

  private:
    std::string caption_;
};

/// The keys that change what a click means, as they are at this moment.
class KOKeyboard {
  public:
    virtual ~KOKeyboard() = default;
    [[nodiscard]] virtual bool CtrlHeld() const = 0;
    [[nodiscard]] virtual bool ShiftHeld() const = 0;
};

} // namespace corvane
