#include "eeprom/EEPROMEditorControl.h"

#include "base/Assert.h"
#include "eeprom/EntryArrangement.h"

#include <algorithm>
#include <functional>

namespace corvane {

EEPROMEditorControl::EEPROMEditorControl(const Workplace& place)
    : document({place.dialogs, place.pointer, place.files, place.journals}), place_(place) {
    place.link.setMaintainConnection(false);
    NewVariableButton.setToolTipText("Add a variable behind all others");
    ReadSettingsButton.setToolTipText("Read the values of all variables from the product");
    ProgramButton.setToolTipText("Write the values of all variables into the product");
    VScroll.setVisible(false);
    connectDocument();
    connectRequests();
    on_(NewVariableButton.Click, [this] { newVariable(); });
    jobs_.add(ReadSettingsButton, [this] { ReadSettings(); });
    jobs_.add(
        ProgramButton, [this] { Program(); }, [this] { return valuesAreSound(); });
}

void EEPROMEditorControl::connectDocument() {
    on_(document.EntryAdded, [this](int index) { addEntry(index); });
    on_(document.EntryRemoved, [this](int index) { removeEntry(index); });
    on_(document.EntryChanged,
        [this](int index, std::string_view propertyName) { showEntry(index, propertyName); });
    History& history = document.HistoryObject();
    on_(history.Changed, [this] { status_.clear(); });
    on_(history.ResettingToDefaults, [this] { status_.clear(); });
    on_(history.Freezing, [this] { frozen_ = true; });
    on_(history.Unfreezing, [this](bool withoutRepaint) {
        frozen_ = false;
        if (!withoutRepaint && arrangementDue_)
            rearrange();
    });
}

EEPROMEntry& EEPROMEditorControl::Entry(int index) {
    Assert(index >= 1 && index <= EntryCount());
    Slot& slot = slots_[static_cast<std::size_t>(index) - 1];
    if (slot.entry == nullptr) {
        slot.entry =
            std::make_unique<EEPROMEntry>("EEPROMEntryID" + std::to_string(slot.id), requests_);
        slot.entry->Initialize(document.entry(index));
        slot.entry->setAddressConflicts(slot.conflicts);
    }
    return *slot.entry;
}

EEPROMEntry* EEPROMEditorControl::EntryIfMade(int index) const {
    Assert(index >= 1 && index <= EntryCount());
    return slots_[static_cast<std::size_t>(index) - 1].entry.get();
}

int EEPROMEditorControl::indexOf(const EEPROMEntry& entry) const {
    const auto place = std::find_if(slots_.begin(), slots_.end(), [&entry](const Slot& slot) {
        return slot.entry.get() == &entry;
    });
    Assert(place != slots_.end());
    return static_cast<int>(std::distance(slots_.begin(), place)) + 1;
}

int EEPROMEditorControl::rowOf(const EEPROMEntry& entry) const {
    const auto row = std::find(rows_.begin(), rows_.end(), indexOf(entry));
    return row == rows_.end() ? -1 : static_cast<int>(row - rows_.begin());
}

void EEPROMEditorControl::addEntry(int index) {
    // The row is made when someone looks at it: of thousands few are ever seen.
    slots_.insert(static_cast<std::size_t>(index) - 1, Slot{++lastId_, false, nullptr});
    rows_.clear();
    arrangementChanged();
}

void EEPROMEditorControl::removeEntry(int index) {
    const std::unique_ptr<EEPROMEntry> leaving =
        slots_.take(static_cast<std::size_t>(index) - 1).entry;
    rows_.clear(); // its indices are those of before
    if (leaving != nullptr)
        EntryLeaving.raise(*leaving); // a view lets go of the row while it is still there
    arrangementChanged();
}

void EEPROMEditorControl::showEntry(int index, std::string_view propertyName) {
    const EEPROMVariable& variable = document.entry(index);
    if (EEPROMEntry* entry = EntryIfMade(index)) {
        if (propertyName == KOEEPROMDocument::Address)
            entry->setAddress(variable.Address);
        else if (propertyName == KOEEPROMDocument::Length)
            entry->setLength(variable.Length);
        else if (propertyName == KOEEPROMDocument::Comments)
            entry->setComments(variable.Comments);
        else if (propertyName == KOEEPROMDocument::DataType)
            entry->setDataType(variable.DataType);
        else
            entry->setDataValue(variable.DataValue);
    }
    // A comment is the name by which another variable's conflict speaks of this one.
    const bool named = propertyName == KOEEPROMDocument::Comments &&
                       slots_[static_cast<std::size_t>(index) - 1].conflicts;
    if (named || propertyName == KOEEPROMDocument::Address ||
        propertyName == KOEEPROMDocument::Length)
        arrangementChanged();
}

// Rows

void EEPROMEditorControl::arrangementChanged() {
    arrangementDue_ = true;
    if (!frozen_)
        rearrange();
}

void EEPROMEditorControl::rearrange() {
    arrangementDue_ = false;
    EntryArrangement arrangement = Arrange(document);
    rows_ = std::move(arrangement.order);
    std::size_t i = 0;
    for (Slot& slot : slots_) {
        slot.conflicts = arrangement.conflicts[i++];
        if (slot.entry != nullptr)
            slot.entry->setAddressConflicts(slot.conflicts);
    }
    nameOverlaps();
    updateScrolling();
    Rearranged.raise();
}

void EEPROMEditorControl::updateScrolling() {
    const int surplus = EntryCount() * RowStep - area_.height;
    VScroll.setSteps(RowStep, std::max(RowStep, area_.height - RowStep));
    VScroll.setMax(surplus);
    VScroll.setVisible(surplus > 0);
}

int EEPROMEditorControl::rowWidth() const {
    return std::max(0, area_.width - scrollBarWidth_ - 2 * RowLeft);
}

void EEPROMEditorControl::ResizeEntries(TwipSize size, int scrollBarWidth) {
    if (size == area_ && scrollBarWidth == scrollBarWidth_)
        return;
    area_ = size;
    scrollBarWidth_ = scrollBarWidth;
    updateScrolling();
    Rearranged.raise();
}

void EEPROMEditorControl::scrollTo(const EEPROMEntry& entry) {
    const int row = rowOf(entry);
    if (row < 0)
        return;
    const int top = row * RowStep;
    VScroll.setValue(std::clamp(VScroll.Value(), top + RowStep - area_.height, top));
}

// What the person wants

void EEPROMEditorControl::connectRequests() {
    const auto records = [this](auto& request, std::string_view propertyName, auto asText) {
        on_(request, [this, propertyName, asText](const EEPROMEntry& entry, const auto& value) {
            document.record(indexOf(entry), propertyName, asText(value));
        });
    };
    const auto number = [](int value) { return std::to_string(value); };
    records(requests_.AddressChanged, KOEEPROMDocument::Address, number);
    records(requests_.LengthChanged, KOEEPROMDocument::Length, number);
    records(requests_.CommentsChanged, KOEEPROMDocument::Comments, std::identity());
    records(requests_.DataTypeChanged, KOEEPROMDocument::DataType, std::identity());
    records(requests_.DataValueChanged, KOEEPROMDocument::DataValue, HexText);
    on_(requests_.Removing,
        [this](const EEPROMEntry& entry) { document.recordRemoving(indexOf(entry)); });
}

void EEPROMEditorControl::newVariable() {
    int next = 0;
    for (int index = 1; index <= EntryCount(); ++index)
        next = std::max(next, document.entry(index).Address + document.entry(index).Length);
    document.recordAdding(EntryCount() + 1, {next, 1, {}, {}, {}});
    FocusWanted.raise(Entry(EntryCount()));
}

} // namespace corvane
