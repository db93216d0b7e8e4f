#pragma once

#include "controls/Inputs.h"
#include "eeprom/BinHexTextBoxConverters.h"

namespace corvane {

/// A string of bytes that a person types in one of several forms. What is typed counts when the box
/// is left, and only if it is valid; the form counts at once.
class BinHexTextBox {
  public:
    BinHexTextBox();

    /// The person has typed other bytes, which are given here; the data still holds the old ones.
    Event<const ByteString&> DataValueChanged;
    /// The person has left the list of forms, with this one chosen.
    Event<const std::string&> DataTypeChanged;

    [[nodiscard]] const ByteString& DataValue() const { return data_; }
    void setDataValue(const ByteString& bytes);
    /// Name of the form.
    [[nodiscard]] std::string DataType() const { return converter_->Name(); }
    /// The name must be that of a form, or empty for "Integer (U8)". Text that was typed and has
    /// not counted yet is lost.
    void setDataType(const std::string& name);
    [[nodiscard]] const std::string& Text() const { return txtData.Text(); }
    [[nodiscard]] bool TextIsValid() const { return converter_->IsValid(Text()); }

    DropDownList cmbDataType;
    TextBox txtData;

  private:
    void commitText();
    void recolor();

    const IBinHexTextBoxConverter* converter_ = FindConverter({});
    ByteString data_;
    Connections on_;
};

} // namespace corvane
