#include "light/LumoraImage.h"

#include "support/LightBench.h"
#include "support/RandomProgram.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

class LumoraImage : public testing::Test, public LightBench {
  protected:
    Bytes image() {
        LumoraImageCompiler compiler(document);
        EXPECT_EQ(compiler.compile().outcome, LumoraCompiled::Outcome::Done);
        const auto bytes = compiler.image().bytes();
        return {bytes.begin(), bytes.end()};
    }
    static Bytes part(const Bytes& bytes, std::size_t from, std::size_t length) {
        return {bytes.begin() + static_cast<std::ptrdiff_t>(from),
                bytes.begin() + static_cast<std::ptrdiff_t>(from + length)};
    }
    std::vector<std::string> transfers() {
        LumoraTransferCompiler compiler(document, desk.person);
        last = compiler.compile();
        std::vector<std::string> lines;
        for (const LumoraTransfer& transfer : compiler.transfers())
            lines.push_back(std::to_string(transfer.kind) + ": " + transfer.data.ToString());
        return lines;
    }
    LumoraCompiled last;
};

/// The image by the rules of the format, put together in another way than the program does it: the
/// blocks first, track by track, and then the tables by adding up lengths.
Bytes expectedImage(const LumoraDocument& document) {
    const auto percent = [](int v) { return static_cast<std::uint8_t>(v * 51 / 20); };
    std::vector<Bytes> tracks;
    for (int index = 1; index <= 12; ++index) {
        const LumoraTrack& track = document.track(index);
        const int most = document.settings((index + 1) / 2).maxCurrent;
        const auto current = [most](int v) {
            return static_cast<std::uint8_t>(std::min(250, most * v / 100));
        };
        Bytes& bytes = tracks.emplace_back();
        for (int i = 1; i <= track.GetTrackCount(); ++i) {
            const LumoraTrackElement& s = track.GetTrack(i);
            bytes.push_back(static_cast<std::uint8_t>(std::lround(s.time() * 100)));
            if (s.functionCode() == "P")
                bytes.push_back(251);
            if (s.functionCode() == "PT")
                bytes.push_back(252);
            bytes.push_back(current(s.brightness()));
            if (!s.functionCode().empty())
                bytes.push_back(current(s.brightness2()));
        }
        if (bytes.empty())
            bytes = {100, 0};
    }
    Bytes all(255, 0);
    std::size_t at = 0;
    for (std::size_t c = 0; c < 6; ++c) {
        const LumoraChannelSettings& s = document.settings(static_cast<int>(c) + 1);
        all[c] = percent(s.tripPoint);
        all[6 + c] = static_cast<std::uint8_t>(at);
        for (const std::size_t track : {2 * c, 2 * c + 1}) {
            if (track % 2 == 1)
                all[13 + c] = static_cast<std::uint8_t>(at);
            std::copy(tracks[track].begin(), tracks[track].end(),
                      all.begin() + 25 + static_cast<std::ptrdiff_t>(at));
            at += tracks[track].size();
        }
        const int band = percent(s.hysteresis);
        const int trip = percent(s.tripPoint);
        all[19 + c] = static_cast<std::uint8_t>(std::min({band, trip, 255 - trip}));
        all[239 + c] = s.noSignal == 0 ? 1 : 0;
        all[245 + c] = percent(s.turnOffPoint);
    }
    all[12] = static_cast<std::uint8_t>(at);
    int low = std::min(document.transmitterMin(), document.transmitterMax());
    int high = std::max(document.transmitterMin(), document.transmitterMax());
    if (low == high)
        ++(low == 2200 ? low -= 2 : high);
    all[251] = static_cast<std::uint8_t>(low & 255);
    all[252] = static_cast<std::uint8_t>(low >> 8);
    all[253] = static_cast<std::uint8_t>(high & 255);
    all[254] = static_cast<std::uint8_t>(high >> 8);
    return all;
}

TEST_F(LumoraImage, HasTheBytesThatTheFormatGives) {
    setData(document, 1, "Max Current", "30");
    setData(document, 2, "Max Current", "250");
    add(1, false, 50, 0.25);
    add(2, false, 0, 1, "P", 100);
    add(2, true, 100, 2.5, "PT", 10);
    setData(document, 1, "Trip Point", "10");
    setData(document, 1, "Hysteresis", "20");
    setData(document, 2, "Trip Point", "90");
    setData(document, 2, "Hysteresis", "20");
    setData(document, 3, "No Signal", "Bottom");
    setData(document, 4, "Turn Off Point", "1");
    const Bytes bytes = image();
    EXPECT_THAT(part(bytes, 25, 12),
                ElementsAre(25, 15, 100, 0, 100, 251, 0, 250, 250, 252, 250, 25));
    EXPECT_EQ(bytes[0], 25);
    EXPECT_EQ(bytes[19], 25); // narrowed to the trip point
    EXPECT_EQ(bytes[20], 26); // and to what lies above it
    EXPECT_EQ(bytes[241], 0);
    EXPECT_EQ(bytes[248], 2);
    EXPECT_THAT(part(bytes, 6, 3), ElementsAre(0, 4, 12));
}

