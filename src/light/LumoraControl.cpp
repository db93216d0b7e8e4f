#include "light/LumoraControl.h"

#include "base/Numbers.h"
#include "history/FreezeScope.h"
#include "light/LumoraUndoableSegmentChange.h"

namespace corvane {

namespace {

constexpr std::string_view ChannelCaption = "Channel ";
constexpr int TransmitterTab = 8;
constexpr int SimulatorTab = 9;
constexpr int Red = 255;

std::vector<TabStrip::Tab> allTabs() {
    std::vector<TabStrip::Tab> tabs;
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel)
        tabs.push_back({std::string(ChannelCaption) + std::to_string(channel), {}});
    tabs.push_back({"All Channels", {}});
    tabs.push_back({"Transmitter", LumoraControl::TransmitterTag});
    tabs.push_back({"Simulator", LumoraControl::SimulatorTag});
    return tabs;
}

} // namespace

LumoraControl::LumoraControl(const Workplace& place, const KOKeyboard& keyboard)
    : document({place.dialogs, place.pointer, place.files, place.journals}),
      tracks(document, place.dialogs, keyboard),
      options(document, place.dialogs),
      simulator(document, place.clock),
      simulatorControl({document, simulator, options, place.images, place.dialogs}),
      TabStrip1(allTabs()),
      place_(place),
      dialogs_(place.dialogs) {
    DebugButton.setVisible(place.modes.DebugMode);
    DebugDisconnectButton.setVisible(place.modes.DebugMode);
    place.link.setMaintainConnection(false);
    connectTracks();
    connectButtons();
    on_(TabStrip1.Click, [this] { changeTab(); });
    on_(document.SettingChanged,
        [this](std::string_view name, int channel) { settingChanged(name, channel); });
    History& history = document.HistoryObject();
    on_(history.Changed, [this] { UpdateBlockCount(); });
    on_(history.NewFileCreated, [this] { tracks.ZoomToDefault(); });
    on_(history.FileOpened, [this](const std::string&) { tracks.ZoomToFit(); });
    on_(history.ResettingToDefaults, [this] { resetToDefaults(); });
    on_(history.FilteringRequested, [this](UndoableChange& change, bool undoing, bool& cancel) {
        filter(change, undoing, cancel);
    });
    on_(tripPoint.Change, [this] {
        if (ActiveChannel() != 0)
            return;
        simulatedLevel_ = tripPoint.Value();
        UpdateTripPoint();
    });
    on_(tripPoint.Commit, [this] {
        if (ActiveChannel() != 0)
            options.record(ActiveChannel(), LumoraDocument::TripPoint,
                           std::to_string(tripPoint.Value()));
    });
    options.setChannel(ActiveChannel());
    Update();
    doLayout();
}

void LumoraControl::connectTracks() {
    on_(tracks.PasteStateRequested, [this](bool& state) { state = Clipboard_CanPaste(); });
    on_(tracks.SegmentAddRequested, [this](int) { addOrInsert(true); });
    on_(tracks.SegmentCutRequested, [this](int, int) { Clipboard_Cut(); });
    on_(tracks.SegmentCopyRequested, [this](int, int) { Clipboard_Copy(); });
    on_(tracks.SegmentDeleteRequested, [this](int, int) { deleteSelected(); });
    on_(tracks.SegmentInsertRequested, [this](int, int) { addOrInsert(false); });
    on_(tracks.SegmentPasteRequested,
        [this](int track, int element) { Clipboard_Paste(track, element); });
    on_(tracks.SelectionChanged, [this] { updateCanCopy(); });
    namespace values = LumoraSegmentValues;
    on_(tracks.TrackBrightnessChanged, [this](int track, int element, int value) {
        recordValue<values::Brightness>(track, element, value);
    });
    on_(tracks.TrackBrightness2Changed, [this](int track, int element, int value) {
        recordValue<values::Brightness2>(track, element, value);
    });
    on_(tracks.TrackFunctionChanged, [this](int track, int element, const std::string& value) {
        recordValue<values::Function>(track, element, value);
    });
    on_(tracks.TrackTimeChanged, [this](int track, int element, double value) {
        recordValue<values::Time>(track, element, value);
    });
}

