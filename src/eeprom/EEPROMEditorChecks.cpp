// How the EEPROM editor tells what is not right with the variables.
#include "base/Text.h"
#include "eeprom/EEPROMEditorControl.h"

namespace corvane {

std::string EEPROMEditorControl::CommentOf(int index) const {
    const std::string comments(Trim(document.entry(index).Comments));
    return std::string(Trim(comments.substr(0, comments.find_first_of("\r\n"))));
}

std::string EEPROMEditorControl::NameOf(int index) const {
    const std::string comment = CommentOf(index);
    return comment.empty() ? "address " + std::to_string(document.entry(index).Address) : comment;
}

/// Text that is no value is never taken for one, and so would not be programmed either: it is put
/// right first.
bool EEPROMEditorControl::valuesAreSound() {
    for (int index = 1; index <= EntryCount(); ++index) {
        EEPROMEntry* entry = EntryIfMade(index);
        if (entry == nullptr || entry->ctlContents.TextIsValid())
            continue;
        place_.dialogs.ShowError("What is typed as the value of " + NameOf(index) + " is not " +
                                 entry->DataType() +
                                 ".\r\n\r\nType another value, then program again.");
        ValueFocusWanted.raise(*entry);
        return false;
    }
    return true;
}

void EEPROMEditorControl::nameOverlaps() {
    constexpr int named = 3;
    std::string names;
    int count = 0;
    for (const int index : rows_)
        if (slots_[static_cast<std::size_t>(index) - 1].conflicts && ++count <= named)
            names += (count == 1 ? "" : ", ") + NameOf(index);
    if (count > named)
        names += " and " + std::to_string(count - named) + " more";
    OverlapLabel.setCaption(count == 0 ? "" : "Overlapping: " + names);
    OverlapLabel.setToolTipText(count == 0 ? ""
                                           : "These variables share bytes. The one that was "
                                             "added last is programmed last.");
}

} // namespace corvane
