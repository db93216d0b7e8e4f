#include "eeprom/KOEEPROMDocument.h"

#include "base/Assert.h"
#include "base/Numbers.h"
#include "eeprom/KOEEPROMUndoableChange.h"

#include <algorithm>

namespace corvane {

namespace {

const BinHexTextBoxHexConverter hex;

int limited(int number) {
    return std::clamp(number, 0, EEPROMVariable::MaxNumber);
}

} // namespace

KOEEPROMDocument::KOEEPROMDocument(const History::Surroundings& surroundings)
    : history_(*this, surroundings) {
    history_.setFilter("EEPROM Editor File (*.ko_eeprom)|*.ko_eeprom");
    history_.setTypeCode("KOEEPROM");
    history_.setVersionCode(1);
    history_.setLoader(std::make_unique<KOEEPROMHistoryLoader>());
}

const EEPROMVariable& KOEEPROMDocument::entry(int index) const {
    Assert(index >= 1 && index <= EntryCount());
    return entries_[static_cast<std::size_t>(index) - 1];
}

EEPROMVariable& KOEEPROMDocument::writable(int index) {
    Assert(index >= 1 && index <= EntryCount());
    return entries_[static_cast<std::size_t>(index) - 1];
}

void KOEEPROMDocument::AddField(WriteAccess, int insertBefore, EEPROMVariable variable) {
    Assert(insertBefore >= 1 && insertBefore <= EntryCount() + 1);
    variable.Address = limited(variable.Address);
    variable.Length = limited(variable.Length);
    const IBinHexTextBoxConverter* type = FindConverter(variable.DataType);
    Assert(type != nullptr);
    variable.DataType = type->Name();
    entries_.insert(static_cast<std::size_t>(insertBefore) - 1, std::move(variable));
    EntryAdded.raise(insertBefore);
}

void KOEEPROMDocument::RemoveField(WriteAccess, int location) {
    Assert(location >= 1 && location <= EntryCount());
    static_cast<void>(entries_.take(static_cast<std::size_t>(location) - 1));
    EntryRemoved.raise(location);
}

std::string KOEEPROMDocument::Data(int index, std::string_view propertyName) const {
    const EEPROMVariable& variable = entry(index);
    if (propertyName == Address)
        return std::to_string(variable.Address);
    if (propertyName == Length)
        return std::to_string(variable.Length);
    if (propertyName == Comments)
        return variable.Comments;
    if (propertyName == DataType)
        return variable.DataType;
    return propertyName == DataValue ? HexText(variable.DataValue) : std::string();
}

void KOEEPROMDocument::setData(WriteAccess, int index, std::string_view propertyName,
                               std::string_view text) {
    Assert(isText(propertyName, text));
    EEPROMVariable& variable = writable(index);
    if (propertyName == Address)
        variable.Address = limited(ReadInteger(text));
    else if (propertyName == Length)
        variable.Length = limited(ReadInteger(text));
    else if (propertyName == Comments)
        variable.Comments = text;
    else if (propertyName == DataType)
        variable.DataType = FindConverter(text)->Name();
    else if (propertyName == DataValue)
        variable.DataValue = hex.ToBytes(text);
    else
        return;
    EntryChanged.raise(index, propertyName);
}

bool KOEEPROMDocument::isText(std::string_view propertyName, std::string_view text) {
    if (propertyName == DataType)
        return FindConverter(text) != nullptr;
    return propertyName != DataValue || hex.IsValid(text);
}

void KOEEPROMDocument::record(int index, std::string_view propertyName, std::string newValue) {
    auto change = std::make_unique<KOEEPROMUndoableTextChange>();
    change->Initialize(*this, index, std::string(propertyName), std::move(newValue));
    history_.Record(std::move(change));
}

void KOEEPROMDocument::recordAdding(int index, EEPROMVariable variable) {
    auto change = std::make_unique<KOEEPROMUndoableListChange>();
    change->Initialize(true, *this, index, std::move(variable));
    history_.Record(std::move(change));
}

void KOEEPROMDocument::recordRemoving(int index) {
    auto change = std::make_unique<KOEEPROMUndoableListChange>();
    change->Initialize(false, *this, index, entry(index));
    history_.Record(std::move(change));
}

std::string HexText(const ByteString& bytes) {
    return hex.FromBytes(bytes);
}

} // namespace corvane
