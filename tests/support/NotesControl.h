#pragma once

#include "link/ProductControl.h"
#include "support/Desk.h"
#include "support/Notes.h"

namespace corvane {

/// A product control with every ability, each of which can be left out.
class NotesControl final : public ProductControl, public ClipboardCommands {
  public:
    explicit NotesControl(Desk& desk, Dialogs* dialogs = nullptr)
        : notes({dialogs == nullptr ? desk.person : *dialogs, desk.person, desk.files}) {
        desk.bench.link.setMaintainConnection(false);
    }

    void ProcessPacket(const KOPacket& packet) override { channels.push_back(packet.Channel()); }
    void UpdateReadyState(bool ready) override { heard.push_back(ready); }
    void setInterfaceChanger(KOInterfaceChanger& given) override { changer = &given; }
    History* HistoryObject() override { return &notes.history; }
    std::optional<std::string> ProductName() const override { return "Notes"; }
    ClipboardCommands* Clipboard() override { return hasClipboard ? this : nullptr; }
    std::optional<TwipSize> GetSuggestedClientSize() const override { return wanted; }

    Messenger& Clipboard_Messenger() override { return messenger; }
    bool Clipboard_CanCut() const override { return false; }
    bool Clipboard_CanCopy() const override { return false; }
    bool Clipboard_CanPaste() const override { return true; }
    bool Clipboard_CanDelete() const override { return false; }
    void Clipboard_Cut() override {}
    void Clipboard_Copy() override {}
    void Clipboard_Paste() override {}
    void Clipboard_Delete() override {}

    Notes notes;
    KOInterfaceChanger* changer = nullptr;
    Messenger messenger;
    std::vector<int> channels;
    std::vector<bool> heard;
    bool hasClipboard = true;
    std::optional<TwipSize> wanted;
};

} // namespace corvane