void LumoraControl::connectButtons() {
    const auto on = [this](Button& button, const char* toolTip, auto command) {
        button.setToolTipText(toolTip);
        on_(button.Click, command);
    };
    on(AddButton, "Add a segment at the end of the track", [this] { addOrInsert(true); });
    on(InsertButton, "Insert a segment before the selected one", [this] { addOrInsert(false); });
    on(DeleteButton, "Delete the selected segments", [this] { deleteSelected(); });
    on(ZoomInButton, "Show less time, but larger", [this] { tracks.ZoomIn(); });
    on(ZoomOutButton, "Show more time, but smaller", [this] { tracks.ZoomOut(); });
    on(ZoomToFitButton, "Make the longest track just fill the window",
       [this] { tracks.ZoomToFit(); });
    ProgramButton.setToolTipText("Put the program into the controller on the link");
    jobs_.add(ProgramButton, [this] { program(); });
    DebugButton.setToolTipText("Write the controller's memory to the log");
    jobs_.add(DebugButton, [this] { dump(); });
    on(DebugDisconnectButton, "Let the controller go",
       [this] { place_.link.setMaintainConnection(false); });
    on(AdvancedButton, "Turn-off point, hysteresis and what happens without a signal", [this] {
        advanced_ = !advanced_;
        AdvancedButton.setCaption(advanced_ ? "<< Advanced" : "Advanced >>");
        Update();
        doLayout();
    });
}

int LumoraControl::ActiveChannel() const {
    const std::string& caption = TabStrip1.SelectedItem().Caption;
    if (!caption.starts_with(ChannelCaption))
        return 0;
    return ReadInteger(std::string_view(caption).substr(ChannelCaption.size()));
}

int LumoraControl::SelectedChannel() const {
    return LumoraDocument::channelOf(tracks.SelectedIndex());
}

bool LumoraControl::SelectedOnState() const {
    return LumoraDocument::onStateOf(tracks.SelectedIndex());
}

void LumoraControl::FocusOn(int channel, bool onState, int elementIndex) {
    tracks.FocusOn(LumoraDocument::trackIndex(channel, onState), elementIndex);
}

// Display

void LumoraControl::Update() {
    UpdateBlockCount();
    options.Update();
    UpdateTripPoint();
    UpdateFrames();
    UpdateTrackVisibility();
}

void LumoraControl::settingChanged(std::string_view name, int channel) {
    if (IsSimulating() && channel != 0 && !name.starts_with(LumoraDocument::SimulatorStart)) {
        simulator.takeSettings(channel);
        simulatorControl.redrawLight(channel); // its colour
    }
    if (name == LumoraDocument::MaxCurrent)
        options.UpdateMaxCurrent();
    else if (name == LumoraDocument::LightColor)
        options.UpdateLightColor();
    else if (name == LumoraDocument::TurnOffPoint)
        options.UpdateTurnOffPoint();
    else if (name == LumoraDocument::TripPoint)
        UpdateTripPoint();
    else if (name == LumoraDocument::NoSignal)
        options.UpdateNoSignal();
    else if (name == LumoraDocument::Hysteresis)
        options.UpdateHysteresis();
    else if (name.starts_with(LumoraDocument::TransmitterStart))
        options.UpdateXMit();
}

void LumoraControl::UpdateBlockCount() {
    const int count = document.BlockCount();
    BlockCountLabel.setCaption(std::to_string(count) + "/" +
                               std::to_string(LumoraDocument::BlockLimit) + " blocks used");
    BlockCountLabel.setForeColor(count > LumoraDocument::BlockLimit ? Red : 0);
    BlockCountLabel.setToolTipText(
        count > LumoraDocument::BlockLimit
            ? "The program does not fit into the controller. Delete segments or functions."
            : "A segment costs 1 block, one with a function 2, and an empty track 1");
}

void LumoraControl::UpdateFrames() {
    const bool onChannel = ActiveChannel() != 0;
    options.OptionsFrame.setVisible(onChannel);
    options.OptionsFrame.setEnabled(onChannel);
    AdvancedButton.setVisible(onChannel);
    AdvancedButton.setEnabled(onChannel);
    options.AdvancedOptionsFrame.setVisible(onChannel && advanced_);
    options.AdvancedOptionsFrame.setEnabled(onChannel && advanced_);
}

void LumoraControl::UpdateTripPoint() {
    const int channel = ActiveChannel();
    tripPoint.setValue(channel == 0 ? simulatedLevel_ : document.settings(channel).tripPoint);
    if (channel == 0)
        UpdateTrackVisibility();
}

void LumoraControl::UpdateTrackVisibility() {
    if (IsSimulating())
        return loadSimulator();
    const int active = ActiveChannel();
    std::vector<int> changing;
    const auto visible = [&](int index) {
        const int channel = LumoraDocument::channelOf(index);
        const bool bottomInForce =
            active == 0 && simulatedLevel_ <= document.settings(channel).tripPoint;
        return active == 0 ? LumoraDocument::onStateOf(index) == bottomInForce : channel == active;
    };
    for (int index = 1; index <= LumoraDocument::TrackCount; ++index)
        if (visible(index) != tracks.TrackVisible(index))
            changing.push_back(index);
    if (changing.empty())
        return;
    const FreezeScope frozen(document.HistoryObject());
    for (const int index : changing)
        tracks.setTrackVisible(index, visible(index));
}

