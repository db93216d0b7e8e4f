#include "eeprom/EEPROMEntry.h"

#include "base/Numbers.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr int Yellow = 65535;

int limited(int number) {
    return std::clamp(number, 0, EEPROMVariable::MaxNumber);
}

} // namespace

EEPROMEntry::EEPROMEntry(std::string name) : name_(std::move(name)) {
    txtAddress.setText(std::to_string(address_));
    txtLength.setText(std::to_string(length_));
    showConflicts(false);
    txtComments.setToolTipText("What the variable is for");
    ctlContents.cmbDataType.setToolTipText("The form in which the value is shown and typed");
    RemoveButton.setToolTipText("Remove this variable from the list");
    const auto on = [this](auto& event, auto react) {
        connections_.push_back(event.connect(react));
    };
    on(txtAddress.Validate, [this] { validateNumber(address_, txtAddress, "AddressChanged"); });
    on(txtLength.Validate, [this] { validateNumber(length_, txtLength, "LengthChanged"); });
    on(txtComments.Validate, [this] { validateComments(); });
    on(ctlContents.DataValueChanged,
       [this](const ByteString& bytes) { send("DataValueChanged", bytes); });
    on(ctlContents.DataTypeChanged,
       [this](const std::string& type) { send("DataTypeChanged", type); });
    on(RemoveButton.Click, [this] { send("Removing", {}); });
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

void EEPROMEntry::showConflicts(bool conflicts) {
    const auto tint = conflicts ? std::optional(Yellow) : std::nullopt;
    const char* overlap = "\r\nThese bytes belong to another variable too";
    txtAddress.setTint(tint);
    txtAddress.setToolTipText(std::string("Number of the first byte, 0 to 65535") +
                              (conflicts ? overlap : ""));
    txtLength.setTint(tint);
    txtLength.setToolTipText(std::string("Number of bytes, 0 to 65535") +
                             (conflicts ? overlap : ""));
}

void EEPROMEntry::setNumber(int& member, TextBox& box, int value) {
    if (limited(value) == member)
        return;
    member = limited(value);
    box.setText(std::to_string(member));
}

void EEPROMEntry::validateNumber(int& member, TextBox& box, std::string_view message) const {
    const int typed = limited(ReadInteger(box.Text()));
    if (typed != member) {
        send(message, typed); // before, since the change takes its old value from what is there
        member = typed;
    }
    box.setText(std::to_string(member));
}

void EEPROMEntry::validateComments() {
    const std::string typed = txtComments.Text();
    if (typed != comments_) {
        send("CommentsChanged", typed);
        comments_ = typed;
    }
    txtComments.setText(comments_);
}

void EEPROMEntry::send(std::string_view message, MessageValue value) const {
    if (messenger_ != nullptr)
        messenger_->Notify(message, this, value);
}

} // namespace corvane
