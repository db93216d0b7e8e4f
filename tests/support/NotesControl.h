#pragma once

#include "controls/MenuList.h"
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
        options.Initialize(optionsMessenger);
    }

    void ProcessPacket(const KOPacket& packet) override { channels.push_back(packet.Channel()); }
    void UpdateReadyState(bool ready) override { heard.push_back(ready); }
    void setInterfaceChanger(KOInterfaceChanger& given) override { changer = &given; }
    History* HistoryObject() override { return hasHistory ? &notes.history : nullptr; }
    std::optional<std::string> ProductName() const override { return "Notes"; }
    ClipboardCommands* Clipboard() override { return hasClipboard ? this : nullptr; }
    MenuList* OptionsMenu() override { return hasOptions ? &options : nullptr; }
    std::optional<TwipSize> GetSuggestedClientSize() const override { return wanted; }

    Messenger& Clipboard_Messenger() override { return messenger; }
    bool Clipboard_CanCut() const override { return selected; }
    bool Clipboard_CanCopy() const override { return selected; }
    bool Clipboard_CanPaste() const override { return true; }
    bool Clipboard_CanDelete() const override { return selected; }
    void Clipboard_Cut() override { commands += "x"; }
    void Clipboard_Copy() override { commands += "c"; }
    void Clipboard_Paste() override { commands += "v"; }
    void Clipboard_Delete() override { commands += "d"; }

    Notes notes;
    KOInterfaceChanger* changer = nullptr;
    Messenger messenger;
    Messenger optionsMessenger;
    MenuList options;
    std::string commands;
    std::vector<int> channels;
    std::vector<bool> heard;
    bool selected = false;
    bool hasHistory = true;
    bool hasClipboard = true;
    bool hasOptions = false;
    std::optional<TwipSize> wanted;
};

} // namespace corvane