void LumoraControl::loadSimulator() {
    simulator.takeAllSettings();
    simulator.setSlider(simulatedLevel_);
}

void LumoraControl::changeTab() {
    const FreezeScope frozen(document.HistoryObject());
    options.setChannel(ActiveChannel());
    if (simulating_ != IsSimulating()) {
        simulating_ = IsSimulating();
        simulator.Reset();
        loadSimulator();
        simulatorControl.refresh(); // much may have changed meanwhile
    }
    Update();
    doLayout();
}

void LumoraControl::doLayout() {
    const bool withTracks = !IsEditingTransmitter() && !IsSimulating();
    constexpr const char* noTracks = "There are no tracks on this tab.";
    AddButton.setEnabled(withTracks, noTracks);
    for (Button* button : {&ZoomInButton, &ZoomOutButton, &ZoomToFitButton})
        button->setEnabled(withTracks, noTracks);
    TracksFrame.setVisible(withTracks);
    SimulatorFrame.setVisible(IsSimulating());
    simulatorControl.setShown(IsSimulating());
    simulatorControl.setAutoUpdate(IsSimulating());
    if (!IsSimulating())
        simulatorControl.cancelDrag();
    options.TransmitterFrame.setVisible(IsEditingTransmitter());
    tripPoint.TripPointFrame.setVisible(!IsEditingTransmitter());
    tripPoint.setSimulating(ActiveChannel() == 0);
    if (!withTracks)
        tracks.loseFocus(); // what is typed there counts, and no box stays without its track
    updateCanCopy();
    clipboardMessenger_.Notify("Update", this);
}

void LumoraControl::resetToDefaults() {
    simulatedLevel_ = 50;
    simulator.Reset();
    loadSimulator();
    simulatorControl.refresh();
    Update();
}

// Clipboard

void LumoraControl::updateCanCopy() {
    const int selected = tracks.SelectedIndex();
    const bool can =
        selected != 0 && tracks.track(selected).SelectedIndexCount() > 0 && !IsSimulating();
    InsertButton.setEnabled(can, "No segment is selected.");
    DeleteButton.setEnabled(can, "No segment is selected.");
    if (can == canCopy_)
        return;
    canCopy_ = can;
    clipboardMessenger_.Notify("Update", this);
}

bool LumoraControl::Clipboard_CanPaste() const {
    const int selected = tracks.SelectedIndex();
    return selected != 0 && !IsSimulating() && clipboard_.hasData() &&
           !(document.track(selected).Binary() && Clipboard_IsDataAdvanced());
}

void LumoraControl::Clipboard_Cut() {
    if (!Clipboard_CanCut())
        return;
    Clipboard_Copy();
    deleteSelected();
}

void LumoraControl::Clipboard_Copy() {
    if (!Clipboard_CanCopy())
        return;
    std::vector<LumoraPlacedElement> segments = selectedSegments();
    if (segments.empty())
        return;
    clipboard_.copy(std::move(segments));
    clipboardMessenger_.Notify("Update", this);
}

void LumoraControl::Clipboard_Paste(int trackIndex, int elementIndex) {
    if (!Clipboard_CanPaste())
        return;
    if (trackIndex == -1)
        trackIndex = tracks.SelectedIndex();
    if (trackIndex == 0)
        return;
    if (elementIndex == -1)
        elementIndex = std::max(1, tracks.track(trackIndex).SelectedIndex());
    // Before the change, so that the person sees it happen.
    showSelectedTrack();
    if (recordSegments(true, trackIndex, clipboard_.placedAt(elementIndex)))
        tracks.Show(trackIndex, elementIndex);
}

void LumoraControl::Clipboard_Delete() {
    if (Clipboard_CanDelete())
        deleteSelected();
}

// Segments

template<class Kind>
void LumoraControl::recordValue(int trackIndex, int elementIndex,
                                const typename Kind::Value& newValue) {
    auto change = std::make_unique<LumoraUndoableSegmentChange<Kind>>();
    change->Initialize(document, LumoraDocument::channelOf(trackIndex),
                       LumoraDocument::onStateOf(trackIndex), elementIndex,
                       Kind::of(document.track(trackIndex).GetTrack(elementIndex)), newValue);
    document.HistoryObject().Record(std::move(change));
}

