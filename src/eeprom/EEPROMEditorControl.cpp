#include "eeprom/EEPROMEditorControl.h"

#include "base/Assert.h"
#include "eeprom/EntryArrangement.h"

#include <algorithm>

namespace corvane {

EEPROMEditorControl::EEPROMEditorControl(const Workplace& place)
    : document({place.dialogs, place.pointer, place.text}), place_(place) {
    place.link.setMaintainConnection(false);
    NewVariableButton.setToolTipText("Add a variable behind all others");
    ReadSettingsButton.setToolTipText("Read the values of all variables from the product");
    ProgramButton.setToolTipText("Write the values of all variables into the product");
    VScroll.setVisible(false);
    connectDocument();
    const auto on = [this](auto& event, auto react) {
        connections_.push_back(event.connect(react));
    };
    on(messenger_.MessageReceived,
       [this](std::string_view message, const void* sender, const MessageValue& value) {
           heard(message, sender, value);
       });
    on(NewVariableButton.Click, [this] { newVariable(); });
    on(ReadSettingsButton.Click, [this] { readSettings(); });
    on(ProgramButton.Click, [this] { program(); });
}

void EEPROMEditorControl::connectDocument() {
    const auto on = [this](auto& event, auto react) {
        connections_.push_back(event.connect(react));
    };
    on(document.EntryAdded, [this](int index) { addEntry(index); });
    on(document.EntryRemoved, [this](int index) { removeEntry(index); });
    on(document.EntryChanged,
       [this](int index, std::string_view propertyName) { showEntry(index, propertyName); });
    History& history = document.HistoryObject();
    on(history.Changed, [this] { status_.clear(); });
    on(history.ResettingToDefaults, [this] { status_.clear(); });
    on(history.Freezing, [this] { frozen_ = true; });
    on(history.Unfreezing, [this](bool withoutRepaint) {
        frozen_ = false;
        if (!withoutRepaint && arrangementDue_)
            rearrange();
    });
}

EEPROMEntry& EEPROMEditorControl::Entry(int index) const {
    Assert(index >= 1 && index <= EntryCount());
    return *entries_[static_cast<std::size_t>(index) - 1];
}

void EEPROMEditorControl::addEntry(int index) {
    auto entry = std::make_unique<EEPROMEntry>("EEPROMEntryID" + std::to_string(++nextEntryId_));
    entry->setMessenger(messenger_);
    entry->Initialize(document.entry(index));
    entries_.insert(entries_.begin() + (index - 1), std::move(entry));
    arrangementChanged();
}

void EEPROMEditorControl::removeEntry(int index) {
    const auto place = entries_.begin() + (index - 1);
    const std::unique_ptr<EEPROMEntry> leaving = std::move(*place);
    entries_.erase(place);
    rows_.clear();
    EntryLeaving.raise(*leaving);
    arrangementChanged();
}

void EEPROMEditorControl::showEntry(int index, std::string_view propertyName) {
    EEPROMEntry& entry = Entry(index);
    const EEPROMVariable& variable = document.entry(index);
    if (propertyName == KOEEPROMDocument::Address)
        entry.setAddress(variable.Address);
    else if (propertyName == KOEEPROMDocument::Length)
        entry.setLength(variable.Length);
    else if (propertyName == KOEEPROMDocument::Comments)
        return entry.setComments(variable.Comments);
    else if (propertyName == KOEEPROMDocument::DataType)
        return entry.setDataType(variable.DataType);
    else
        return entry.setDataValue(variable.DataValue);
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
    const EntryArrangement arrangement = Arrange(document);
    rows_.clear();
    rows_.reserve(arrangement.order.size());
    for (const int index : arrangement.order)
        rows_.push_back(&Entry(index));
    for (std::size_t i = 0; i < entries_.size(); ++i)
        entries_[i]->setAddressConflicts(arrangement.conflicts[i]);
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
    const auto row = std::find(rows_.begin(), rows_.end(), &entry);
    if (row == rows_.end())
        return;
    const int top = static_cast<int>(row - rows_.begin()) * RowStep;
    VScroll.setValue(std::clamp(VScroll.Value(), top + RowStep - area_.height, top));
}

// What the person wants

void EEPROMEditorControl::heard(std::string_view message, const void* sender,
                                const MessageValue& value) {
    const auto place = std::find_if(entries_.begin(), entries_.end(),
                                    [sender](const auto& entry) { return entry.get() == sender; });
    Assert(place != entries_.end());
    const int index = static_cast<int>(place - entries_.begin()) + 1;
    if (message == "AddressChanged")
        document.record(index, KOEEPROMDocument::Address, std::to_string(std::get<int>(value)));
    else if (message == "LengthChanged")
        document.record(index, KOEEPROMDocument::Length, std::to_string(std::get<int>(value)));
    else if (message == "CommentsChanged")
        document.record(index, KOEEPROMDocument::Comments, std::get<std::string>(value));
    else if (message == "DataTypeChanged")
        document.record(index, KOEEPROMDocument::DataType, std::get<std::string>(value));
    else if (message == "DataValueChanged")
        document.record(index, KOEEPROMDocument::DataValue, HexText(std::get<ByteString>(value)));
    else if (message == "Removing")
        document.recordRemoving(index);
}

void EEPROMEditorControl::newVariable() {
    int next = 0;
    for (const auto& entry : entries_)
        next = std::max(next, entry->Address() + entry->Length());
    document.recordAdding(EntryCount() + 1, {next, 1, {}, {}, {}});
    FocusWanted.raise(*entries_.back());
}

} // namespace corvane
