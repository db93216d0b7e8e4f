// What the light editor does with the controller on the link: programming runs, and the dump of its
// memory.
#include "light/LumoraControl.h"

#include <algorithm>
#include <array>

namespace corvane {

namespace {

constexpr const char* ControlClass = "Corvane.LumoraControl";
constexpr int DumpRequestChannel = 149;
constexpr int ImageLength = LumoraImageCompiler::ImageLength;

/// A table of the older controller as it comes in a dump.
struct DumpTable {
    int channel;
    const char* label;
};

constexpr std::array dumpTables{DumpTable{25, "programT: "},     DumpTable{26, "programH: "},
                                DumpTable{27, "programL: "},     DumpTable{28, "program: "},
                                DumpTable{29, "hysteresis: "},   DumpTable{30, "defaults: "},
                                DumpTable{31, "turnoffpoints: "}};

} // namespace

void LumoraControl::program() {
    if (programmer_ != nullptr || dumper_ != nullptr)
        return;
    tracks.Commit();
    BusyScope busy(place_.pointer);
    LumoraProgrammer run(place_, document);
    programmer_ = &run;
    std::vector<Connection> ends;
    const auto endOn = [&](auto& event) {
        ends.push_back(event.connect([&](auto...) {
            busy.end();
            programmer_ = nullptr;
        }));
    };
    endOn(run.ConnectionFailed);
    endOn(run.ProgrammingComplete);
    endOn(run.ProgrammingCanceled);
    endOn(run.ProgrammingFailed);
    endOn(run.ProgrammingFailedDueToCodeSpace);
    if (programming_ != nullptr)
        programming_->Closed.raise(); // that of an earlier run
    programming_ = std::make_unique<LumoraProgramming>();
    programming_->SetProgrammer(run);
    ProgrammingShown.raise(*programming_);
    run.BeginProgramming();
    while (programmer_ != nullptr) {
        place_.link.Update();
        if (programmer_ != nullptr)
            programmer_->Update();
        if (programmer_ != nullptr)
            place_.pause.pause();
    }
}

void LumoraControl::ProcessPacket(const KOPacket& packet) {
    if (programmer_ != nullptr)
        programmer_->ProcessPacket(packet);
    if (dumper_ != nullptr)
        dumper_->ProcessPacket(packet);
    const auto* const table =
        std::find_if(dumpTables.begin(), dumpTables.end(), [&packet](const DumpTable& candidate) {
            return candidate.channel == packet.Channel();
        });
    if (table == dumpTables.end())
        return;
    writeLine(table->label + packet.buffer().ToString());
    if (table == &dumpTables.back())
        place_.link.setMaintainConnection(false);
}

void LumoraControl::dump() {
    if (programmer_ != nullptr || dumper_ != nullptr)
        return;
    const BusyScope busy(place_.pointer);
    KOCommLink& link = place_.link;
    if (!link.Connect(ControlClass, false)) {
        link.Disconnect(false);
        return writeLine("Couldn't connect.");
    }
    writeLine("Connected. Requesting EEPROM.");
    if (link.deviceType().Equals(Version(1, 1))) {
        KOPacket request = link.makePacket();
        request.setChannel(DumpRequestChannel);
        static_cast<void>(request.Send()); // what comes back is written as it comes
        return;
    }
    GenericEEPROMProgrammer reader(place_);
    dumper_ = &reader;
    KOBuffer bytes;
    if (reader.ReadEEPROM(0, ImageLength, bytes))
        writeLine("EEPROM: " + bytes.ToString());
    else
        writeLine("Couldn't read EEPROM.");
    dumper_ = nullptr;
    link.Disconnect(false);
}

void LumoraControl::writeLine(const std::string& text) const {
    if (debugger_ != nullptr)
        debugger_->WriteLine(text);
}

} // namespace corvane
