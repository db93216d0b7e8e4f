#include "shell/AboutForm.h"

namespace corvane {

HyperlinkControl::HyperlinkControl(std::string caption, const Application& application)
    : caption_(std::move(caption)),
      application_(application),
      onTimer_(HighlightTimerHack.Fired.connect([this] { look(); })) {
    setToolTipText("Open " + caption_);
}

void HyperlinkControl::mouseMoved() {
    if (foreColor_ == Normal)
        assign(foreColor_, Hovered);
    HighlightTimerHack.setEnabled(true);
}

void HyperlinkControl::mouseReleased(bool over) {
    assign(foreColor_, over ? Hovered : Normal);
    if (over)
        open();
}

void HyperlinkControl::open() const {
    application_.OpenInBrowser(caption_);
}

void HyperlinkControl::look() {
    bool over = false;
    PointerLookedFor.raise(over);
    if (over)
        return;
    HighlightTimerHack.setEnabled(false);
    if (foreColor_ == Hovered)
        assign(foreColor_, Normal);
}

AboutForm::AboutForm(const Application& application) : Site(MakerSite, application) {
    on_(Logo.Click, [&application] { application.OpenInBrowser(MakerSite); });
    on_(OKButton.Click, [this] { close(); });
    Logo.setToolTipText("Open the maker's web site");
    OKButton.setToolTipText("Close this window");
    NewsLabel.setVisible(false);
}

void AboutForm::setNews(const std::string& text) {
    NewsLabel.setCaption(text);
    NewsLabel.setVisible(!text.empty());
}

void AboutForm::show() {
    if (open_)
        return FocusWanted.raise();
    open_ = true;
    Shown.raise();
}

void AboutForm::close() {
    if (!std::exchange(open_, false))
        return;
    Closed.raise();
}

} // namespace corvane
