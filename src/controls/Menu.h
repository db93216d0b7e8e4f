#pragma once

#include "base/Assert.h"
#include "controls/ChildControl.h"

#include <memory>
#include <vector>

namespace corvane {

/// An entry of a menu, or a line between entries. In its caption "&" stands before the access key,
/// and "&&" for the character.
class MenuItem final : public ChildControl {
  public:
    explicit MenuItem(std::string caption, std::string shortcut = {})
        : caption_(std::move(caption)), shortcut_(std::move(shortcut)) {}
    /// The line between entries; no other entry ever is one.
    enum SeparatorTag { Separator };
    explicit MenuItem(SeparatorTag) : caption_("-"), separator_(true) {}

    Event<> Click;

    [[nodiscard]] bool isSeparator() const { return separator_; }

    [[nodiscard]] const std::string& Caption() const { return caption_; }
    void setCaption(const std::string& caption) { assign(caption_, caption); }
    [[nodiscard]] bool Checked() const { return checked_; }
    void setChecked(bool checked) { assign(checked_, checked); }
    /// Such as "Ctrl+N"; empty for none.
    [[nodiscard]] const std::string& Shortcut() const { return shortcut_; }
    /// What the view calls when the person chooses it.
    void choose() const {
        if (Enabled() && Visible())
            Click.raise();
    }

  private:
    std::string caption_;
    std::string shortcut_;
    bool separator_ = false;
    bool checked_ = false;
};

/// Entries that are made at run time, all at one place of a menu.
class MenuArray {
  public:
    Event<> CountChanged;
    Event<int> Click; ///< With the entry's place, from 1.

    [[nodiscard]] int count() const { return static_cast<int>(items_.size()); }
    /// Makes new entries, visible, or drops the last ones.
    void setCount(int count) {
        if (count == this->count())
            return;
        while (this->count() > count)
            items_.pop_back();
        while (this->count() < count) {
            const int place = this->count() + 1;
            items_.push_back(std::make_unique<Entry>());
            items_.back()->onClick =
                items_.back()->item.Click.connect([this, place] { Click.raise(place); });
        }
        CountChanged.raise();
    }
    /// From 1.
    [[nodiscard]] MenuItem& item(int place) const {
        Assert(place >= 1 && place <= count());
        return items_[static_cast<std::size_t>(place) - 1]->item;
    }

  private:
    struct Entry {
        MenuItem item{""};
        Connection onClick;
    };
    std::vector<std::unique_ptr<Entry>> items_;
};

/// One place in a menu: an entry, perhaps with a submenu, or an array of entries.
struct MenuPlace {
    MenuItem* item = nullptr;
    std::vector<MenuPlace> submenu;
    MenuArray* array = nullptr;
};

} // namespace corvane
