#include "shell/MainForm.h"

#include "history/FreezeScope.h"
#include "history/Journals.h"
#include "shell/KOFlash.h"
#include "shell/Recovery.h"
#include "system/File.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr const char* NoOptions = "(No Options)";

std::string withoutAccessKeys(const std::string& text) {
    std::string doubled;
    for (const char c : text)
        doubled.append(c == '&' ? 2 : 1, c);
    return doubled;
}

} // namespace

MainForm::MainForm(const Workplace& place, const ProductControls& controls,
                   Application& application)
    : about(application),
      place_(place),
      controls_(controls),
      application_(application),
      options_(place.registry),
      interface_(std::make_unique<KOInterface>(place.link)),
      recentFiles_(std::make_unique<MRUList>(place.registry, place.products)) {
    debugForm.SetDebugger(place.debugger);
    noOptions_.Add(NoOptions);
    on_(interface_->InterfaceSwapRequested,
        [this](std::unique_ptr<ProductControl>& current, const std::string& newName) {
            swapControl(current, newName);
        });
    on_(interface_->InterfaceChanged, [this] {
        setHistoryObject(interface_->InterfaceHistory());
        doLayout();
    });
    on_(recentFiles_->Changed, [this] { updateRecentFiles(); });
    on_(tmrUpdate.Fired, [this] { place_.link.Update(); });
    recentFiles_->Initialize(*interface_);
    connectMenu();
    connectJournals();
}

MainForm::~MainForm() = default;

void MainForm::connectMenu() {
    const auto on = [this](MenuItem& item, auto command) { on_(item.Click, command); };
    on(menu.mnuFileNew, [this] { history_->NewHistory(); });
    on(menu.mnuFileOpen, [this] { OpenFile({}); });
    on(menu.mnuFileSave, [this] { history_->SaveHistory(); });
    on(menu.mnuFileSaveAs, [this] { history_->SaveHistoryAs(); });
    on(menu.mnuFileExit, [this] { Unload(); });
    on(menu.mnuEditUndo, [this] { history_->Undo(); });
    on(menu.mnuEditRedo, [this] { history_->Redo(); });
    on(menu.mnuEditCut, [this] { clipboard_->Clipboard_Cut(); });
    on(menu.mnuEditCopy, [this] { clipboard_->Clipboard_Copy(); });
    on(menu.mnuEditPaste, [this] { clipboard_->Clipboard_Paste(); });
    on(menu.mnuEditDelete, [this] { clipboard_->Clipboard_Delete(); });
    on(menu.mnuOptionsAutopatch, [this] { toggleAutopatch(); });
    on(menu.mnuHelpTroubleshootingPowerCycle, [this] { powerCycle(); });
    on(menu.mnuHelpTroubleshootingReinstallCorvaneDrivers, [this] { reinstallDrivers(); });
    on(menu.mnuHelpTroubleshootingReprogramCorvaneEEPROM, [this] { reprogramEEPROM(); });
    on(menu.mnuHelpTroubleshootingRestartCorvaneInDebugMode, [this] { restart("-debug2"); });
    on(menu.mnuHelpTroubleshootingRestartCorvaneNormally, [this] { restart({}); });
    on(menu.mnuHelpAbout, [this] { about.show(); });
    on_(menu.mnuFileMRU.Click, [this](int place) {
        const std::string file = recentFiles_->filename(place); // the list changes meanwhile
        OpenFile(file);
    });
    on_(menu.mnuOptionsList.Click,
        [this](int place) { optionsMenu_->SelectItem(optionsMenu_->Item(place)); });
}

