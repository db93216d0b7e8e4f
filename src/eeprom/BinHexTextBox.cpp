#include "eeprom/BinHexTextBox.h"

#include "base/Assert.h"

namespace corvane {

namespace {

constexpr int Red = 255;

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (const auto& converter : Converters())
        all.push_back(converter->Name());
    return all;
}

} // namespace

BinHexTextBox::BinHexTextBox() : cmbDataType(names()) {
    cmbDataType.setText(DataType());
    on_(txtData.Change, [this] { recolor(); });
    on_(txtData.Validate, [this] { commitText(); });
    on_(cmbDataType.Click, [this] { setDataType(cmbDataType.Text()); });
    on_(cmbDataType.Validate, [this] {
        const std::string chosen = cmbDataType.Text();
        DataTypeChanged.raise(chosen);
        setDataType(chosen);
    });
    recolor();
}

void BinHexTextBox::setDataValue(const ByteString& bytes) {
    if (bytes == data_)
        return;
    data_ = bytes;
    txtData.setText(converter_->FromBytes(data_));
    recolor();
}

void BinHexTextBox::setDataType(const std::string& name) {
    const IBinHexTextBoxConverter* chosen = FindConverter(name);
    Assert(chosen != nullptr, "There is no such data type.");
    if (chosen == converter_)
        return;
    converter_ = chosen;
    txtData.setText(converter_->FromBytes(data_));
    cmbDataType.setText(DataType());
    recolor();
}

void BinHexTextBox::commitText() {
    if (TextIsValid()) {
        const ByteString bytes = converter_->ToBytes(Text());
        if (bytes != data_)
            DataValueChanged.raise(bytes);
        data_ = bytes;
    }
    recolor();
}

void BinHexTextBox::recolor() {
    const bool valid = TextIsValid();
    txtData.setTint(valid ? std::nullopt : std::optional(Red));
    txtData.setToolTipText(valid ? "Value in the form that is chosen beside it"
                                 : "This is no value of this type; the last good one stays");
}

} // namespace corvane
