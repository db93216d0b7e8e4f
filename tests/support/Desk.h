#pragma once

#include "controls/Inputs.h"
#include "kolib/KOImages.h"
#include "link/Workplace.h"
#include "support/LinkBench.h"
#include "support/Person.h"
#include "support/TemporaryFolder.h"
#include "system/DiskFiles.h"

namespace corvane {

/// Programs that are only noted down.
class NotedPrograms final : public Programs {
  public:
    std::vector<std::string> started;
    bool fails = false;

    bool Start(const std::string& path, const std::string& arguments) override {
        started.push_back(path + "|" + arguments);
        return !fails;
    }
    void OpenInBrowser(const std::string& target) override { started.push_back(target); }
    std::string ProgramDirectory() const override { return "/opt/corvane/"; }
};

/// Keys that are held as the test says.
class HeldKeys final : public KOKeyboard {
  public:
    bool ctrl = false;
    bool shift = false;

    bool CtrlHeld() const override { return ctrl; }
    bool ShiftHeld() const override { return shift; }
};

/// A whole place to work at: a virtual link on a manual clock, real files and settings in a folder
/// of its own, and a person.
class Desk {
  public:
    explicit Desk(RunModes modes = {.DebugMode = true}, std::string_view vendor = "KO")
        : bench(modes, vendor) {}
    /// Where the next start works after one that was killed.
    explicit Desk(LinkBench& killed) : bench(killed) {}

    TemporaryFolder folder;
    LinkBench bench;
    Person person;
    DiskFiles files;
    std::unique_ptr<KOImages> ownImages = MakeImages();
    KOImages& images = *ownImages;
    NotedPrograms programs;
    HeldKeys keys;
    SettingsStore store{folder.path() / "config", files};
    KORegistry registry{store};
    StepPause pause{bench.clock};
    Workplace place{bench.link, bench.device, bench.products, bench.modes, bench.clock,
                    pause,      bench.debug,  bench.debugger, person,      person,
                    files,      images,       programs,       registry};
};

} // namespace corvane
