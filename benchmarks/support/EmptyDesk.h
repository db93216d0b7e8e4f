#pragma once

#include "kolib/devices/LinkDevices.h"
#include "kolib/images/QtImages.h"
#include "kolib/text/TextFiles.h"
#include "kolib/wire/HostSession.h"
#include "link/Workplace.h"
#include "support/Nobody.h"
#include "system/DiskFiles.h"
#include "system/SystemClock.h"

namespace corvane {

/// A place to work at without devices and with nobody there.
struct EmptyDesk {
    struct NoPause final : Pause {
        void pause() override {}
    };

    Nobody nobody;
    DiskFiles files;
    TextFiles text{files};
    QtImages images;
    SystemClock clock;
    RunModes modes;
    KODebug debug{modes};
    KODebugger debugger;
    wire::HostSession packets{clock, {}};
    LinkDevices device{{}, packets, debug};
    KOProductList products{"KO", debug};
    NoPause pause;
    KOCommLink link{{device, packets, products, modes, clock, debug, pause}};
    SystemPrograms programs;
    SettingsStore store{"/nonexistent", files};
    KORegistry registry{store};
    Workplace place{link,     device, products, modes, clock,  pause,    debug,
                    debugger, nobody, nobody,   text,  images, programs, registry};
};

} // namespace corvane
