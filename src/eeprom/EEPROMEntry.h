#pragma once

#include "base/Messenger.h"
#include "eeprom/BinHexTextBox.h"
#include "eeprom/KOEEPROMDocument.h"

namespace corvane {

/// A row of the EEPROM editor: shows a variable, and tells in messages what the person wants to
/// become of it. The messages are "AddressChanged", "LengthChanged", "CommentsChanged",
/// "DataValueChanged", "DataTypeChanged", each with the new value, and "Removing".
class EEPROMEntry {
  public:
    explicit EEPROMEntry(std::string name);

    /// Name of the row, of which there is never another.
    [[nodiscard]] const std::string& Name() const { return name_; }
    /// Set once; it must outlive the row.
    void setMessenger(const corvane::Messenger& messenger) { messenger_ = &messenger; }
    void Initialize(const EEPROMVariable& variable);

    [[nodiscard]] int Address() const { return address_; }
    /// Limited to 0 to 65535, like the length.
    void setAddress(int address) {
        setNumber(address_, txtAddress, address);
        showMarks();
    }
    [[nodiscard]] int Length() const { return length_; } ///< bytes
    void setLength(int length) {
        setNumber(length_, txtLength, length);
        showMarks();
    }
    [[nodiscard]] const std::string& Comments() const { return comments_; }
    void setComments(const std::string& comments);
    [[nodiscard]] const ByteString& DataValue() const { return ctlContents.DataValue(); }
    void setDataValue(const ByteString& bytes) { ctlContents.setDataValue(bytes); }
    [[nodiscard]] std::string DataType() const { return ctlContents.DataType(); }
    void setDataType(const std::string& type) { ctlContents.setDataType(type); }
    /// Another variable has some of the same bytes.
    [[nodiscard]] bool AddressConflicts() const { return conflicts_; }
    void setAddressConflicts(bool conflicts) {
        conflicts_ = conflicts;
        showMarks();
    }
    /// Some of its bytes lie beyond the last address that there can be.
    [[nodiscard]] bool isBeyondEnd() const {
        return address_ + length_ > EEPROMVariable::MaxNumber + 1;
    }

    TextBox txtAddress;
    TextBox txtLength;
    TextBox txtComments;
    BinHexTextBox ctlContents;
    Button RemoveButton{"x"};

  private:
    static void setNumber(int& member, TextBox& box, int value);
    void validateNumber(int& member, TextBox& box, std::string_view message);
    void validateComments();
    void showMarks();
    void send(std::string_view message, MessageValue value) const;

    std::string name_;
    const corvane::Messenger* messenger_ = nullptr;
    int address_ = 0;
    int length_ = 1;
    std::string comments_;
    bool conflicts_ = false;
    std::optional<std::pair<bool, bool>> marks_; // that show: conflict, beyond the end
    std::vector<Connection> connections_;
};

} // namespace corvane
