// What the light editor does with the controller on the link: programming runs, and the dump of its
// memory.
#include "base/Raised.h"
#include "light/LumoraControl.h"

#include <algorithm>
#include <array>

namespace corvane {

namespace {

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
    if (running_)
        return;
    tracks.Commit();
    const BusyScope busy(place_.pointer);
    const Raised running(running_);
    LumoraProgrammer run(place_, document);
    if (programming_ != nullptr)
        programming_->close(); // that of an earlier run
    programming_ = std::make_unique<LumoraProgramming>();
    programming_->SetProgrammer(run);
    ProgrammingShown.raise(*programming_);
    static_cast<void>(run.run()); // the dialog tells it
}

void LumoraControl::ProcessPacket(const KOPacket& packet) {
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
    if (running_)
        return;
    const Raised running(running_);
    const BusyScope busy(place_.pointer);
    KOCommLink& link = place_.link;
    if (const JobOutcome reached = ReachProduct(place_, ControlClass::Lumora, false);
        !reached.done()) {
        link.Disconnect(false);
        writeLine("Couldn't connect.");
        return writeLine(reached.cure);
    }
    writeLine("Connected. Requesting EEPROM.");
    if (link.Product().deviceType.Equals(Version(1, 1))) {
        KOPacket request = link.makePacket();
        request.setChannel(DumpRequestChannel);
        static_cast<void>(request.Send()); // what comes back is written as it comes
        return;
    }
    GenericEEPROMProgrammer reader(place_);
    KOBuffer bytes;
    if (reader.ReadExactly(0, ImageLength, bytes))
        writeLine("EEPROM: " + bytes.ToString());
    else
        writeLine("Couldn't read EEPROM.");
    link.Disconnect(false);
}

void LumoraControl::writeLine(const std::string& text) const {
    if (debugger_ != nullptr)
        debugger_->WriteLine(text);
}

} // namespace corvane
