#pragma once

#include "controls/Menu.h"

namespace corvane {

/// The entries of the main window's menu bar under their names, and their order.
struct MainMenu {
    MainMenu();

    /// The menus with their entries, for the view.
    [[nodiscard]] std::vector<MenuPlace> layout();

    MenuItem mnuFile{"&File"};
    MenuItem mnuFileNew{"&New", "Ctrl+N"};
    MenuItem mnuFileSep1{MenuItem::Separator};
    MenuItem mnuFileOpen{"&Open...", "Ctrl+O"};
    MenuItem mnuFileSave{"&Save", "Ctrl+S"};
    MenuItem mnuFileSaveAs{"Save &As..."};
    MenuItem mnuFileSep2{MenuItem::Separator};
    MenuArray mnuFileMRU;
    MenuItem mnuFileMRUSeparator{MenuItem::Separator};
    MenuItem mnuFileExit{"E&xit"};

    MenuItem mnuEdit{"&Edit"};
    MenuItem mnuEditUndo{"&Undo", "Ctrl+Z"};
    MenuItem mnuEditRedo{"&Redo", "Ctrl+Y"};
    MenuItem mnuEditCutPasteSeparator{MenuItem::Separator};
    MenuItem mnuEditCut{"Cu&t", "Ctrl+X"};
    MenuItem mnuEditCopy{"&Copy", "Ctrl+C"};
    MenuItem mnuEditPaste{"&Paste", "Ctrl+V"};
    MenuItem mnuEditDelete{"&Delete", "Del"};

    MenuItem mnuOptions{"&Options"};
    MenuItem mnuOptionsAutopatch{"Automatically Check for &Updates"};
    MenuItem mnuOptionsSeparator{MenuItem::Separator};
    MenuArray mnuOptionsList;

    MenuItem mnuHelp{"&Help"};
    MenuItem mnuHelpTroubleshooting{"&Troubleshooting"};
    // The captions of these four carry the program's name and are written by the main form.
    MenuItem mnuHelpTroubleshootingPowerCycle{""};
    MenuItem mnuHelpTroubleshootingReinstallCorvaneDrivers{""};
    MenuItem mnuHelpTroubleshootingReprogramCorvaneEEPROM{""};
    MenuItem mnuHelpTroubleshootingRestartCorvane{""};
    MenuItem mnuHelpTroubleshootingRestartCorvaneInDebugMode{"In &Debug Mode"};
    MenuItem mnuHelpTroubleshootingRestartCorvaneNormally{"&Normally"};
    MenuItem mnuHelpCheckForUpdatesNow{"Check for Updates &Now"};
    MenuItem mnuHelpAbout{"&About..."};
};

} // namespace corvane
