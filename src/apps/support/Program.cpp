#include "apps/support/Program.h"

#include "kolib/devices/UsbLinkSource.h"
#include "kolib/devices/VirtualLinkSource.h"
#include "system/UserFolders.h"

namespace corvane {

namespace {

DebugCallbacks callbacksTo(const KODebug& debug) {
    const auto lineWith = [&debug](const char* prefix) {
        return [&debug, prefix](std::span<const std::uint8_t> bytes) {
            debug.DebugWriteBytes(prefix, bytes);
        };
    };
    return {lineWith("DBG: RECV: "), lineWith("DBG: SEND: "), lineWith("DBG: SNDT: "),
            lineWith("DBG: OOB: ")};
}

// Virtual links come first, so that real hardware has the higher index and is preferred.
std::vector<std::unique_ptr<LinkSource>> allSources(const Clock& clock) {
    std::vector<std::unique_ptr<LinkSource>> sources;
    sources.push_back(std::make_unique<VirtualLinkSource>(VirtualLinkSource::userFolder(), clock));
    sources.push_back(std::make_unique<UsbLinkSource>(clock));
    return sources;
}

} // namespace

Program::Program(const RunModes& runModes, const DeviceDoor& door)
    : modes(runModes),
      debug(modes),
      settings(ConfigurationFolder(), files),
      journals(StateFolder() / "journals", files),
      session_(clock, callbacksTo(debug)),
      devices_(allSources(clock), session_, debug, clock),
      onHolding_(devices_.HoldingChanged.connect(
          [this](bool holding) { holding ? guard_.hold() : guard_.letGo(); })),
      door_(door ? door(devices_) : nullptr),
      pause_(*this, door_ ? *door_ : devices_),
      device(pause_.device),
      products(ProgramVendor(), debug),
      link({device, session_, products, modes, clock, debug, pause_}) {
    debug.SetDebugger(&debugger);
}

Workplace Program::workplace(Dialogs& dialogs, BusyPointer& pointer) {
    return {link,     device,  products, modes, clock,   pause_,   debug,
            debugger, dialogs, pointer,  files, *images, programs, registry};
}

void Program::DevicePause::pause() {
    device.WaitForData(1);
    if (repaint)
        repaint();
    program_.leaveIfAsked();
}

void Program::leaveIfAsked() {
    if (!guard_.noted() || leaving_)
        return;
    leaving_ = true;
    link.DisconnectAndBlock(false);
    device.CloseDevice(); // and the guard lets go
}

} // namespace corvane
