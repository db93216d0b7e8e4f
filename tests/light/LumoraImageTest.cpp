#include "light/LumoraImage.h"

#include "support/LightBench.h"
#include "support/RandomProgram.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using Bytes = std::vector<std::uint8_t>;

class LumoraImage : public testing::Test, public LightBench {
  protected:
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

TEST_F(LumoraImage, IsWhatTheRulesGiveForRandomPrograms) {
    for (const auto& entry : std::filesystem::directory_iterator(CORVANE_EXAMPLES)) {
        if (entry.path().extension() != ".lumora")
            continue;
        ASSERT_TRUE(history.OpenHistory(entry.path()));
        EXPECT_EQ(imageOf(document), expectedImage(document)) << entry.path();
    }
    int full = 0;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        LumoraDocument program({desk.person, desk.person, desk.files});
        fillAtRandom(program, seed, LumoraDocument::BlockLimit);
        const LumoraCompiled compiled = LumoraImageCompiler(program).compile();
        ASSERT_EQ(compiled.outcome, LumoraCompiled::Outcome::Done) << seed;
        ASSERT_EQ(compiled.segments, program.BlockCount()) << seed;
        ASSERT_EQ(imageOf(program), expectedImage(program)) << seed;
        full += compiled.segments == LumoraDocument::BlockLimit ? 1 : 0;
    }
    EXPECT_GT(full, 0);
}

TEST_F(LumoraImage, OfTheOlderControllerIsAListOfTransfers) {
    add(1, false, 50, 0.25);
    fill(3, std::vector<int>(25, 100));
    const std::vector<std::string> lines = transfers();
    EXPECT_TRUE(desk.person.messages.empty()); // nothing to ask
    EXPECT_EQ(lines[0] + ", " + lines[1] + ", " + lines[2], "6: 255, 5: 0 25 50, 5: 1 100 0");
    // A track of 25 records goes as 18, and then the other 7.
    for (const auto& [index, beginning, numbers] :
         {std::tuple(5U, "5: 4 100 100", 54), {6U, "5: 22 100 100", 21}}) {
        EXPECT_TRUE(lines[index].starts_with(beginning)) << lines[index];
        EXPECT_EQ(std::count(lines[index].begin(), lines[index].end(), ' '), numbers);
    }
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
    for (const std::deque<Answer>& answers :
         std::initializer_list<std::deque<Answer>>{{Answer::Yes, Answer::No}, {Answer::No}}) {
        desk.person.answers = answers;
        EXPECT_TRUE(transfers().empty());
        EXPECT_EQ(last.outcome, LumoraCompiled::Outcome::Canceled);
    }
}

} // namespace
} // namespace corvane
