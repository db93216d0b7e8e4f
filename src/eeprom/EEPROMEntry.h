#pragma once

#include "eeprom/BinHexTextBox.h"
#include "eeprom/KOEEPROMDocument.h"

namespace corvane {

class EEPROMEntry;

/// What a person wants to become of a variable: reported by its row, with the new value.
struct EEPROMRequests {
    Request<const EEPROMEntry&, int> AddressChanged;
    Request<const EEPROMEntry&, int> LengthChanged;
    Request<const EEPROMEntry&, const std::string&> CommentsChanged;
    Request<const EEPROMEntry&, const ByteString&> DataValueChanged;
    Request<const EEPROMEntry&, const std::string&> DataTypeChanged;
    Request<const EEPROMEntry&> Removing;
};

/// A row of the EEPROM editor: shows a variable, and requests what the person wants.
class EEPROMEntry {
  public:
    /// The requests must outlive the row.
    EEPROMEntry(std::string name, const EEPROMRequests& requests);

    /// Name of the row, of which there is never another.
    [[nodiscard]] const std::string& Name() const { return name_; }
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
    void validateNumber(int& member, TextBox& box, const Request<const EEPROMEntry&, int>& request);
    void validateComments();
    void showMarks();

    std::string name_;
    const EEPROMRequests& requests_;
    int address_ = 0;
    int length_ = 1;
    std::string comments_;
    bool conflicts_ = false;
    std::optional<std::pair<bool, bool>> marks_; // that show: conflict, beyond the end
    Connections on_;
};

} // namespace corvane