bool LumoraControl::recordSegments(bool insert, int trackIndex,
                                   std::vector<LumoraPlacedElement> segments) {
    auto change = std::make_unique<LumoraUndoableTrackChange>();
    change->InitializeGroup(document, insert, LumoraDocument::channelOf(trackIndex),
                            LumoraDocument::onStateOf(trackIndex), std::move(segments));
    return document.HistoryObject().Record(std::move(change));
}

std::vector<LumoraPlacedElement> LumoraControl::selectedSegments() const {
    const LumoraTrackEditor& editor = tracks.track(tracks.SelectedIndex());
    std::vector<LumoraPlacedElement> segments;
    for (const int index : editor.SelectedIndices())
        segments.push_back({index, editor.track().GetTrack(index)});
    return segments;
}

void LumoraControl::addOrInsert(bool add) {
    const int trackIndex = tracks.SelectedIndex();
    if (trackIndex == 0)
        return;
    showSelectedTrack();
    LumoraTrackEditor& editor = tracks.track(trackIndex);
    editor.Commit(); // what has been typed belongs to the segment that is copied
    const FreezeScope frozen(document.HistoryObject());
    const LumoraTrack& track = editor.track();
    const int selected = editor.SelectedIndex();
    const LumoraTrackElement element =
        selected == 0 ? LumoraTrackElement(track.Binary() ? 0 : 50, 1.0) : track.GetTrack(selected);
    const int position =
        add || track.GetTrackCount() == 0 ? track.GetTrackCount() + 1 : std::max(1, selected);
    recordSegments(true, trackIndex, {{position, element}});
    editor.setSelectedIndex(position);
    FocusOn(SelectedChannel(), SelectedOnState(), editor.SelectedIndex());
}

void LumoraControl::deleteSelected() {
    const int trackIndex = tracks.SelectedIndex();
    if (trackIndex == 0)
        return;
    showSelectedTrack();
    LumoraTrackEditor& editor = tracks.track(trackIndex);
    editor.Commit(); // so that Undo brings back what was typed
    const std::vector<LumoraPlacedElement> segments = selectedSegments();
    if (segments.empty())
        return;
    const FreezeScope frozen(document.HistoryObject());
    // The one that comes to lie where the last of them was.
    int next = segments.back().index - static_cast<int>(segments.size()) + 1;
    recordSegments(false, trackIndex, segments);
    next = std::min(next, editor.track().GetTrackCount());
    if (next != 0) {
        editor.setSelectedIndex(next);
        FocusOn(SelectedChannel(), SelectedOnState(), next);
    }
}

/// Brings the tab to the front on which the person sees what is done to the selected segments.
void LumoraControl::showSelectedTrack() {
    if (IsEditingTransmitter())
        goTo({LumoraPlace::Kind::Channel, SelectedChannel()});
}

// Undo and redo across tabs

LumoraPlace LumoraControl::userPlace() const {
    if (IsEditingTransmitter())
        return {LumoraPlace::Kind::Transmitter, 0};
    if (IsSimulating())
        return {LumoraPlace::Kind::Simulator, 0};
    if (ActiveChannel() == 0)
        return {LumoraPlace::Kind::AllChannels, 0};
    return {LumoraPlace::Kind::Channel, ActiveChannel()};
}

void LumoraControl::filter(UndoableChange& change, bool undoing, bool& cancel) {
    const auto* light = dynamic_cast<const LumoraUndoableChange*>(&change);
    if (light == nullptr)
        return; // a mark in a file belongs nowhere
    const LumoraPlace target = PlaceOfChange(light->Channel(), light->PropertyName());
    if (target == LumoraPlace{})
        return;
    const LumoraPlace user = userPlace();
    const std::string question = SwitchQuestion(user, target, undoing);
    if (!question.empty()) {
        cancel = dialogs_.Message({"Switch Channels", question, MessageBox::Icon::Question,
                                   MessageBox::Buttons::YesNo}) != Answer::Yes;
        if (cancel)
            return;
    }
    if (user.kind != LumoraPlace::Kind::AllChannels || target.kind != LumoraPlace::Kind::Channel)
        goTo(target);
}

void LumoraControl::goTo(const LumoraPlace& place) {
    switch (place.kind) {
    case LumoraPlace::Kind::Simulator:
        return TabStrip1.select(SimulatorTab);
    case LumoraPlace::Kind::Transmitter:
        return TabStrip1.select(TransmitterTab);
    default:
        return TabStrip1.select(place.channel);
    }
}

} // namespace corvane
