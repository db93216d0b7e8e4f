#pragma once

#include "controls/BottomBand.h"
#include "controls/MenuList.h"
#include "history/History.h"
#include "link/KOInterface.h"
#include "link/Workplace.h"
#include "shell/AboutForm.h"
#include "shell/DebugForm.h"
#include "shell/MRUList.h"
#include "shell/MainMenu.h"
#include "shell/ProductTable.h"
#include "shell/WindowSizes.h"

namespace corvane {

/// Where the band stands, in twips.
struct BandPlace {
    bool visible = false;
    int top = 0;
    int height = 0;
    int width = 0;

    bool operator==(const BandPlace&) const = default;
};

/// The one main window, without its looks: holds the product control on show, the menu bar and
/// the timer that drives the link. The file commands go to the control's history and the edit
/// commands to the control; the window decides what shows and what is enabled.
class MainForm {
  public:
    /// All of it must outlive the form.
    MainForm(const Workplace& place, const ProductControls& controls, Application& application);
    ~MainForm();
    MainForm(const MainForm&) = delete;
    MainForm& operator=(const MainForm&) = delete;

    Event<> TitleChanged;
    /// The control on show is about to go; its view must let go of it.
    Event<> ControlLeaving;
    /// Another control shows.
    Event<> ControlChanged;
    Event<> LayoutChanged;
    /// The client area that the control would like: the window takes its normal state, this size,
    /// and the middle of the screen.
    Event<TwipSize> ClientSizeWanted;
    /// The program ends: the window goes from the screen, before what it shows does.
    Event<> Ending;
    /// The form has been unloaded, and with it the program ends.
    Event<> Closed;

    /// Shows the first control and opens the file, if there is one.
    void Initialize(const std::string& fileToOpen);
    /// Opens a file in the control on show; without a document there the call does nothing.
    void OpenFile(const std::string& filename);
    [[nodiscard]] History* HistoryObject() const { return history_; }
    void setHistoryObject(History* history);
    /// The band must outlive the form.
    void setBand(BottomBand& band);
    /// There is nowhere to look for updates: the option for it says so.
    void setNoUpdates();
    /// The window takes the size that a screen was last left with. They must outlive the form.
    void setWindowSizes(WindowSizes& sizes) { sizes_ = &sizes; }
    /// Of the client area. `isUsual` unless the window fills the screen.
    void Resize(TwipSize clientSize, bool isUsual = true);
    /// Asks to end the program. False if the person would rather go on.
    bool Unload();

    [[nodiscard]] const std::string& Title() const { return title_; }
    [[nodiscard]] ProductControl* control() const { return interface_->control(); }
    [[nodiscard]] KOInterface& interface() { return *interface_; }
    [[nodiscard]] const BandPlace& bandPlace() const { return bandPlace_; }

    MainMenu menu;
    Timer tmrUpdate{50, true};
    Timer tmrTell{1, false};       ///< Tells what could not be told in the middle of a change.
    Timer tmrJournals{500, false}; ///< Looks whether what keeps changes safe is there still.
    AboutForm about;
    DebugForm debugForm;

  private:
    void connectJournals();
    void tellLater(std::string text);
    void connectMenu();
    void letGoOfControl();
    void swapControl(std::unique_ptr<ProductControl>& current, const std::string& newName);
    void adoptOptionsMenu();
    void updateAllMenus();
    void updateClipboardMenu();
    void updateUndoMenu();
    void updateTitle();
    void updateRecentFiles();
    void updateOptionsMenu();
    void toggleAutopatch();
    void doLayout();
    void layOut();
    void takeKeptSize();
    void keepSize() const;
    void powerCycle() const;
    void reinstallDrivers() const;
    void reprogramEEPROM() const;
    void restart(const std::string& arguments);

    Workplace place_;
    const ProductControls& controls_;
    Application& application_;
    KOOptions options_;
    std::unique_ptr<KOInterface> interface_;
    std::unique_ptr<MRUList> recentFiles_;
    MenuList noOptions_;
    MenuList* optionsMenu_ = &noOptions_;
    ClipboardCommands* clipboard_ = nullptr;
    History* history_ = nullptr;
    BottomBand* band_ = nullptr;
    std::vector<std::string> toTell_;
    std::string title_ = ProgramName;
    TwipSize clientSize_{11010, 7770};
    TwipSize usualSize_ = clientSize_;
    WindowSizes* sizes_ = nullptr;
    BandPlace bandPlace_;
    bool unloaded_ = false;
    Connections on_;
    Connections onHistory_;
    Connections onControl_;
};

} // namespace corvane
