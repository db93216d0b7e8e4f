#pragma once

#include "base/KODebug.h"
#include "history/Journals.h"
#include "kolib/devices/LinkDevices.h"
#include "kolib/wire/HostSession.h"
#include "link/Workplace.h"
#include "system/DiskFiles.h"
#include "system/SignalGuard.h"
#include "system/SystemClock.h"

#include <functional>
#include <memory>

namespace corvane {

/// All that a process has one of, put together over the real devices and the real clock. Made
/// once in `main` and handed down by reference.
class Program {
  public:
    /// Puts another door before the devices, such as one that lets a single device through.
    using DeviceDoor = std::function<std::unique_ptr<KODevice>(KODevice& devices)>;

    explicit Program(const RunModes& modes, const DeviceDoor& door = {});
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Called again and again during blocking operations, for repainting.
    void setRepaint(std::function<void()> repaint) { pause_.repaint = std::move(repaint); }

    /// Lets time pass between two steps of a wait.
    void pause() { pause_.pause(); }
    /// A signal that asks the process to end waits until the product is let go, has its power and
    /// the system has its device back. To be called at every step of the main loop.
    void leaveIfAsked();

    /// All of it for screens that use these dialogs and this pointer.
    [[nodiscard]] Workplace workplace(Dialogs& dialogs, BusyPointer& pointer);

    const RunModes modes;
    KODebugger debugger;
    KODebug debug;
    SystemClock clock;
    DiskFiles files;
    std::unique_ptr<KOImages> images = MakeImages();
    SystemPrograms programs;
    SettingsStore settings;
    KORegistry registry{settings};
    Journals journals; ///< For screens that a person edits at.

  private:
    struct DevicePause final : Pause {
        DevicePause(Program& program, KODevice& openDevice)
            : device(openDevice), program_(program) {}
        void pause() override;

        KODevice& device;
        std::function<void()> repaint;

      private:
        Program& program_;
    };

    SignalGuard guard_;

    wire::HostSession session_;
    LinkDevices devices_;
    Connection onHolding_;
    std::unique_ptr<KODevice> door_;
    DevicePause pause_;
    bool leaving_ = false;

  public:
    KODevice& device;
    KOProductList products;
    KOCommLink link;
};

} // namespace corvane
