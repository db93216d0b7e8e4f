#pragma once

#include "link/KOInterface.h"
#include "support/Desk.h"

namespace corvane {

/// The editor of a product at work on a desk, with a file for the memory of what hangs on the link.
template<class Control>
class ControlBench {
  public:
    Desk desk;
    Control control = [this] {
        if constexpr (std::is_constructible_v<Control, const Workplace&>)
            return Control(desk.place);
        else
            return Control(desk.place, desk.keys);
    }();
    History& history = *control.HistoryObject();

    /// Opens a file with this content; what was there is lost. What was told, or nothing.
    std::string open(const std::string& content) {
        const bool asks = history.SaveDirty();
        if (asks)
            desk.person.answers.push_front(Answer::No);
        static_cast<void>(history.OpenHistory(desk.folder.file("opened", content)));
        if (asks)
            desk.person.messages.erase(desk.person.messages.begin());
        return desk.person.takeMessage();
    }
    /// What the document's file would hold, without the header.
    [[nodiscard]] std::string lines() {
        desk.person.files.push_front(desk.folder.path() / "lines");
        if (!history.SaveHistoryAs())
            throw std::runtime_error("the document could not be saved");
        const std::string content = desk.folder.content("lines");
        return content.substr(content.find('\n') + 1);
    }
    LinkBench::Plugged& plugIn(std::string_view product, const std::string& faults = {},
                               std::size_t size = 256) {
        LinkBench::Plugged& plugged = desk.bench.plugIn(
            product, faults, 1,
            {.eepromFile = desk.folder.path() / "memory", .eepromSize = size, .writeTime = {}});
        desk.bench.run(100); // until the link has been found
        return plugged;
    }
    /// Bytes of the product's memory.
    [[nodiscard]] bench::Bytes memory(std::size_t address, std::size_t length) const {
        const std::string content = desk.folder.content("memory").substr(address, length);
        return {content.begin(), content.end()};
    }
    void setMemory(const bench::Bytes& bytes) const {
        desk.folder.file("memory", std::string(bytes.begin(), bytes.end()));
    }
    /// Caption of the status line, an error with a mark before it.
    [[nodiscard]] std::string status() const {
        return (control.ProgrammingLabel.ForeColor() == 255 ? "! " : "") +
               control.ProgrammingLabel.Caption();
    }
    /// Nothing of a job is left.
    [[nodiscard]] bool idle() const {
        return !desk.bench.link.MaintainConnection() && !desk.bench.link.Negotiated() &&
               !desk.person.busy && !desk.person.sawBusyMessage;
    }
};

} // namespace corvane
