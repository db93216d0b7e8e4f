#include "kolib/devices/LinkMessages.h"

#include "bench/LinkProtocol.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(LinkMessages, ComeWholeHoweverTheyAreCut) {
    const std::vector<std::uint8_t> payload(300, 0xAB);
    LinkMessages messages;
    bench::MessageReader reader;
    for (const std::uint8_t byte : LinkMessages::encode('D', payload)) {
        EXPECT_FALSE(messages.next());
        EXPECT_FALSE(reader.next());
        messages.feed(std::vector<std::uint8_t>{byte});
        reader.feed(std::vector<std::uint8_t>{byte});
    }
    EXPECT_EQ(messages.next()->payload, payload);
    EXPECT_EQ(reader.next()->payload, payload);
}

TEST(LinkMessages, UnknownKindsAndTooLongMessagesBreakTheStream) {
    for (const std::vector<std::uint8_t>& bytes :
         {std::vector<std::uint8_t>{'X'}, {'D', 1, 16}, {0}}) {
        LinkMessages messages;
        messages.feed(bytes);
        EXPECT_FALSE(messages.next());
        EXPECT_TRUE(messages.broken());
        bench::MessageReader reader;
        reader.feed(bytes);
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.failed());
    }
}

TEST(LinkMessages, StringsAreFourAndEachIsEnded) {
    const auto bytes = [](const std::string& text) {
        return std::vector<std::uint8_t>(text.begin(), text.end());
    };
    using namespace std::string_literals;
    for (const std::string& text : {""s, "a\0b\0c\0"s, "a\0b\0c\0d"s, "a\0b\0c\0d\0e"s}) {
        EXPECT_FALSE(LinkMessages::decodeStrings(bytes(text))) << text;
        EXPECT_FALSE(bench::unpackStrings(bytes(text))) << text;
    }
    EXPECT_EQ(LinkMessages::decodeStrings(bytes("\0\0\0\0"s)), DeviceInfo{});
    EXPECT_EQ(LinkMessages::encodeStrings({"a\0x"s, "", "", ""}), bytes("a\0\0\0\0"s));
}

} // namespace
} // namespace corvane
