#include "eeprom/KOEEPROMUndoableChange.h"

#include "base/TextLines.h"

#include <algorithm>

namespace corvane {

bool KOEEPROMUndoableTextChange::isSound() const {
    return TextChange::isSound() && KOEEPROMDocument::isText(property(), oldValue()) &&
           KOEEPROMDocument::isText(property(), newValue());
}

bool KOEEPROMUndoableTextChange::isApplicable() const {
    return TextChange::isApplicable() && index() <= document()->EntryCount();
}

void KOEEPROMUndoableListChange::Initialize(bool adding, KOEEPROMDocument& document, int index,
                                            EEPROMVariable variable) {
    adding_ = adding;
    document_ = &document;
    index_ = index;
    variable_ = std::move(variable);
}

void KOEEPROMUndoableListChange::add() const {
    const int before = document_->EntryCount();
    AllOrNothing([&] { document_->AddField(access(), index_, variable_); },
                 [&] {
                     if (document_->EntryCount() > before)
                         document_->RemoveField(access(), index_);
                 });
}

void KOEEPROMUndoableListChange::remove() const {
    const int before = document_->EntryCount();
    EEPROMVariable removed = document_->entry(index_); // as it was, which a file need not tell
    AllOrNothing([&] { document_->RemoveField(access(), index_); },
                 [&] {
                     if (document_->EntryCount() < before)
                         document_->AddField(access(), index_, std::move(removed));
                 });
}

void KOEEPROMUndoableListChange::Serialize(std::string& prefix,
                                           std::vector<std::string>& Data) const {
    prefix = adding_ ? AddPrefix : RemovePrefix;
    Data = {std::to_string(index_),           std::to_string(variable_.Address),
            std::to_string(variable_.Length), variable_.Comments,
            HexText(variable_.DataValue),     variable_.DataType};
}

bool KOEEPROMUndoableListChange::Deserialize(History& history, std::string_view prefix,
                                             const std::vector<std::string>& Data) {
    constexpr std::size_t elements = 6;
    document_ = dynamic_cast<KOEEPROMDocument*>(&history.ManagingControl());
    adding_ = prefix == AddPrefix;
    if (document_ == nullptr || Data.size() < elements || (!adding_ && prefix != RemovePrefix) ||
        !KOEEPROMDocument::isText(KOEEPROMDocument::DataValue, Data[4]) ||
        !KOEEPROMDocument::isText(KOEEPROMDocument::DataType, Data[5]))
        return false;
    index_ = ReadInteger(Data[0]);
    variable_ = {ReadInteger(Data[1]), ReadInteger(Data[2]), Data[3],
                 BinHexTextBoxHexConverter().ToBytes(Data[4]), Data[5]};
    return index_ >= 1;
}

bool KOEEPROMUndoableListChange::fits(int& count) const {
    const int last = adding_ ? count + 1 : count;
    count += adding_ ? 1 : -1;
    return index_ <= last;
}

bool KOEEPROMUndoableListChange::isApplicable() const {
    if (document_ == nullptr || index_ < 1 || FindConverter(variable_.DataType) == nullptr ||
        !IsUtf8(variable_.Comments))
        return false;
    int count = document_->EntryCount();
    return fits(count);
}

std::unique_ptr<UndoableChange> KOEEPROMHistoryLoader::Load(std::string_view prefix) const {
    if (prefix == KOEEPROMDocument::TextPrefix)
        return std::make_unique<KOEEPROMUndoableTextChange>();
    if (prefix == KOEEPROMUndoableListChange::AddPrefix ||
        prefix == KOEEPROMUndoableListChange::RemovePrefix)
        return std::make_unique<KOEEPROMUndoableListChange>();
    return nullptr;
}

bool KOEEPROMHistoryLoader::FitTogether(const UndoableChanges& changes) const {
    int count = 0;
    return std::all_of(changes.begin(), changes.end(), [&count](const auto& change) {
        const auto* ours = dynamic_cast<const KOEEPROMUndoableChange*>(change.get());
        return ours == nullptr || ours->fits(count);
    });
}

} // namespace corvane
