#include "eeprom/BinHexTextBox.h"

#include <gtest/gtest.h>

#include <random>

namespace corvane {
namespace {

const IBinHexTextBoxConverter& form(const char* name) {
    return *FindConverter(name);
}

TEST(Converters, TakeAllBytesThereAndBack) {
    std::mt19937 random(1);
    for (const auto& converter : Converters()) {
        ByteString all;
        for (int byte = 0; byte <= 255; ++byte) {
            all.push_back(static_cast<std::uint8_t>(byte));
            const ByteString one{static_cast<std::uint8_t>(byte)};
            const bool lost = byte == 0 && converter->Name() == "Binary"; // shows as nothing
            EXPECT_EQ(converter->ToBytes(converter->FromBytes(one)), lost ? ByteString() : one);
        }
        EXPECT_EQ(converter->ToBytes(converter->FromBytes(all)), all);
        for (int round = 0; round < 200; ++round) {
            ByteString bytes(random() % 40 + 2);
            for (std::uint8_t& byte : bytes)
                byte = static_cast<std::uint8_t>(random());
            const std::string text = converter->FromBytes(bytes);
            EXPECT_TRUE(converter->IsValid(text)) << text;
            EXPECT_EQ(converter->ToBytes(text), bytes);
            EXPECT_EQ(WithControls(WithVisibleControls(text)), text);
        }
        EXPECT_TRUE(converter->IsValid(""));
        EXPECT_TRUE(converter->ToBytes("").empty());
    }
    EXPECT_EQ(FindConverter("hex"), nullptr);
}

TEST(Converters, ShowBytesInTheirForm) {
    const ByteString bytes{1, 2, 255};
    EXPECT_EQ(form("").FromBytes(bytes), "1 2 255");
    EXPECT_EQ(form("Hex").FromBytes(bytes), "0102FF");
    EXPECT_EQ(form("Binary").FromBytes(bytes), "000000010000001011111111");
    EXPECT_EQ(form("Binary").FromBytes({5}), "101");
    EXPECT_EQ(form("ANSI").FromBytes({'A', 0x80, 0xE4}), "A€ä");
    EXPECT_EQ(form("ANSI").FromBytes({0x81}), "\u0081");
    EXPECT_EQ(WithVisibleControls(form("ANSI").FromBytes({0, 10, 0x7F, 0x9D})), "␀␊␡⑤");
}

TEST(Converters, TellValidTextFromInvalid) {
    const auto expect = [](const char* name, std::initializer_list<const char*> valid,
                           std::initializer_list<const char*> invalid) {
        for (const char* text : valid)
            EXPECT_TRUE(form(name).IsValid(text)) << name << ": " << text;
        for (const char* text : invalid)
            EXPECT_FALSE(form(name).IsValid(text)) << name << ": " << text;
    };
    expect("Hex", {"0a", "0A", "fFfF"}, {"0a1", "0 1", "0x", "gg"});
    expect("Binary", {"1", "1010101", "00000000", "0000000011111111"}, {"000000001", "2", "0101 "});
    expect("Integer (U8)", {"0", "  ", " 7  255 ", "007"}, {"256", "0012", "-1", "1,2", "1\t2"});
    expect("ANSI", {"abc", "€", "\u0081"}, {"α", "\u0080", "\xFF"});
    EXPECT_EQ(form("Hex").ToBytes("0aBc"), (ByteString{10, 0xBC}));
    EXPECT_EQ(form("Binary").ToBytes("101"), ByteString{5});
    EXPECT_EQ(form("").ToBytes("  1  22 "), (ByteString{1, 22}));
}

class ValueBox : public testing::Test {
  protected:
    BinHexTextBox box;
    std::vector<ByteString> values;
    std::vector<std::string> types;
    Connection onValue = box.DataValueChanged.connect([this](const ByteString& bytes) {
        values.push_back(bytes);
        before = box.DataValue();
    });
    Connection onType =
        box.DataTypeChanged.connect([this](const std::string& type) { types.push_back(type); });
    ByteString before;

    void enter(const char* text) {
        box.txtData.type(text);
        box.txtData.leave();
    }
};

TEST_F(ValueBox, TakesValidTextWhenItIsLeft) {
    box.setDataValue({1});
    enter("1 2");
    EXPECT_EQ(values, (std::vector<ByteString>{{1, 2}}));
    EXPECT_EQ(before, ByteString{1}); // while it is told
    enter(" 1   2");                  // the same bytes
    EXPECT_EQ(box.Text(), " 1   2");
    EXPECT_EQ(values.size(), 1U);
}

TEST_F(ValueBox, TheFormCountsAtOnceAndIsToldOnLeaving) {
    box.setDataValue({0});
    box.cmbDataType.choose("Binary");
    EXPECT_EQ(box.DataType(), "Binary");
    EXPECT_TRUE(types.empty());
    box.cmbDataType.leave();
    box.cmbDataType.leave(); // also if nothing has changed
    EXPECT_EQ(types, (std::vector<std::string>{"Binary", "Binary"}));
    box.txtData.leave(); // a single 0 shows as nothing, and is then nothing
    EXPECT_EQ(values, std::vector<ByteString>(1));
}

} // namespace
} // namespace corvane
