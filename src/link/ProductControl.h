#pragma once

#include "base/Messenger.h"
#include "link/KOPacket.h"

#include <optional>
#include <string>
#include <vector>

namespace corvane {

class History;
class KODebugger;
class KOInterfaceChanger;
class MenuList;

/// A size in twips, 15 to a pixel.
struct TwipSize {
    int width = 0;
    int height = 0;

    bool operator==(const TwipSize&) const = default;
};

/// The edit commands of a control that has a clipboard.
class ClipboardCommands {
  public:
    virtual ~ClipboardCommands() = default;
    /// Sends "Update" whenever one of the answers below may have changed.
    [[nodiscard]] virtual Messenger& Clipboard_Messenger() = 0;
    [[nodiscard]] virtual bool Clipboard_CanCut() const = 0;
    [[nodiscard]] virtual bool Clipboard_CanCopy() const = 0;
    [[nodiscard]] virtual bool Clipboard_CanPaste() const = 0;
    [[nodiscard]] virtual bool Clipboard_CanDelete() const = 0;
    virtual void Clipboard_Cut() = 0;
    virtual void Clipboard_Copy() = 0;
    virtual void Clipboard_Paste() = 0;
    virtual void Clipboard_Delete() = 0;
};

/// The screen for one product, of which the main window shows one at a time. All that is not every
/// control's is an ability that a control has or, as here, has not.
class ProductControl {
  public:
    virtual ~ProductControl() = default;

    /// Every packet comes here. The jobs that a control starts hear the link themselves.
    virtual void ProcessPacket(const KOPacket&) {}
    /// Hears of changes only, and never of the first False.
    virtual void UpdateReadyState(bool ready) = 0;

    /// True if the control makes way for another one.
    [[nodiscard]] virtual bool UnloadUI() { return false; }
    /// The changer outlives the control.
    virtual void setInterfaceChanger(KOInterfaceChanger&) {}
    [[nodiscard]] virtual History* HistoryObject() { return nullptr; }
    /// All that it has, also those that the main window does not drive.
    [[nodiscard]] virtual std::vector<History*> Histories() {
        History* only = HistoryObject();
        return only == nullptr ? std::vector<History*>() : std::vector{only};
    }
    /// Base of the window's title.
    [[nodiscard]] virtual std::optional<std::string> ProductName() const { return std::nullopt; }
    [[nodiscard]] virtual ClipboardCommands* Clipboard() { return nullptr; }
    [[nodiscard]] virtual MenuList* OptionsMenu() { return nullptr; }
    virtual void SetDebugger(const KODebugger&) {}
    /// The client area that the control would like to have.
    [[nodiscard]] virtual std::optional<TwipSize> GetSuggestedClientSize() const {
        return std::nullopt;
    }

    [[nodiscard]] bool Visible() const { return visible_; }
    void setVisible(bool visible) { visible_ = visible; }
    [[nodiscard]] TwipSize size() const { return size_; }
    /// The room that the main window gives it.
    virtual void setSize(TwipSize size) { size_ = size; }

  private:
    bool visible_ = false;
    TwipSize size_;
};

} // namespace corvane