void MainForm::Initialize(const std::string& fileToOpen) {
    updateTitle();
    menu.mnuOptionsAutopatch.setVisible(true);
    menu.mnuOptionsAutopatch.setChecked(options_.AutopatchEnabled());
    const std::string name = ProgramName;
    menu.mnuHelpTroubleshootingPowerCycle.setCaption("Power &Cycle " + name + "-Attached Device");
    menu.mnuHelpTroubleshootingReinstallCorvaneDrivers.setCaption("Reinstall " + name +
                                                                  " &Drivers");
    menu.mnuHelpTroubleshootingReprogramCorvaneEEPROM.setCaption("Reprogram " + name + " &EEPROM");
    menu.mnuHelpTroubleshootingRestartCorvane.setCaption("&Restart " + name);
    Recovery recovery(place_, *interface_);
    // What was lost waits for a start that asks for no screen of its own.
    if (!place_.modes.ProgramMode && !place_.modes.EEPROMMode)
        recovery.Offer();
    const bool ready = recovery.ShowControl(place_.products.ClassOfFile(fileToOpen));
    takeKeptSize();
    updateAllMenus();
    updateOptionsMenu();
    if (ready && !fileToOpen.empty())
        OpenFile(fileToOpen);
}

void MainForm::connectJournals() {
    if (place_.journals == nullptr)
        return;
    const std::string folder = place_.journals->folder().string();
    on_(place_.journals->Failed, [this, folder](const std::string& reason) {
        tellLater("Changes can't be kept safe from a crash, because the folder " + folder +
                  " can't be written (" + reason +
                  ").\r\n\r\nMake room on the disk or give yourself the rights, and save often "
                  "until then.");
    });
    on_(place_.journals->Replaced, [this, folder] {
        tellLater("The copy that keeps your changes safe from a crash, in the folder " + folder +
                  ", was removed or damaged by another program.\r\n\r\nA new one has been made, "
                  "and nothing is lost. Save the document to be sure.");
    });
    on_(place_.journals->Begun, [this] { tmrJournals.setEnabled(true); });
    on_(tmrJournals.Fired, [this] { tmrJournals.setEnabled(place_.journals->Look()); });
    on_(tmrTell.Fired, [this] {
        tmrTell.setEnabled(false);
        for (const std::string& text : std::exchange(toTell_, {}))
            place_.dialogs.Message(
                {ProgramName, text, MessageBox::Icon::Warning, MessageBox::Buttons::Ok});
    });
}

/// Once what is going on is over.
void MainForm::tellLater(std::string text) {
    toTell_.push_back(std::move(text));
    tmrTell.setEnabled(true);
}

void MainForm::OpenFile(const std::string& filename) {
    if (history_ != nullptr)
        history_->OpenHistory(filename);
}

void MainForm::setHistoryObject(History* history) {
    onHistory_.clear();
    history_ = history;
    const bool has = history != nullptr;
    for (MenuItem* item : {&menu.mnuFileNew, &menu.mnuFileSep1, &menu.mnuFileOpen,
                           &menu.mnuFileSave, &menu.mnuFileSaveAs, &menu.mnuFileSep2})
        item->setVisible(has);
    for (MenuItem* item :
         {&menu.mnuFileNew, &menu.mnuFileOpen, &menu.mnuFileSave, &menu.mnuFileSaveAs})
        item->setEnabled(has);
    if (has) {
        onHistory_(history->UndoStateChanged, [this] { updateUndoMenu(); });
        onHistory_(history->SaveStateChanged, [this] { updateTitle(); });
        onHistory_(history->FileOpened,
                   [this](const std::string& file) { recentFiles_->AddFile(file); });
        onHistory_(history->FileOpenFailed,
                   [this](const std::string& file) { recentFiles_->RemoveFile(file); });
        onHistory_(history->FileSaved,
                   [this](const std::string& file, const std::string& previous) {
                       // A document that has got another name is still one document.
                       if (!previous.empty() && previous != file)
                           recentFiles_->RenameFile(previous, file);
                       else
                           recentFiles_->AddFile(file);
                   });
    }
    updateAllMenus();
}

void MainForm::setBand(BottomBand& band) {
    band_ = &band;
    on_(band.DesiredPositionChanged, [this] { doLayout(); });
    on_(band.RestartRequested, [this] { restart({}); });
    doLayout();
}

void MainForm::setNoUpdates() {
    menu.mnuOptionsAutopatch.setEnabled(false, "This build has no address to look for updates at.");
}

void MainForm::Resize(TwipSize clientSize, bool isUsual) {
    clientSize_ = clientSize;
    if (isUsual)
        usualSize_ = clientSize;
    doLayout();
}

