#include "eeprom/EEPROMEntry.h"

#include "base/Numbers.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr int ConflictTint = 65535; // yellow
constexpr int BeyondTint = 255;     // red

int limited(int number) {
    return std::clamp(number, 0, EEPROMVariable::MaxNumber);
}

} // namespace

EEPROMEntry::EEPROMEntry(std::string name, const EEPROMRequests& requests)
    : name_(std::move(name)), requests_(requests) {
    txtAddress.setText(std::to_string(address_));
    txtLength.setText(std::to_string(length_));
    showMarks();
    txtComments.setToolTipText("What the variable is for");
    ctlContents.cmbDataType.setToolTipText("The form in which the value is shown and typed");
    RemoveButton.setToolTipText("Remove this variable from the list");
    on_(txtAddress.Validate,
        [this] { validateNumber(address_, txtAddress, requests_.AddressChanged); });
    on_(txtLength.Validate,
        [this] { validateNumber(length_, txtLength, requests_.LengthChanged); });
    on_(txtComments.Validate, [this] { validateComments(); });
    on_(ctlContents.DataValueChanged,
        [this](const ByteString& bytes) { requests_.DataValueChanged(*this, bytes); });
    on_(ctlContents.DataTypeChanged,
        [this](const std::string& type) { requests_.DataTypeChanged(*this, type); });
    on_(RemoveButton.Click, [this] { requests_.Removing(*this); });
}

void EEPROMEntry::Initialize(const EEPROMVariable& variable) {
    setAddress(variable.Address);
    setLength(variable.Length);
    setComments(variable.Comments);
    setDataValue(variable.DataValue);
    setDataType(variable.DataType);
}

void EEPROMEntry::setComments(const std::string& comments) {
    if (comments == comments_)
        return;
    comments_ = comments;
    txtComments.setText(comments);
}

void EEPROMEntry::showMarks() {
    const std::pair marks(conflicts_, isBeyondEnd());
    if (std::exchange(marks_, marks) == marks)
        return;
    const auto tint = marks.first    ? std::optional(ConflictTint)
                      : marks.second ? std::optional(BeyondTint)
                                     : std::nullopt;
    std::string why = marks.first ? "\r\nThese bytes belong to another variable too" : "";
    why += marks.second ? "\r\nThere are no bytes beyond address 65535" : "";
    txtAddress.setTint(tint);
    txtAddress.setToolTipText("Number of the first byte, 0 to 65535" + why);
    txtLength.setTint(tint);
    txtLength.setToolTipText("Number of bytes, 0 to 65535" + why);
}

void EEPROMEntry::setNumber(int& member, TextBox& box, int value) {
    if (limited(value) == member)
        return;
    member = limited(value);
    box.setText(std::to_string(member));
}

void EEPROMEntry::validateNumber(int& member, TextBox& box,
                                 const Request<const EEPROMEntry&, int>& request) {
    const int typed = limited(ReadInteger(box.Text()));
    if (typed != member) {
        // Before, since the change takes its old value from what is there.
        request(*this, typed);
        member = typed;
        showMarks();
    }
    box.setText(std::to_string(member));
}

void EEPROMEntry::validateComments() {
    const std::string typed = txtComments.Text();
    if (typed != comments_) {
        requests_.CommentsChanged(*this, typed);
        comments_ = typed;
    }
    txtComments.setText(comments_);
}

} // namespace corvane
