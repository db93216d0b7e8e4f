#pragma once

#include "history/History.h"
#include "support/Person.h"
#include "system/DiskFiles.h"

namespace corvane {

/// The simplest document there can be: lines of text, appended by changes.
class Notes final : public HistoryHost {
  public:
    explicit Notes(const History::Surroundings& with) : history(*this, with) {
        history.setFilter("Notes (*.note)|*.note");
        history.setTypeCode("Notes");
        history.setVersionCode(2);
        history.setLoader(std::make_unique<Loader>());
        onReset_ = history.ResettingToDefaults.connect([this] { lines.clear(); });
    }

    void add(const std::string& line, bool dontCountAsDirty = false) {
        auto change = std::make_unique<Addition>();
        change->notes = this;
        change->line = line;
        history.Record(std::move(change), dontCountAsDirty);
    }

    History& HistoryObject() { return history; }

    std::vector<std::string> lines;
    History history;

  private:
    struct Addition final : UndoableChange {
        Notes* notes = nullptr;
        std::string line;

        void Redo() override { notes->lines.push_back(line); }
        void Undo() override { notes->lines.pop_back(); }
        void Serialize(std::string& prefix, std::vector<std::string>& Data) const override {
            prefix = "Note";
            Data = {line};
        }
        bool Deserialize(History& owner, std::string_view,
                         const std::vector<std::string>& Data) override {
            notes = dynamic_cast<Notes*>(&owner.ManagingControl());
            if (Data.size() != 1)
                return false;
            line = Data[0];
            return true;
        }
        bool isApplicable() const override { return IsUtf8(line); }
    };
    struct Loader final : HistoryLoader {
        std::unique_ptr<UndoableChange> Load(std::string_view prefix) const override {
            return prefix == "Note" ? std::make_unique<Addition>() : nullptr;
        }
        bool FitTogether(const UndoableChanges& changes) const override {
            return changes.size() != 13;
        }
    };

    Connection onReset_;
};

} // namespace corvane