void MainForm::takeKeptSize() {
    // A control that knows what room it needs gets that, whatever was kept.
    if (sizes_ == nullptr || control() == nullptr || control()->GetSuggestedClientSize())
        return;
    if (const std::optional<TwipSize> kept = sizes_->of(interface_->InterfaceClass()))
        ClientSizeWanted.raise(*kept);
}

void MainForm::keepSize() const {
    if (sizes_ != nullptr && control() != nullptr && !control()->GetSuggestedClientSize())
        sizes_->keep(interface_->InterfaceClass(), usualSize_);
}

bool MainForm::Unload() {
    if (unloaded_)
        return true;
    if (history_ != nullptr && !history_->ExitHistory())
        return false;
    // From here on nothing is asked any more. The tick stops before the device goes, or it would be
    // opened again.
    unloaded_ = true;
    tmrUpdate.setEnabled(false);
    place_.device.CloseDevice();
    about.close();
    debugForm.Done();
    keepSize();
    Ending.raise();
    letGoOfControl();
    // It writes itself down as it ends, and what starts next may read it.
    recentFiles_.reset();
    application_.ShutDownApplication();
    Closed.raise();
    return true;
}

void MainForm::letGoOfControl() {
    ControlLeaving.raise(); // first, since the view still looks at what goes
    onControl_.clear();
    clipboard_ = nullptr;
    optionsMenu_ = &noOptions_;
    setHistoryObject(nullptr);
}

void MainForm::swapControl(std::unique_ptr<ProductControl>& current, const std::string& newName) {
    letGoOfControl();
    // The old one ends first: two at a time would both answer the link.
    current.reset();
    current = controls_.create(newName);
    clipboard_ = current->Clipboard();
    if (clipboard_ != nullptr)
        onControl_(clipboard_->Clipboard_Messenger().MessageReceived,
                   [this](std::string_view message, const void*, MessageValue&) {
                       if (message == "Update")
                           updateClipboardMenu();
                   });
    adoptOptionsMenu();
    current->SetDebugger(place_.debugger);
    // The view first: the room that the control would like to have is the one around it.
    ControlChanged.raise();
    const std::optional<TwipSize> wanted = current->GetSuggestedClientSize();
    if (wanted && wanted->width >= 1 && wanted->height >= 1)
        ClientSizeWanted.raise(*wanted);
    updateTitle();
}

void MainForm::adoptOptionsMenu() {
    if (MenuList* own = control()->OptionsMenu())
        optionsMenu_ = own;
    onControl_(optionsMenu_->Changed, [this] { updateOptionsMenu(); });
    updateOptionsMenu();
}

void MainForm::updateAllMenus() {
    updateClipboardMenu();
    updateUndoMenu();
    updateTitle();
}

void MainForm::updateClipboardMenu() {
    const bool has = clipboard_ != nullptr;
    menu.mnuEditCut.setEnabled(has && clipboard_->Clipboard_CanCut(), "Nothing is selected.");
    menu.mnuEditCopy.setEnabled(has && clipboard_->Clipboard_CanCopy(), "Nothing is selected.");
    menu.mnuEditPaste.setEnabled(has && clipboard_->Clipboard_CanPaste(),
                                 "Nothing that fits here has been copied.");
    menu.mnuEditDelete.setEnabled(has && clipboard_->Clipboard_CanDelete(), "Nothing is selected.");
    menu.mnuEdit.setVisible(has || history_ != nullptr);
    for (MenuItem* item : {&menu.mnuEditCutPasteSeparator, &menu.mnuEditCut, &menu.mnuEditCopy,
                           &menu.mnuEditPaste, &menu.mnuEditDelete})
        item->setVisible(has);
}

void MainForm::updateUndoMenu() {
    menu.mnuEditUndo.setEnabled(history_ != nullptr && history_->CanUndo(),
                                "There is nothing to undo.");
    menu.mnuEditRedo.setEnabled(history_ != nullptr && history_->CanRedo(),
                                "There is nothing to redo.");
}

void MainForm::updateTitle() {
    std::string title = ProgramName;
    if (control() != nullptr)
        title = control()->ProductName().value_or(title);
    if (history_ != nullptr)
        title = history_->GetCaption(title, false);
    if (title == title_)
        return;
    title_ = title;
    TitleChanged.raise();
}

