#pragma once

#include "eeprom/KOEEPROMDocument.h"
#include "history/TextChange.h"

namespace corvane {

/// A change of a list of variables.
class KOEEPROMUndoableChange : public UndoableChange {
  public:
    /// Whether the variable is there when there are `count` of them; `count` is then brought to how
    /// many there are after the change.
    [[nodiscard]] virtual bool fits(int& count) const = 0;
};

/// A property of a variable, as the text that `Data` gives and takes.
class KOEEPROMUndoableTextChange final
    : public TextChange<KOEEPROMDocument, KOEEPROMUndoableChange> {
  public:
    [[nodiscard]] bool fits(int& count) const override { return index() <= count; }
    [[nodiscard]] bool isApplicable() const override;

  protected:
    [[nodiscard]] bool isSound() const override;
};

/// A variable comes or goes.
class KOEEPROMUndoableListChange final : public KOEEPROMUndoableChange {
  public:
    static constexpr std::string_view AddPrefix = "KOEEPROMListAdd";
    static constexpr std::string_view RemovePrefix = "KOEEPROMListRemove";

    void Initialize(bool adding, KOEEPROMDocument& document, int index, EEPROMVariable variable);
    void Redo() override { adding_ ? add() : remove(); }
    void Undo() override { adding_ ? remove() : add(); }
    void Serialize(std::string& prefix, std::vector<std::string>& Data) const override;
    [[nodiscard]] bool Deserialize(History& history, std::string_view prefix,
                                   const std::vector<std::string>& Data) override;
    [[nodiscard]] bool fits(int& count) const override;
    [[nodiscard]] bool isApplicable() const override;

  private:
    void add() const;
    void remove() const;

    bool adding_ = false;
    KOEEPROMDocument* document_ = nullptr;
    int index_ = 0;
    EEPROMVariable variable_;
};

class KOEEPROMHistoryLoader final : public HistoryLoader {
  public:
    [[nodiscard]] std::unique_ptr<UndoableChange> Load(std::string_view prefix) const override;
    [[nodiscard]] bool FitTogether(const UndoableChanges& changes) const override;
};

} // namespace corvane
