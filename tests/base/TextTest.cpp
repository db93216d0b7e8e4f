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
    constexpr int least = -2147483647 - 1;
    for (const auto& [text, value] : {std::pair("2.5", 2),
                                      {"3.5", 4},
                                      {"-0.5", 0},
                                      {"4294967296", 2147483647},
                                      {"-9e99", least}})
        EXPECT_EQ(ReadInteger(text), value) << text;
    EXPECT_EQ(RoundToInteger(std::nan("")), 0);
}

TEST(Numbers, AreWrittenShort) {
    EXPECT_EQ(WriteNumber(-0.5), "-.5");
    EXPECT_EQ(WriteNumber(0.1 + 0.2), ".3");
    EXPECT_EQ(WriteNumber(0), "0");
    EXPECT_EQ(WriteFixed(0.05, 2), "0.05");
    EXPECT_EQ(WriteHexadecimal(0), "0");
    EXPECT_EQ(ReadHexadecimal("fF0000x"), 0xFF0000U);
    EXPECT_EQ(ReadHexadecimal("x"), 0U);
}

using Fields = std::vector<std::string>;

/// All lines of a text, if it is sound.
std::optional<std::vector<Fields>> linesOf(const std::string& bytes) {
    KOIOReader reader;
    if (!reader.Load(bytes))
        return std::nullopt;
    std::vector<Fields> lines;
    while (reader.More()) {
        std::string prefix;
        reader.ReadArray(prefix, lines.emplace_back());
        lines.back().insert(lines.back().begin(), prefix);
    }
    return lines;
}

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
        ASSERT_TRUE(KOIOWriter(bytes).WriteArray(fields[0], {fields.begin() + 1, fields.end()}));
    }
    EXPECT_EQ(linesOf(bytes), written);
}

TEST(TextLines, ReadWhatOtherProgramsWrite) {
    EXPECT_EQ(linesOf(""), std::vector<Fields>{});
    EXPECT_EQ(linesOf("\n"), std::vector<Fields>{{""}});
    EXPECT_EQ(linesOf("a\tb\r\n\tc\t\r\nlast\\r"),
              (std::vector<Fields>{{"a", "b"}, {"", "c", ""}, {"last\r"}}));
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
        EXPECT_FALSE(linesOf(bytes)) << bytes;
    std::string target = "x";
    EXPECT_FALSE(KOIOWriter(target).WriteArray("fine", {"\xFF"}));
    EXPECT_EQ(target, "x");
}

} // namespace
} // namespace corvane