void MainForm::updateRecentFiles() {
    const int count = recentFiles_->count();
    menu.mnuFileMRU.setCount(count);
    menu.mnuFileMRUSeparator.setVisible(count > 0);
    bool oneDirectory = true;
    for (int i = 2; i <= count; ++i)
        oneDirectory = oneDirectory && KOIODirectory(recentFiles_->filename(i)) ==
                                           KOIODirectory(recentFiles_->filename(1));
    for (int i = 1; i <= count; ++i) {
        const std::string& path = recentFiles_->filename(i);
        menu.mnuFileMRU.item(i).setCaption(
            "&" + std::to_string(i) + " " +
            withoutAccessKeys(oneDirectory ? KOIOFilename(path) : path));
        menu.mnuFileMRU.item(i).setToolTipText(path);
    }
}

void MainForm::updateOptionsMenu() {
    const bool autopatch = menu.mnuOptionsAutopatch.Visible();
    int count = optionsMenu_->count();
    // That there are none is said only where nothing else stands in the menu.
    if (count == 1 && optionsMenu_->Item(1) == NoOptions && autopatch)
        count = 0;
    menu.mnuOptionsList.setCount(count);
    for (int i = 1; i <= count; ++i)
        menu.mnuOptionsList.item(i).setCaption(optionsMenu_->Item(i));
    menu.mnuOptionsSeparator.setVisible(count > 0 && autopatch);
    menu.mnuOptions.setVisible(count > 0 || autopatch);
}

void MainForm::toggleAutopatch() {
    options_.setAutopatchEnabled(!options_.AutopatchEnabled());
    menu.mnuOptionsAutopatch.setChecked(options_.AutopatchEnabled());
}

void MainForm::doLayout() {
    // Whatever moves is painted once, in its last place.
    if (history_ == nullptr)
        return layOut();
    const FreezeScope frozen(*history_);
    layOut();
}

void MainForm::layOut() {
    if (control() != nullptr) {
        BandPlace place;
        int freeHeight = clientSize_.height;
        if (band_ != nullptr) {
            place.visible = band_->DesiredTop() < 0;
            if (place.visible)
                freeHeight += band_->DesiredTop();
            place.top = freeHeight;
            place.height = band_->DesiredHeight();
            place.width = clientSize_.width;
        }
        bandPlace_ = place;
        control()->setSize({clientSize_.width, std::max(0, freeHeight)});
    }
    LayoutChanged.raise();
}

void MainForm::powerCycle() const {
    const JobScope job(place_.pointer);
    const BusyScope busy(place_.pointer);
    // A screen that lets the link look for products goes on looking.
    const bool looking = place_.link.MaintainConnection() && !place_.link.InUse();
    place_.link.DisconnectAndBlock(true);
    place_.link.ResetDevice();
    place_.link.UpdateReadyState();
    if (looking)
        place_.link.setMaintainConnection(true);
}

void MainForm::reinstallDrivers() const {
    application_.RunFromProgramDirectory(ProgramFile::DriverInstaller, {});
    place_.dialogs.Message({"Restart Needed",
                            "You will need to restart Corvane to use the newly installed drivers.",
                            MessageBox::Icon::Information, MessageBox::Buttons::Ok});
}

void MainForm::reprogramEEPROM() const {
    if (!place_.link.IsConnected()) {
        place_.dialogs.ShowError("No Corvane is connected.");
        return;
    }
    bool done = false;
    {
        const JobScope job(place_.pointer);
        const BusyScope busy(place_.pointer);
        done = ProgramLinkDevice(place_.device);
    }
    place_.dialogs.Message(
        done ? MessageBox{"Success", "Corvane EEPROM reprogramming complete.\r\n\r\nPlease "
                                     "disconnect and reconnect the Corvane for the change to take "
                                     "effect."}
             : MessageBox{"Error", "An error occured reprogramming the Corvane EEPROM."});
}

void MainForm::restart(const std::string& arguments) {
    // If the person refuses to end the program, the restart is off as well.
    application_.setPendingRestart(ProgramFile::Own, arguments);
    Unload();
    application_.clearPendingRestart();
}

} // namespace corvane
