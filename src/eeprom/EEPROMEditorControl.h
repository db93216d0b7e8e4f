#pragma once

#include "controls/JobButtons.h"
#include "controls/StatusLine.h"
#include "eeprom/EEPROMEntry.h"
#include "link/JobOutcome.h"
#include "link/ProductControl.h"
#include "link/Workplace.h"

namespace corvane {

class GenericEEPROMProgrammer;

/// The editor of any microcontroller's EEPROM: a list of variables by address, which are read from
/// the product and programmed into it.
class EEPROMEditorControl final : public ProductControl {
  public:
    explicit EEPROMEditorControl(const Workplace& place);

    void UpdateReadyState(bool) override {}
    [[nodiscard]] History* HistoryObject() override { return &document.HistoryObject(); }
    [[nodiscard]] std::optional<std::string> ProductName() const override {
        return "EEPROM Editor";
    }

    /// Reads the values of all variables. What the buttons do, as the next one.
    JobOutcome ReadSettings();
    /// Writes the values of all variables. Asks before it writes into a product of another kind.
    JobOutcome Program();

    // How rows are placed, in twips.
    static constexpr int RowLeft = 120;
    static constexpr int RowStep = 375;
    static constexpr int RowHeight = 315;

    [[nodiscard]] int EntryCount() const { return static_cast<int>(slots_.size()); }
    /// From 1, in the order in which they were added. It is made when it is first asked for: only
    /// what someone looks at needs boxes.
    [[nodiscard]] EEPROMEntry& Entry(int index);
    /// Nothing if nobody has asked for it yet.
    [[nodiscard]] EEPROMEntry* EntryIfMade(int index) const;
    /// The indices of the rows by ascending address. None while a burst of changes is under way.
    [[nodiscard]] const std::vector<int>& rows() const { return rows_; }
    /// The row, from 0, of an entry; -1 if it has none.
    [[nodiscard]] int rowOf(const EEPROMEntry& entry) const;
    /// Place of the n-th row from 0, scrolled.
    [[nodiscard]] int rowTop(int row) const { return row * RowStep - VScroll.Value(); }
    [[nodiscard]] int rowWidth() const;
    /// The room for the rows and what of its width the scroll bar takes.
    void ResizeEntries(TwipSize size, int scrollBarWidth);
    /// Scrolls until this row is in view.
    void scrollTo(const EEPROMEntry& entry);

    Event<> Rearranged;                     ///< Rows have come, gone or moved.
    Event<const EEPROMEntry&> EntryLeaving; ///< This one is about to end.
    Event<EEPROMEntry&> FocusWanted;        ///< The person will go on with this one.
    Event<EEPROMEntry&> ValueFocusWanted;   ///< The same, with its value.

    KOEEPROMDocument document;

    TabStrip tabs{{{"Settings", {}}}};
    ScrollBar VScroll;
    Button NewVariableButton{"New Variable"};
    Button ReadSettingsButton{"Read Settings"};
    Button ProgramButton{"Program"};
    Label ProgrammingLabel;
    Label OverlapLabel; ///< Names variables that share bytes with others; empty if there are none.

    /// How a message names a variable: by the first line of its comments, or else its address.
    [[nodiscard]] std::string NameOf(int index) const;

  private:
    /// The first line of its comments.
    [[nodiscard]] std::string CommentOf(int index) const;
    void connectDocument();
    void connectRequests();
    [[nodiscard]] int indexOf(const EEPROMEntry& entry) const;
    void addEntry(int index);
    void removeEntry(int index);
    void showEntry(int index, std::string_view propertyName);
    void arrangementChanged();
    void rearrange();
    void updateScrolling();
    void nameOverlaps();
    [[nodiscard]] bool valuesAreSound();
    void newVariable();

    struct RunWords;
    template<class Job>
    JobOutcome run(const RunWords& words, bool writes, Job job);
    [[nodiscard]] JobOutcome mayWrite();
    [[nodiscard]] bool readVariable(GenericEEPROMProgrammer& reader, int index);
    [[nodiscard]] bool programVariable(GenericEEPROMProgrammer& writer, int index);
    void fitLength(KOBuffer& buffer, int index);

    Workplace place_;
    StatusLine status_{ProgrammingLabel, place_.dialogs, place_.pointer};
    JobButtons jobs_{place_.pointer};
    EEPROMRequests requests_;
    struct Slot {
        int id;
        bool conflicts = false;
        std::unique_ptr<EEPROMEntry> entry; // once asked for
    };
    BlockSequence<Slot> slots_;
    int lastId_ = 0;
    std::vector<int> rows_;
    bool frozen_ = false;
    bool arrangementDue_ = false;
    TwipSize area_;
    int scrollBarWidth_ = 0;
    bool running_ = false; // a job
    Connections on_;
};

} // namespace corvane
