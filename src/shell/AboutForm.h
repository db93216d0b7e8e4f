#pragma once

#include "base/Product.h"
#include "controls/ChildControl.h"
#include "shell/Application.h"

namespace corvane {

/// Text that is also the address which a click on it opens.
class HyperlinkControl final : public ChildControl {
  public:
    HyperlinkControl(std::string caption, const Application& application);

    // Colours have red in the low byte.
    static constexpr int Normal = 0xFF0000;
    static constexpr int Hovered = 0x0000FF;
    static constexpr int Pressed = 0x9F009F;

    Timer HighlightTimerHack{50};  ///< Runs while the mouse is over it.
    Event<bool&> PointerLookedFor; ///< Answered with whether the mouse is over it now.

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    [[nodiscard]] int ForeColor() const { return foreColor_; }
    void mouseMoved();
    void mousePressed() { assign(foreColor_, Pressed); }
    /// `over` if the mouse is still over it: then the address opens.
    void mouseReleased(bool over);
    void open() const; ///< Without the mouse.

  private:
    void look();

    std::string caption_;
    const Application& application_;
    int foreColor_ = Normal;
    Connection onTimer_;
};

/// The about box, a window of its own beside the main one.
class AboutForm final {
  public:
    explicit AboutForm(const Application& application);

    Event<> Shown;
    Event<> FocusWanted;
    Event<> Closed;

    Label VersionLabel{std::string("Version: ") + ProgramVersion};
    Label NewsLabel; ///< That no news of versions has come for long; shows only then.
    Button Logo;
    HyperlinkControl Site;
    Button OKButton{"OK"};

    [[nodiscard]] std::string Title() const { return std::string("About ") + ProgramName; }
    [[nodiscard]] bool open() const { return open_; }
    /// Opens it, or brings it to the front.
    void show();
    void close();
    /// Empty if there is nothing to tell.
    void setNews(const std::string& text);

  private:
    bool open_ = false;
    Connections on_;
};

} // namespace corvane
