#include "shell/MainMenu.h"

namespace corvane {

MainMenu::MainMenu() {
    for (MenuItem* item : {&mnuFileNew, &mnuFileOpen, &mnuFileSave, &mnuFileSaveAs, &mnuEditUndo,
                           &mnuEditRedo, &mnuEditCut, &mnuEditCopy, &mnuEditPaste, &mnuEditDelete})
        item->setEnabled(false);
    for (MenuItem* item : {&mnuFileMRUSeparator, &mnuOptions, &mnuOptionsAutopatch})
        item->setVisible(false);
    mnuFileNew.setToolTipText("Begin a new document");
    mnuHelpCheckForUpdatesNow.setEnabled(false, "This build of Corvane looks for no new versions.");
    mnuHelpCheckForUpdatesNow.setToolTipText("Look for a new version, and tell how it stands");
    mnuHelpTroubleshootingPowerCycle.setToolTipText(
        "Take the power from what hangs on the link, and give it back");
}

std::vector<MenuPlace> MainMenu::layout() {
    const auto items = [](std::initializer_list<MenuItem*> list) {
        std::vector<MenuPlace> places;
        for (MenuItem* item : list)
            places.push_back({item, {}, nullptr});
        return places;
    };
    std::vector<MenuPlace> file = items(
        {&mnuFileNew, &mnuFileSep1, &mnuFileOpen, &mnuFileSave, &mnuFileSaveAs, &mnuFileSep2});
    file.push_back({nullptr, {}, &mnuFileMRU});
    file.push_back({&mnuFileMRUSeparator, {}, nullptr});
    file.push_back({&mnuFileExit, {}, nullptr});

    std::vector<MenuPlace> options = items({&mnuOptionsAutopatch, &mnuOptionsSeparator});
    options.push_back({nullptr, {}, &mnuOptionsList});

    std::vector<MenuPlace> troubleshooting =
        items({&mnuHelpTroubleshootingPowerCycle, &mnuHelpTroubleshootingReinstallCorvaneDrivers,
               &mnuHelpTroubleshootingReprogramCorvaneEEPROM});
    troubleshooting.push_back({&mnuHelpTroubleshootingRestartCorvane,
                               items({&mnuHelpTroubleshootingRestartCorvaneInDebugMode,
                                      &mnuHelpTroubleshootingRestartCorvaneNormally}),
                               nullptr});
    return {
        {&mnuFile, std::move(file), nullptr},
        {&mnuEdit,
         items({&mnuEditUndo, &mnuEditRedo, &mnuEditCutPasteSeparator, &mnuEditCut, &mnuEditCopy,
                &mnuEditPaste, &mnuEditDelete}),
         nullptr},
        {&mnuOptions, std::move(options), nullptr},
        {&mnuHelp,
         {{&mnuHelpTroubleshooting, std::move(troubleshooting), nullptr},
          {&mnuHelpCheckForUpdatesNow, {}, nullptr},
          {&mnuHelpAbout, {}, nullptr}},
         nullptr},
    };
}

} // namespace corvane
