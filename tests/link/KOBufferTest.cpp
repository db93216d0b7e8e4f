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
    buffer.setData(3, 31);
    EXPECT_EQ(buffer.Data(1), 10);
    EXPECT_EQ(buffer.GetDataArray(), (std::vector<std::uint8_t>{0, 10, 20, 31}));
    EXPECT_THROW(static_cast<void>(buffer.Data(0)), AssertionFailed);
    EXPECT_THROW(buffer.setData(4, 0), AssertionFailed);
    buffer.Clear();
    EXPECT_EQ(buffer.ToString(), "");
    EXPECT_THROW(buffer.RemoveAtEnd(), AssertionFailed);
}

TEST(KOBuffer, IsCutPutTogetherAndMadeLonger) {
    const KOBuffer source = bufferOf({1, 2, 3, 4});
    for (const auto& [length, pieces] :
         {std::pair(3, "1 2 3|4|"), {4, "1 2 3 4|"}, {9, "1 2 3 4|"}}) {
        std::string text;
        for (const KOBuffer& piece : source.Split(length))
            text += piece.ToString() + "|";
        EXPECT_EQ(text, pieces);
    }
    KOBuffer buffer;
    buffer.AppendBuffer(source, 2, 3);
    buffer.AppendBuffer(source, 4, 3); // nothing
    buffer.AppendBuffer(source, -1, 1);
    EXPECT_EQ(buffer.ToString(), "2 3 1");
    for (const int length : {2, 2, 4})
        buffer.SetLength(length, 9);
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
    const KOProductList other("RQ", debug);
    struct Row {
        const KOProductList& products;
        std::vector<std::uint8_t> record;
        const char* name;
        const char*
            type; // an unknown product clears the versions, and a damaged record leaves them
    };
    for (const Row& row :
         std::initializer_list<Row>{{list, {}, "nothing", "9.9"},
                                    {list, {1, 1, 3, 7}, "nothing", "9.9"},
                                    {list, {1, 1, 3, 7, 13}, "nothing", "9.9"},
                                    {list, {1, 1, 3, 7, 12}, "Lumora", "1.1"},
                                    {list, {1, 2, 0, 0, 3, 200}, "Lumora", "1.2"},
                                    {list, {255, 1, 0, 0, 0}, "KOEEPROM", "255.1"},
                                    {list, {2, 1, 0, 0, 3}, "Pactor", "2.1"},
                                    {list, {100, 1, 0, 0, 101}, "nothing", "0.0"},
                                    {other, {100, 1, 0, 0, 101}, "Quillon", "100.1"},
                                    {other, {1, 1, 3, 7, 12}, "nothing", "0.0"}}) {
        EXPECT_EQ(nameOf(row.record, row.products), row.name);
        EXPECT_EQ(type.ToString(), row.type) << row.name;
    }
    EXPECT_EQ(lines.back(), "Bad product checksum 13 (device 1,1 version 3.7)");
}

TEST_F(ProductList, FindsTheFirstRowOfAnExtension) {
    EXPECT_EQ(list.ByExtension("LUMORA"), &list.ByIndex(1));
    EXPECT_EQ(list.ByExtension("Relay"), &list.ByIndex(3));
    for (const char* none : {"", "txt", "quillon"}) // which is the other vendor's
        EXPECT_EQ(list.ByExtension(none), nullptr);
    EXPECT_THROW(KOProductList("XX", debug), AssertionFailed);
}

} // namespace
} // namespace corvane
