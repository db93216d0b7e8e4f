#pragma once

#include "base/Event.h"

#include <optional>
#include <string>

namespace corvane {

/// A part of a screen, without its looks: the state that a view shows and that tests read. Raises
/// `Changed` when, and only when, something that shows has changed.
class ChildControl {
  public:
    Event<> Changed;

    [[nodiscard]] bool Visible() const { return visible_; }
    void setVisible(bool visible) { assign(visible_, visible); }
    [[nodiscard]] bool Enabled() const { return enabled_ && !held_; }
    void setEnabled(bool enabled) { assign(enabled_, enabled); }
    /// Enables it, or disables it and says why.
    void setEnabled(bool enabled, const std::string& whyNot) {
        assign(whyNot_, enabled ? std::string() : whyNot);
        setEnabled(enabled);
    }
    /// Disables it for a while, whatever else is said of it meanwhile.
    void setHeld(bool held) { assign(held_, held); }
    /// What it does, or why it can't be used now.
    [[nodiscard]] const std::string& ToolTipText() const {
        static const std::string wait = "Wait until the job that is running has ended.";
        return held_ ? wait : enabled_ || whyNot_.empty() ? toolTip_ : whyNot_;
    }
    void setToolTipText(const std::string& text) { assign(toolTip_, text); }

    ChildControl(const ChildControl&) = delete;
    ChildControl& operator=(const ChildControl&) = delete;

  protected:
    ChildControl() = default;
    ~ChildControl() = default;

    /// True if the field had another value.
    template<class T>
    bool assign(T& field, const T& value) {
        if (field == value)
            return false;
        field = value;
        Changed.raise();
        return true;
    }

  private:
    bool visible_ = true;
    bool enabled_ = true;
    bool held_ = false;
    std::string toolTip_;
    std::string whyNot_;
};

/// Text that is only shown.
class Label final : public ChildControl {
  public:
    explicit Label(std::string caption = {}) : caption_(std::move(caption)) {}

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    void setCaption(const std::string& caption) { assign(caption_, caption); }
    /// An RGB value with red in the low byte. 0, black, stands for the palette's own text colour.
    [[nodiscard]] int ForeColor() const { return foreColor_; }
    void setForeColor(int color) { assign(foreColor_, color); }
    /// The same for the ground; nothing for that of the window.
    [[nodiscard]] const std::optional<int>& BackColor() const { return backColor_; }
    void setBackColor(std::optional<int> color) { assign(backColor_, color); }

  private:
    std::string caption_;
    int foreColor_ = 0;
    std::optional<int> backColor_;
};

/// A place that is filled with a colour.
class PictureBox final : public ChildControl {
  public:
    /// An RGB value with red in the low byte.
    [[nodiscard]] int BackColor() const { return backColor_; }
    void setBackColor(int color) { assign(backColor_, color); }

  private:
    int backColor_ = 0;
};

/// Something to press: a button, or a picture that acts like one.
class Button final : public ChildControl {
  public:
    explicit Button(std::string caption = {}) : caption_(std::move(caption)) {}

    Event<> Click;

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    void setCaption(const std::string& caption) { assign(caption_, caption); }
    /// What the view calls when the person presses it.
    void press() const {
        if (Enabled() && Visible())
            Click.raise();
    }

  private:
    std::string caption_;
};

/// Fires again and again while it is enabled. The desktop's event loop drives it.
class Timer final : public ChildControl {
  public:
    explicit Timer(int interval, bool enabled = false) : interval_(interval) {
        setEnabled(enabled);
    }

    Event<> Fired;

    [[nodiscard]] int Interval() const { return interval_; } ///< ms
    void fire() const { Fired.raise(); }                     ///< The interval is over.

  private:
    int interval_;
};

} // namespace corvane
