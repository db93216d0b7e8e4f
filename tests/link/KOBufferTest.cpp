#include "base/Assert.h"
#include "link/KOPacket.h"
#include "link/KOProductList.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

KOBuffer bufferOf(const std::vector<std::uint8_t>& bytes) {
    KOBuffer buffer;
    for (const std::uint8_t byte : bytes)
        buffer.Append(byte);
    return buffer;
}

TEST(KOBuffer, CountsItsBytesFromOne) {
    KOBuffer buffer = bufferOf({10, 20, 30});
    EXPECT_EQ(buffer.Data(1), 10);
    buffer.setData(3, 31);
    EXPECT_EQ(buffer.ToString(), "10 20 31");
    EXPECT_EQ(buffer.GetDataArray(), (std::vector<std::uint8_t>{0, 10, 20, 31}));
    EXPECT_THROW(static_cast<void>(buffer.Data(0)), AssertionFailed);
    EXPECT_THROW(buffer.setData(4, 0), AssertionFailed);
    EXPECT_EQ(bufferOf({0}).ToString(), "0");
}

TEST(KOBuffer, EmptyIsEmptyText) {
    KOBuffer buffer = bufferOf({1});
    buffer.Clear();
    EXPECT_EQ(buffer.ToString(), "");
    EXPECT_EQ(buffer.GetDataArray(), std::vector<std::uint8_t>{0});
    EXPECT_THROW(buffer.RemoveAtEnd(), AssertionFailed);
    EXPECT_THROW(static_cast<void>(buffer.Split(1)), AssertionFailed);
}

TEST(KOBuffer, SplitsIntoPiecesThatMakeTheWhole) {
    const KOBuffer buffer = bufferOf({1, 2, 3, 4, 5});
    const auto textsOf = [&](int length) {
        std::vector<std::string> texts;
        for (const KOBuffer& piece : buffer.Split(length))
            texts.push_back(piece.ToString());
        return texts;
    };
    EXPECT_EQ(textsOf(2), (std::vector<std::string>{"1 2", "3 4", "5"}));
    EXPECT_EQ(textsOf(5), std::vector<std::string>{"1 2 3 4 5"});
    EXPECT_EQ(textsOf(99), std::vector<std::string>{"1 2 3 4 5"});
    EXPECT_THROW(static_cast<void>(buffer.Split(0)), AssertionFailed);
}

TEST(KOBuffer, AppendsRangesAndChangesLength) {
    const KOBuffer source = bufferOf({1, 2, 3, 4});
    KOBuffer buffer;
    buffer.AppendBuffer(source, 2, 3);
    buffer.AppendBuffer(source, 4, 3); // nothing
    buffer.AppendBuffer(source, -1, 1);
    EXPECT_EQ(buffer.ToString(), "2 3 1");
    buffer.AppendBuffer(source);
    EXPECT_EQ(buffer.Length(), 7);
    buffer.SetLength(2, 9);
    buffer.SetLength(2, 9);
    buffer.SetLength(4, 9);
    EXPECT_EQ(buffer.ToString(), "2 3 9 9");
    EXPECT_THROW(buffer.SetLength(5, 256), AssertionFailed);
    EXPECT_THROW(buffer.AppendBuffer(buffer), AssertionFailed);
    EXPECT_THROW(buffer.AppendBuffer(source, 1, 5), AssertionFailed);
}

class ProductList : public testing::Test {
  protected:
    RunModes modes{.DebugMode = true};
    KODebug debug{modes};
    KODebugger debugger;
    std::vector<std::string> lines;
    Connection onLine =
        debugger.WritingLine.connect([this](const std::string& line) { lines.push_back(line); });
    KOProductList list{"KO", debug};
    Version type{9, 9};
    Version firmware{9, 9};

    void SetUp() override { debug.SetDebugger(&debugger); }
    std::string nameOf(const std::vector<std::uint8_t>& record, const KOProductList& products) {
        const KOProductProfile* product =
            products.ByIdentificationBuffer(bufferOf(record), type, firmware);
        return product == nullptr ? "nothing" : product->Name;
    }
};

TEST_F(ProductList, IdentifiesARecordAndIgnoresWhatFollowsIt) {
    EXPECT_EQ(nameOf({1, 1, 3, 7, 12}, list), "Lumora");
    EXPECT_TRUE(type.Equals(Version(1, 1)));
    EXPECT_TRUE(firmware.Equals(Version(3, 7)));
    EXPECT_EQ(nameOf({1, 2, 0, 0, 3, 200, 201}, list), "Lumora");
    EXPECT_EQ(type.ToString(), "1.2");
    EXPECT_EQ(nameOf({255, 1, 0, 0, 0}, list), "KOEEPROM");
    EXPECT_EQ(nameOf({2, 1, 0, 0, 3}, list), "Pactor");
}

TEST_F(ProductList, UnknownProductClearsTheVersionsAndADamagedRecordLeavesThem) {
    EXPECT_EQ(nameOf({1, 1, 3, 7, 13}, list), "nothing");
    EXPECT_TRUE(type.Equals(Version(9, 9)));
    EXPECT_EQ(nameOf({1, 1, 3, 7}, list), "nothing");
    EXPECT_EQ(nameOf({}, list), "nothing");
    EXPECT_TRUE(firmware.Equals(Version(9, 9)));
    EXPECT_EQ(lines.front(), "Bad product checksum 13 (device 1,1 version 3.7)");
    EXPECT_EQ(nameOf({100, 1, 0, 0, 101}, list), "nothing");
    EXPECT_TRUE(type.Equals(Version()));
    EXPECT_TRUE(firmware.Equals(Version()));
}

TEST_F(ProductList, TheVendorDecidesWhichRowsThereAre) {
    EXPECT_EQ(list.Size(), 5);
    EXPECT_EQ(list.ByIndex(5).Class, "Corvane.EEPROMEditorControl");
    EXPECT_THROW(static_cast<void>(list.ByIndex(6)), AssertionFailed);
    EXPECT_THROW(static_cast<void>(list.ByIndex(0)), AssertionFailed);
    EXPECT_EQ(list.ByExtension("quillon"), nullptr);

    const KOProductList other("RQ", debug);
    EXPECT_EQ(other.Size(), 1);
    EXPECT_EQ(nameOf({100, 1, 0, 0, 101}, other), "Quillon");
    EXPECT_EQ(nameOf({1, 1, 3, 7, 12}, other), "nothing");
    EXPECT_THROW(KOProductList("XX", debug), AssertionFailed);
}

TEST_F(ProductList, FindsTheFirstRowOfAnExtension) {
    EXPECT_EQ(list.ByExtension("LUMORA"), &list.ByIndex(1));
    EXPECT_EQ(list.ByExtension("Relay"), &list.ByIndex(3));
    EXPECT_EQ(list.ByExtension(""), nullptr);
    EXPECT_EQ(list.ByExtension("txt"), nullptr);
}

} // namespace
} // namespace corvane
