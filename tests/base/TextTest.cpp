#include "base/KOMath.h"
#include "base/Numbers.h"
#include "base/TextLines.h"

#include <gtest/gtest.h>

#include <random>

namespace corvane {
namespace {

TEST(Numbers, AreReadFromTheStartOfAText) {
    const std::vector<std::pair<std::string, double>> cases{
        {"12", 12},    {"-1", -1}, {"+7", 7},      {" 1\t2\n3", 123}, {"2.5s", 2.5},
        {".05", 0.05}, {"5.", 5},  {"1e3", 1000},  {"1E-2x", 0.01},   {"1e", 1},
        {"1e+", 1},    {"", 0},    {"x1", 0},      {".", 0},          {"-", 0},
        {"- 4", -4},   {"1,5", 1}, {"inf", 0},     {"nan", 0},        {"0x10", 0},
        {"1e-999", 0}, {"--1", 0}, {"1.2.3", 1.2}, {"1 e 2", 100},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(ReadNumber(text), value) << text;
    EXPECT_GT(ReadNumber("1e999"), 1e308);
    EXPECT_LT(ReadNumber("-" + std::string(5000, '9')), -1e308);
    EXPECT_EQ(ReadNumber("0." + std::string(5000, '0') + "1"), 0);
}

TEST(Numbers, BecomeIntegersByRoundingTiesToEven) {
    const std::vector<std::pair<std::string, int>> cases{
        {"2.5", 2},
        {"3.5", 4},
        {"-0.5", 0},
        {"1e999", 2147483647},
        {"007", 7},
        {"4294967296", 2147483647},
        {"-9e99", -2147483647 - 1},
        {"12abc", 12},
        {"+3", 3},
        {"1 2", 12},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(ReadInteger(text), value) << text;
    EXPECT_EQ(RoundToInteger(std::nan("")), 0);
}

TEST(Numbers, AreWrittenShort) {
    EXPECT_EQ(WriteNumber(0.05), ".05");
    EXPECT_EQ(WriteNumber(-0.5), "-.5");
    EXPECT_EQ(WriteNumber(1), "1");
    EXPECT_EQ(WriteNumber(2.5), "2.5");
    EXPECT_EQ(WriteNumber(0.1 + 0.2), ".3");
    EXPECT_EQ(WriteNumber(0), "0");
    EXPECT_EQ(WriteFixed(0.05, 2), "0.05");
    EXPECT_EQ(WriteHexadecimal(0xFFFFFF), "FFFFFF");
    EXPECT_EQ(WriteHexadecimal(0), "0");
    EXPECT_EQ(ReadHexadecimal("fF0000x"), 0xFF0000U);
    EXPECT_EQ(ReadHexadecimal("x"), 0U);
}

std::vector<std::string> fieldsOf(const TextLines& lines, std::size_t line) {
    std::vector<std::string> fields;
    lines.read(line, fields);
    return fields;
}

using Fields = std::vector<std::string>;

TEST(TextLines, AnyTextGoesThereAndBack) {
    std::mt19937 random(3);
    const std::vector<std::string> pieces{
        "\\", "\t",          "\n", "\r", std::string(1, '\0'), "a", "é", "\xF0\x9F\x9A\xA8",
        " ",  "\xEF\xBF\xBF"};
    std::vector<Fields> written(200);
    std::string bytes;
    for (Fields& fields : written) {
        fields.resize(1 + random() % 6);
        for (std::string& field : fields)
            for (std::size_t i = random() % 9; i > 0; --i)
                field += pieces[random() % pieces.size()];
        ASSERT_TRUE(TextLines::append(bytes, fields));
    }
    const auto lines = TextLines::parse(bytes);
    ASSERT_TRUE(lines);
    ASSERT_EQ(lines->count(), written.size());
    for (std::size_t i = 0; i < written.size(); ++i)
        EXPECT_EQ(fieldsOf(*lines, i), written[i]);
}

TEST(TextLines, ReadWhatOtherProgramsWrite) {
    EXPECT_EQ(TextLines::parse("")->count(), 0U);
    EXPECT_EQ(fieldsOf(*TextLines::parse("\n"), 0), Fields{""});
    const auto lines = TextLines::parse("a\tb\r\n\tc\t\r\nlast\\r");
    ASSERT_TRUE(lines);
    ASSERT_EQ(lines->count(), 3U);
    EXPECT_EQ(fieldsOf(*lines, 0), (Fields{"a", "b"}));
    EXPECT_EQ(fieldsOf(*lines, 1), (Fields{"", "c", ""}));
    EXPECT_EQ(fieldsOf(*lines, 2), Fields{"last\r"});
}

TEST(TextLines, RefuseWhatIsNoSuchList) {
    const std::vector<std::string> unsound{"a\\x",
                                           "a\\",
                                           "a\\\nb",
                                           std::string("a\0b", 3),
                                           "a\rb",
                                           "a\r",
                                           "\xC3",
                                           "\xC0\x80",
                                           "\xED\xA0\x80",
                                           "\xF5\x80\x80\x80",
                                           "\xE0\x80\x80",
                                           "plain text \xFF",
                                           "\xF4\x90\x80\x80"};
    for (const std::string& bytes : unsound)
        EXPECT_FALSE(TextLines::parse(bytes)) << bytes;
    std::string target = "x";
    EXPECT_FALSE(TextLines::append(target, {"fine", "\xFF"}));
    EXPECT_EQ(target, "x");
}

} // namespace
} // namespace corvane
