#include "eeprom/GenericEEPROMProgrammer.h"

#include "support/Desk.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
constexpr const char* EepromClass = "Corvane.EEPROMEditorControl";
const std::string WriteTimedOut =
    "Error: Write timed out.\r\n\r\nIf this problem occurs often, try connecting through a powered "
    "USB hub.\r\n\r\n";

KOBuffer counting(int length) {
    KOBuffer buffer;
    for (int i = 0; i < length; ++i)
        buffer.Append(static_cast<std::uint8_t>(i));
    return buffer;
}

class EEPROMProgrammer : public testing::Test {
  protected:
    Desk desk;
    GenericEEPROMProgrammer programmer{desk.place};
    std::vector<std::string> events;
    std::vector<std::string> requests; // of scripted firmware: channel, address, length
    std::function<bool(std::uint8_t channel, int address, bench::ByteView data)> answers =
        [](std::uint8_t, int, bench::ByteView) { return true; };

    bool connect() {
        desk.bench.run(50);
        desk.person.set(true);
        return programmer.Connect(EepromClass, "microcontroller", true);
    }
    /// A product that keeps nothing and answers as the test says, to a read with bytes that count
    /// from 0 if it does not say what.
    void plugScripted(std::optional<bench::Bytes> readAnswer = std::nullopt) {
        desk.bench.plugIn(scripted(
            [this, readAnswer](std::uint8_t channel, bench::ByteView data, bench::Reply& reply) {
                const int address = data[0] + data[1] * 256;
                requests.push_back(std::to_string(channel) + " " + std::to_string(address) + " " +
                                   std::to_string(channel == 208 ? data[2] : data.size() - 2));
                const KOBuffer buffer = counting(channel == 208 ? data[2] : 0);
                const bench::Bytes counted(buffer.bytes().begin(), buffer.bytes().end());
                if (answers(channel, address, data.subspan(2)))
                    reply.send(static_cast<std::uint8_t>(channel - 128),
                               channel == 208 ? readAnswer.value_or(counted) : bench::Bytes{});
            }));
        ASSERT_TRUE(connect());
    }
    std::uint32_t elapsed(const std::function<void()>& work) {
        const std::uint32_t start = desk.bench.clock.now();
        work();
        return desk.bench.clock.now() - start;
    }

  private:
    Connection onReading_ = programmer.Reading.connect([this](int soFar, int total) {
        events.push_back("r" + std::to_string(soFar) + "/" + std::to_string(total));
    });
    Connection onWriting_ = programmer.Writing.connect([this](int soFar, int total) {
        events.push_back("w" + std::to_string(soFar) + "/" + std::to_string(total));
    });
};

TEST_F(EEPROMProgrammer, WritesVerifiesAndReadsARealPart) {
    desk.bench.plugIn("eeprom");
    ASSERT_TRUE(connect());
    KOBuffer read = counting(3);
    EXPECT_TRUE(programmer.WriteEEPROM(0, KOBuffer()));
    EXPECT_TRUE(programmer.ReadEEPROM(0, 0, read));
    EXPECT_EQ(read.Length(), 0);
    EXPECT_THAT(events, IsEmpty()); // nothing is nothing
    EXPECT_TRUE(programmer.WriteEEPROM(3, counting(7)));
    EXPECT_THAT(events, ElementsAre("w7/7", "r0/7", "r7/7"));
    EXPECT_TRUE(programmer.ReadEEPROM(2, 9, read));
    EXPECT_EQ(read.ToString(), "255 0 1 2 3 4 5 6 255");
    programmer.Disconnect(false);
    EXPECT_FALSE(desk.bench.link.Negotiated());
    EXPECT_TRUE(desk.person.messages.empty());
}

TEST_F(EEPROMProgrammer, SendsChunksThatTheProductHasRoomFor) {
    plugScripted();
    const auto requestsOf = [this](int address, int length) {
        requests.clear();
        static_cast<void>(programmer.WriteEEPROM(address, counting(length)));
        return requests;
    };
    EXPECT_THAT(requestsOf(510, 3),
                ElementsAre("209 510 1", "209 511 1", "209 512 1", "208 510 3"));
    programmer.setUCBufferSize(64);
    EXPECT_THAT(requestsOf(0, 255), ElementsAre("209 0 60", "209 60 60", "209 120 60", "209 180 60",
                                                "209 240 15", "208 0 255"));
    programmer.setUCBufferSize(300);
    EXPECT_THAT(requestsOf(0, 255), ElementsAre("209 0 250", "209 250 5", "208 0 255"));
}

TEST_F(EEPROMProgrammer, TriesEightTimesAndThenByteByByteAlsoWhatIsLeft) {
    int seen = 0;
    answers = [&seen](std::uint8_t channel, int, bench::ByteView data) {
        if (channel == 208)
            return true;
        ++seen;
        return data.size() == 1 && seen > 10; // the third try of the first byte
    };
    plugScripted();
    programmer.setUCBufferSize(7);
    EXPECT_TRUE(programmer.WriteEEPROM(100, counting(8)));
    EXPECT_EQ(requests.size(), 8U + 3U + 7U + 1U);
    EXPECT_EQ(requests[7], "209 100 3");
    EXPECT_EQ(requests[8], "209 100 1");
    EXPECT_EQ(requests[11], "209 101 1");
    EXPECT_EQ(requests[13], "209 103 1");
}

