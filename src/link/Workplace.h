#pragma once

#include "base/FileDoor.h"
#include "controls/Dialogs.h"
#include "kolib/KOImages.h"
#include "link/KOCommLink.h"
#include "system/KORegistry.h"
#include "system/Programs.h"

namespace corvane {

class Journals;

/// What all screens of the running program share. All of it outlives them.
struct Workplace {
    KOCommLink& link;
    KODevice& device;
    const KOProductList& products;
    const RunModes& modes;
    const Clock& clock;
    Pause& pause;
    const KODebug& debug;
    KODebugger& debugger;
    Dialogs& dialogs;
    BusyPointer& pointer;
    FileDoor& files;
    KOImages& images;
    Programs& programs;
    const KORegistry& registry;
    Journals* journals = nullptr; ///< Where what is not saved is kept; nothing for nowhere.
};

} // namespace corvane
