#pragma once

#include "base/Assert.h"
#include "base/Messenger.h"

#include <vector>

namespace corvane {

/// The options that a control offers in the options menu. A choice goes through the messenger as
/// "MenuItemSelected" with the option's text.
class MenuList {
  public:
    Event<> Changed;

    /// The messenger must outlive the list.
    void Initialize(const Messenger& messenger) { messenger_ = &messenger; }

    [[nodiscard]] int count() const { return static_cast<int>(items_.size()); }
    /// From 1.
    [[nodiscard]] const std::string& Item(int Index) const {
        Assert(Index >= 1 && Index <= count());
        return items_[static_cast<std::size_t>(Index) - 1];
    }
    void Add(const std::string& text) {
        items_.push_back(text);
        Changed.raise();
    }
    void Reset() {
        items_.clear();
        Changed.raise();
    }
    void SelectItem(const std::string& text) const {
        MessageValue value = text;
        if (messenger_ != nullptr)
            messenger_->Notify("MenuItemSelected", this, value);
    }

  private:
    const Messenger* messenger_ = nullptr;
    std::vector<std::string> items_;
};

} // namespace corvane
