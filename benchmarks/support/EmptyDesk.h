#pragma once

#include "kolib/devices/LinkDevices.h"
#include "kolib/images/QtImages.h"
#include "kolib/wire/HostSession.h"
#include "link/Workplace.h"
#include "support/Nobody.h"
#include "system/DiskFiles.h"
#include "system/SystemClock.h"

namespace corvane {

/// A place to work at with nobody there, and with no devices but these.
struct EmptyDesk {
    using Sources = std::vector<std::unique_ptr<LinkSource>>;

    explicit EmptyDesk(std::string_view vendor = "KO", Sources sources = {})
        : device(std::move(sources), packets, debug, clock), products(vendor, debug) {}

    struct DevicePause final : Pause {
        explicit DevicePause(KODevice& openDevice) : device(openDevice) {}
        void pause() override { device.WaitForData(1); }
        KODevice& device;
    };

    Nobody nobody;
    DiskFiles files;
    QtImages images;
    SystemClock clock;
    RunModes modes;
    KODebug debug{modes};
    KODebugger debugger;
    std::size_t bytesOnTheWire = 0;
    std::function<void(std::span<const std::uint8_t>)> count =
        [this](std::span<const std::uint8_t> frame) { bytesOnTheWire += frame.size(); };
    wire::HostSession packets{clock, {count, count, count, {}}};
    LinkDevices device;
    KOProductList products;
    DevicePause pause{device};
    KOCommLink link{{device, packets, products, modes, clock, debug, pause}};
    SystemPrograms programs;
    SettingsStore store{"/nonexistent", files};
    KORegistry registry{store};
    Workplace place{link,     device, products, modes, clock,  pause,    debug,
                    debugger, nobody, nobody,   files, images, programs, registry};
};

} // namespace corvane
