#include "kolib/devices/LinkMessages.h"

#include "bench/LinkProtocol.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

const DeviceInfo strings{"Corvane", "Ortaline Works", "KO", "KO1234567"};

TEST(LinkMessages, BothEndsUnderstandEachOther) {
    bench::MessageReader reader;
    const std::vector<std::uint8_t> largest(4096, 0xAB);
    for (const std::uint8_t byte : LinkMessages::encode('P', LinkMessages::encodeStrings(strings)))
        reader.feed(std::vector<std::uint8_t>{byte}); // however it is cut
    reader.feed(LinkMessages::encode('D', largest));
    const auto program = reader.next();
    ASSERT_TRUE(program);
    EXPECT_EQ(bench::unpackStrings(program->payload)->serialNumber, "KO1234567");
    EXPECT_EQ(reader.next()->payload, largest);
    EXPECT_FALSE(reader.next());

    LinkMessages messages;
    bench::Bytes answer;
    bench::appendMessage(answer, 'I',
                         bench::packStrings({"Corvane", "Ortaline Works", "KO", "KO1234567"}));
    bench::appendMessage(answer, 'D', std::vector<std::uint8_t>(5000, 1)); // in two messages
    messages.feed(answer);
    EXPECT_EQ(LinkMessages::decodeStrings(messages.next()->payload), strings);
    EXPECT_EQ(messages.next()->payload.size() + messages.next()->payload.size(), 5000U);
    EXPECT_FALSE(messages.next());
    EXPECT_FALSE(messages.broken());
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