TEST_F(EEPROMProgrammer, ReadsBackUpToFourTimesAndTellsOnlyTheLastFailure) {
    int reads = 0;
    int good = 4;
    answers = [&](std::uint8_t channel, int, bench::ByteView) {
        return channel == 209 || ++reads >= good;
    };
    plugScripted();
    EXPECT_TRUE(programmer.WriteEEPROM(16, counting(2)));
    EXPECT_EQ(reads, 4);
    EXPECT_TRUE(desk.person.messages.empty());
    reads = 0;
    good = 5;
    programmer.setVariable("Throttle");
    EXPECT_FALSE(programmer.WriteEEPROM(16, counting(2)));
    EXPECT_EQ(reads, 4);
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Couldn't read back the EEPROM to "
                                                      "verify it.\r\n\r\nIt was at address 16, in "
                                                      "the variable 'Throttle'. The product has"));
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Read timed out."));
    EXPECT_TRUE(desk.person.messages.empty());
    KOBuffer other = counting(2);
    other.setData(2, 7);
    EXPECT_FALSE(programmer.WriteEEPROM(16, other));
    EXPECT_THAT(desk.person.takeMessage(),
                EndsWith("There is 1 instead of 7 at address 17, in the variable 'Throttle'."));
}

TEST_F(EEPROMProgrammer, GivesUpWithAMessage) {
    answers = [](std::uint8_t channel, int, bench::ByteView) { return channel == 208; };
    plugScripted(bench::Bytes{});
    programmer.setUCBufferSize(64);
    bool written = true;
    const std::uint32_t time = elapsed([&] { written = programmer.WriteEEPROM(0, counting(2)); });
    EXPECT_FALSE(written);
    EXPECT_NEAR(time, 12 * 550U, 40);
    EXPECT_THAT(desk.person.takeMessage(), StartsWith(WriteTimedOut + "It was at address 0. The "));
    EXPECT_FALSE(desk.person.sawBusyMessage);
    EXPECT_THAT(events, IsEmpty()); // no verification follows

    answers = [](std::uint8_t, int, bench::ByteView) { return true; };
    EXPECT_FALSE(programmer.WriteEEPROM(0, counting(2))); // nothing comes back
    EXPECT_EQ(desk.person.takeMessage(),
              "Error: The EEPROM written does not match the EEPROM read.\r\n\r\nYou may want to "
              "try programming again.\r\n\r\nThe product sent 0 bytes for 2.");
}

TEST_F(EEPROMProgrammer, TellsWhyItCanNotConnect) {
    EXPECT_FALSE(connect());
    EXPECT_EQ(desk.person.takeMessage(),
              "Error: No Corvane is connected.\r\n\r\nPlug in a Corvane link, then try again.");
    EXPECT_EQ(programmer.outcome().reason, JobOutcome::Reason::NoLink);
    desk.bench.plugIn("silent");
    EXPECT_FALSE(connect());
    EXPECT_EQ(desk.person.takeMessage(),
              "Error: Unable to connect to the microcontroller.\r\n\r\nThe product behind the link "
              "does not answer. Check its cable and its power.");
    EXPECT_EQ(programmer.outcome().reason, JobOutcome::Reason::NoAnswer);
}

TEST_F(EEPROMProgrammer, AWaitEndsAtOnceWhenTheLinkIsGone) {
    LinkBench::Plugged& plugged = desk.bench.plugIn("eeprom");
    ASSERT_TRUE(connect());
    desk.bench.unplug(plugged);
    KOBuffer buffer;
    bool read = true;
    EXPECT_LT(elapsed([&] { read = programmer.ReadEEPROM(0, 3, buffer); }), 10U);
    EXPECT_FALSE(read);
    EXPECT_THAT(desk.person.takeMessage(), EndsWith("The link has been unplugged. Plug it in, then "
                                                    "try again."));
    EXPECT_FALSE(programmer.WriteEEPROM(0, counting(2)));
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("The link has been unplugged."));
    EXPECT_EQ(programmer.outcome().reason, JobOutcome::Reason::NoLink);
}

TEST_F(EEPROMProgrammer, OtherChannelsDoNotEndAWait) {
    desk.bench.plugIn(scripted([](std::uint8_t, bench::ByteView, bench::Reply& reply) {
        reply.send(82, bench::Bytes{1});
    }));
    ASSERT_TRUE(connect());
    KOBuffer buffer;
    EXPECT_FALSE(programmer.ReadEEPROM(0, 3, buffer));
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Read timed out."));
}

TEST_F(EEPROMProgrammer, AReplyOfAnotherLengthIsGivenBackAndIsNoDataForWhoNeedsItExactly) {
    plugScripted(bench::Bytes{7, 8, 9});
    KOBuffer buffer;
    EXPECT_TRUE(programmer.ReadEEPROM(0, 20, buffer));
    EXPECT_EQ(buffer.ToString(), "7 8 9");
    EXPECT_TRUE(programmer.ReadExactly(0, 3, buffer));
    EXPECT_FALSE(programmer.ReadExactly(0, 20, buffer));
    EXPECT_THAT(desk.person.takeMessage(),
                StartsWith("Error: The product sent 3 bytes where 20 were asked for."));
}

TEST_F(EEPROMProgrammer, AWriteWhoseReplyComesLateIsVerifiedOnceMore) {
    // The reply to the first sending ends the wait for the second, whose own one then ends that for
    // the bytes that are read back.
    int writes = 0;
    int reads = 0;
    desk.bench.plugIn(scripted([&](std::uint8_t channel, bench::ByteView, bench::Reply& reply) {
        if (channel == 209 ? ++writes == 2 : ++reads == 1)
            reply.send(81, {});
        else if (channel == 208)
            reply.send(80, bench::Bytes{0});
    }));
    ASSERT_TRUE(connect());
    EXPECT_TRUE(programmer.WriteEEPROM(0, counting(1)));
    EXPECT_EQ(reads, 2);
    EXPECT_TRUE(desk.person.messages.empty());
}

} // namespace
} // namespace corvane
