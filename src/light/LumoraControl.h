#pragma once

#include "controls/JobButtons.h"
#include "controls/TripPointControl.h"
#include "light/LumoraClipboard.h"
#include "light/LumoraOptions.h"
#include "light/LumoraPlaces.h"
#include "light/LumoraProgramming.h"
#include "light/LumoraScrollableTracks.h"
#include "light/LumoraSimulatorControl.h"
#include "light/SegmentPopup.h"
#include "link/ProductControl.h"
#include "link/Workplace.h"

namespace corvane {

class LumoraUndoableChange;

/// The light editor: nine tabs over one light document. Every edit becomes a change in the
/// document's history; nothing here writes a segment or a setting itself.
class LumoraControl final : public ProductControl, public ClipboardCommands {
  public:
    LumoraControl(const Workplace& place, const KOKeyboard& keyboard);

    void ProcessPacket(const KOPacket& packet) override;
    void UpdateReadyState(bool) override {}
    [[nodiscard]] History* HistoryObject() override { return &document.HistoryObject(); }
    [[nodiscard]] std::optional<std::string> ProductName() const override { return "Lumora"; }
    [[nodiscard]] ClipboardCommands* Clipboard() override { return this; }
    void SetDebugger(const KODebugger& debugger) override { debugger_ = &debugger; }

    /// A programming run begins: its dialog shows beside the main window until it is confirmed.
    Event<LumoraProgramming&> ProgrammingShown;

    [[nodiscard]] Messenger& Clipboard_Messenger() override { return clipboardMessenger_; }
    [[nodiscard]] bool Clipboard_CanCut() const override { return canCopy_; }
    [[nodiscard]] bool Clipboard_CanCopy() const override { return canCopy_; }
    [[nodiscard]] bool Clipboard_CanPaste() const override;
    [[nodiscard]] bool Clipboard_CanDelete() const override { return canCopy_; }
    [[nodiscard]] bool Clipboard_IsDataAdvanced() const { return clipboard_.isDataAdvanced(); }
    void Clipboard_Cut() override;
    void Clipboard_Copy() override;
    void Clipboard_Paste() override { Clipboard_Paste(-1, -1); }
    /// -1 stands for the selected track and its selected segment.
    void Clipboard_Paste(int trackIndex, int elementIndex);
    void Clipboard_Delete() override;

    // Tags of tabs.
    static constexpr const char* TransmitterTag = "XMit";
    static constexpr const char* SimulatorTag = "Sim";
    /// Number of the channel tab on show; 0 on any other tab.
    [[nodiscard]] int ActiveChannel() const;
    [[nodiscard]] bool IsEditingTransmitter() const {
        return TabStrip1.SelectedItem().Tag == TransmitterTag;
    }
    [[nodiscard]] bool IsSimulating() const { return TabStrip1.SelectedItem().Tag == SimulatorTag; }
    /// Of the selected track; 0 and true without one.
    [[nodiscard]] int SelectedChannel() const;
    [[nodiscard]] bool SelectedOnState() const;
    void FocusOn(int channel, bool onState, int elementIndex);
    /// Brings everything that shows into line with the document.
    void Update();

    LumoraDocument document;
    LumoraScrollableTracks tracks;
    LumoraOptions options;
    LumoraSimulator simulator;
    LumoraSimulatorControl simulatorControl;
    SegmentPopup segmentPopup;
    TrackPopup trackPopup;

    TabStrip TabStrip1;
    TripPointControl tripPoint; ///< A channel's trip point, or the level that is simulated.
    Label BlockCountLabel;
    Frame TracksFrame;    ///< Shows while the tracks do.
    Frame SimulatorFrame; ///< Shows while the simulator does.
    Button AdvancedButton{"Advanced >>"};
    Button AddButton{"Add"};
    Button InsertButton{"Insert"};
    Button DeleteButton{"Delete"};
    Button ZoomInButton{"Zoom In"};
    Button ZoomOutButton{"Zoom Out"};
    Button ZoomToFitButton{"Zoom to Fit"};
    Button ProgramButton{"Program"};
    Button DebugButton{"Dump EEROM"};
    Button DebugDisconnectButton{"Disconnect"};

  private:
    void connectTracks();
    void connectButtons();
    void changeTab();
    void doLayout();
    void settingChanged(std::string_view name, int channel);
    void resetToDefaults();
    void UpdateBlockCount();
    void UpdateFrames();
    void UpdateTripPoint();
    void UpdateTrackVisibility();
    void loadSimulator();
    void updateCanCopy();
    void addOrInsert(bool add);
    void deleteSelected();
    void showSelectedTrack();
    [[nodiscard]] std::vector<LumoraPlacedElement> selectedSegments() const;
    bool recordSegments(bool insert, int trackIndex, std::vector<LumoraPlacedElement> segments);
    template<class Kind>
    void recordValue(int trackIndex, int elementIndex, const typename Kind::Value& newValue);
    [[nodiscard]] LumoraPlace userPlace() const;
    void filter(UndoableChange& change, bool undoing, bool& cancel);
    void goTo(const LumoraPlace& place);

    void program();
    void dump();
    void writeLine(const std::string& text) const;

    Workplace place_;
    JobButtons jobs_{place_.pointer};
    Dialogs& dialogs_;
    const KODebugger* debugger_ = nullptr;
    std::unique_ptr<LumoraProgramming> programming_;
    bool running_ = false; // a programming run or a dump
    LumoraClipboard clipboard_;
    Messenger clipboardMessenger_;
    bool canCopy_ = false;
    int simulatedLevel_ = 50; // percent
    bool advanced_ = false;
    bool simulating_ = false; // the "Simulator" tab is on show
    Connections on_;
};

} // namespace corvane