TEST_F(LumoraImage, IsWhatTheRulesGiveForRandomPrograms) {
    for (const auto& entry : std::filesystem::directory_iterator(CORVANE_EXAMPLES)) {
        if (entry.path().extension() != ".lumora")
            continue;
        ASSERT_TRUE(history.OpenHistory(entry.path()));
        EXPECT_EQ(image(), expectedImage(document)) << entry.path();
    }
    for (unsigned seed = 1; seed <= 300; ++seed) {
        LumoraDocument program({desk.person, desk.person, desk.files});
        fillAtRandom(program, seed, LumoraDocument::BlockLimit);
        LumoraImageCompiler compiler(program);
        const LumoraCompiled compiled = compiler.compile();
        ASSERT_EQ(compiled.outcome, LumoraCompiled::Outcome::Done) << seed;
        ASSERT_EQ(compiled.segments, program.BlockCount()) << seed;
        const auto bytes = compiler.image().bytes();
        ASSERT_EQ(Bytes(bytes.begin(), bytes.end()), expectedImage(program)) << seed;
    }
}

TEST_F(LumoraImage, HoldsOneHundredAndSixBlocksAndNoMore) {
    const auto outcome = [this] { return LumoraImageCompiler(document).compile(); };
    fill(1, std::vector<int>(94, 10));
    EXPECT_EQ(outcome().segments, 105);
    add(1, true, 1, 1);
    add(1, true, 1, 1);
    EXPECT_EQ(outcome().outcome, LumoraCompiled::Outcome::Done);
    EXPECT_EQ(outcome().segments, 106);
    setFunction(writable(document, 2), 1, "P"); // costs two
    EXPECT_EQ(outcome().outcome, LumoraCompiled::Outcome::TooLarge);
    EXPECT_EQ(outcome().segments, 107);
    for (int i = 0; i < 20; ++i)
        add(6, false, 1, 1);
    EXPECT_EQ(outcome().segments, 126); // the real number
}

TEST_F(LumoraImage, BringsTheRangeIntoOrder) {
    const std::vector<std::array<int, 4>> cases{{2300, 2300, 2199, 2200},
                                                {1000, 1000, 1000, 1001},
                                                {1800, 1200, 1200, 1800},
                                                {100, 100, 800, 801},
                                                {1200, 1800, 1200, 1800}};
    for (const auto& [low, high, lowAfter, highAfter] : cases) {
        int first = low;
        int second = high;
        LumoraEncoding::normaliseRange(first, second);
        EXPECT_EQ(first, lowAfter);
        EXPECT_EQ(second, highAfter);
    }
}

TEST_F(LumoraImage, OfTheOlderControllerIsAListOfTransfers) {
    add(1, false, 50, 0.25);
    fill(3, std::vector<int>(25, 100));
    const std::vector<std::string> lines = transfers();
    EXPECT_TRUE(desk.person.messages.empty()); // nothing to ask
    EXPECT_EQ(lines.front(), "6: 255");
    EXPECT_EQ(lines[1], "5: 0 25 50");
    EXPECT_EQ(lines[2], "5: 1 100 0");
    EXPECT_EQ(lines[5].substr(0, 12), "5: 4 100 100"); // 18 records, and then the other 7
    EXPECT_EQ(std::count(lines[5].begin(), lines[5].end(), ' '), 54);
    EXPECT_EQ(lines[6].substr(0, 13), "5: 22 100 100");
    EXPECT_EQ(std::count(lines[6].begin(), lines[6].end(), ' '), 21);
    EXPECT_EQ(std::vector<std::string>(lines.end() - 7, lines.end()),
              (std::vector<std::string>{"3: 0 2 4 30 32 34 36", "4: 1 3 29 31 33 35",
                                        "7: 1 1 1 1 1 1", "2: 5 5 5 5 5 5", "8: 0 0 0 0 0 0",
                                        "1: 127 127 127 127 127 127", "6: 64"}));
    EXPECT_EQ(last.segments, 36);
}

TEST_F(LumoraImage, OfTheOlderControllerAsksAboutWhatItDoesNotKnow) {
    setData(document, 0, "XMit Min", "1000");
    add(1, false, 40, 1, "P", 60);
    add(1, false, 40, 1, "PT", 60);
    desk.person.answers = {Answer::Yes, Answer::Yes};
    EXPECT_EQ(transfers()[1], "5: 0 100 50 1 100 50"); // the average, asked once
    EXPECT_EQ(desk.person.messages.size(), 2U);
    EXPECT_EQ(desk.person.takeMessage(),
              "Unsupported Block: Only newer Lumora controllers support proportional "
              "blocks.\r\n\r\nProgram anyway? Proportional blocks will be set to average "
              "brightness.");
    EXPECT_EQ(desk.person.takeMessage(),
              "Unsupported Feature: Only newer Lumora controllers support custom transmitter "
              "ranges.\r\n\r\nProgram anyway? The custom range will not be used.");
    desk.person.answers = {Answer::Yes, Answer::No};
    EXPECT_TRUE(transfers().empty());
    EXPECT_EQ(last.outcome, LumoraCompiled::Outcome::Canceled);
    desk.person.answers = {Answer::No};
    EXPECT_TRUE(transfers().empty());
    EXPECT_EQ(last.outcome, LumoraCompiled::Outcome::Canceled);
    setData(document, 0, "XMit Min", "1200");
    writable(document, 1).RemoveTrack(2);
    writable(document, 1).RemoveTrack(1);
    fill(6, std::vector<int>(120, 0));
    EXPECT_TRUE(transfers().empty());
    EXPECT_EQ(last.outcome, LumoraCompiled::Outcome::TooLarge);
    EXPECT_EQ(last.segments, 131);
}

} // namespace
} // namespace corvane
