#include "pwm/QuillonControl.h"

#include "bench/QuillonFirmware.h"
#include "support/Desk.h"

#include <gmock/gmock.h>

#include <tuple>

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// The requests that a product got, each as its channel and its data.
using Requests = std::vector<std::string>;

class Quillon : public testing::Test {
  protected:
    Desk desk{RunModes{.DebugMode = true}, "RQ"};
    QuillonControl control{desk.place};
    QuillonControllerConfiguration* dialog = nullptr;
    Connection onShown = control.ConfigurationShown.connect(
        [this](QuillonControllerConfiguration& shown) { dialog = &shown; });
    LinkBench::Plugged* plugged = nullptr;
    Requests requests;

    QuillonSlot& slot(std::size_t index) { return control.slot(index); }
    History& history(std::size_t index) { return slot(index).program.HistoryObject(); }
    std::vector<int> blocks(std::size_t index) {
        const auto bytes = slot(index).program.blocks().bytes();
        return {bytes.begin(), bytes.end()};
    }
    void fill(std::size_t index, int count) {
        for (int i = 1; i <= count; ++i)
            ASSERT_TRUE(slot(index).program.append(static_cast<std::uint8_t>(i * 7)));
    }
    void configure() { control.options.SelectItem("Configure &Controller..."); }
    /// Another one in place of the one that is there.
    void plugIn(bench::Bench made) {
        if (plugged != nullptr)
            desk.bench.unplug(*plugged);
        desk.bench.run(100);
        plugged = &desk.bench.plugIn(std::move(made));
        desk.bench.run(100);
    }
    /// A product that stores programs, does this wrong, and whose requests are noted.
    void plugIn(const std::string& misbehaviour = {}) {
        auto firmware = std::make_shared<bench::QuillonFirmware>(
            bench::Identity{100, 1, 1, 0}, bench::QuillonFirmware::parse(misbehaviour).value());
        EXPECT_TRUE(firmware->keepIn(desk.folder.path() / "memory"));
        plugIn(scripted(
            [this, firmware](std::uint8_t channel, bench::ByteView data, bench::Reply& reply) {
                requests.push_back(std::to_string(channel) + ": " + DecimalBytes(data));
                firmware->packet(channel, data, {}, reply);
            },
            {100, 1, 1, 0}));
    }
    Requests takeRequests() { return std::exchange(requests, {}); }
    void expectIdle() {
        EXPECT_FALSE(desk.bench.link.MaintainConnection());
        EXPECT_FALSE(desk.bench.link.Negotiated());
        EXPECT_FALSE(desk.person.busy);
        EXPECT_FALSE(desk.person.sawBusyMessage);
        EXPECT_EQ(slot(0).ProgramProgress.Caption() + slot(1).ProgramProgress.Caption(), "");
    }
};

TEST_F(Quillon, AProgramGoesUpAndComesDownInPiecesAndItsProgressShowsBetweenTheEnds) {
    plugIn();
    fill(1, 257);
    slot(1).UploadButton.press();
    const Requests up = takeRequests();
    ASSERT_EQ(up.size(), 11U);
    EXPECT_EQ(up[0], "180: 1 1 1");
    EXPECT_EQ(up[1].substr(0, 17), "181: 1 0 0 7 14 2");
    EXPECT_EQ(up[9], "181: 1 0 1 7");
    EXPECT_EQ(up[10], "182: 1");
    EXPECT_FALSE(history(1).SaveDirty());
    expectIdle();

    const std::vector<int> whole = blocks(1);
    std::vector<std::string> progress;
    const Connection onProgress = slot(1).ProgramProgress.Changed.connect(
        [&] { progress.push_back(slot(1).ProgramProgress.Caption()); });
    slot(1).DownloadButton.press(); // replaces what is there
    EXPECT_EQ(takeRequests(),
              (Requests{"178: 1", "179: 1 0 0 128", "179: 1 128 0 128", "179: 1 0 1 1"}));
    EXPECT_THAT(progress, ElementsAre("50%", "100%", ""));
    EXPECT_EQ(blocks(1), whole);
    EXPECT_FALSE(history(1).SaveDirty());
    EXPECT_EQ(slot(1).ProgramInfo.Caption(), "5.14 seconds");
    EXPECT_THAT(blocks(0), IsEmpty());
    expectIdle();
    EXPECT_THAT(desk.person.messages, IsEmpty());
}

TEST_F(Quillon, NothingAndNothingButZerosAreNoProgram) {
    plugIn();
    slot(0).DownloadButton.press();
    EXPECT_EQ(takeRequests(), Requests{"178: 0"});
    slot(0).UploadButton.press(); // an empty program has a beginning and an end
    EXPECT_EQ(takeRequests(), (Requests{"180: 0 0 0", "182: 0"}));
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(slot(1).program.append(0));
    slot(1).UploadButton.press();
    slot(1).DownloadButton.press();
    EXPECT_EQ(history(1).Length(), 0);
    EXPECT_THAT(desk.person.messages, IsEmpty());
}

TEST_F(Quillon, EachSilenceEndsItsOperationWithItsMessage) {
    plugIn();
    fill(0, 40);
    slot(0).UploadButton.press();
    const auto download = [this] { slot(0).DownloadButton.press(); };
    const auto upload = [this] { slot(0).UploadButton.press(); };
    for (const auto& [channel, message, act] :
         std::vector<std::tuple<std::string, const char*, std::function<void()>>>{
             {"180", "Upload timed out while starting.", upload},
             {"181", "Upload timed out.", upload},
             {"182", "Upload timed out during completion.", upload},
             {"178", "Download timed out while getting length.", download},
             {"179", "Download timed out.", download},
             {"183", "Couldn't read controller settings.", [this] { configure(); }}}) {
        SCOPED_TRACE(message);
        plugIn("silent=" + channel);
        takeRequests();
        const auto before = desk.bench.clock.now();
        act();
        EXPECT_THAT(desk.person.takeMessage(), StartsWith(std::string("Error: ") + message));
        EXPECT_LT(desk.bench.clock.now() - before, 2000U); // once, and not again
        EXPECT_TRUE(takeRequests().back().starts_with(channel));
        EXPECT_EQ(history(0).Length(), channel >= "180" && channel != "183" ? 40 : 0);
        expectIdle();
    }
    EXPECT_EQ(dialog, nullptr);
}

TEST_F(Quillon, ReportsWrongRepliesWaitsOnAndKeepsWhatCameBeforeASilence) {
    plugIn(scripted(
        [](std::uint8_t channel, bench::ByteView data, bench::Reply& reply) {
            const auto blocks = [](bench::Bytes bytes, std::size_t count, std::uint8_t value) {
                bytes.resize(3 + count, value);
                return bytes;
            };
            // One after another, each wrong in its way, and in the end the right one.
            if (channel == 178)
                for (const bench::Bytes& bytes :
                     {bench::Bytes{0, 130, 0}, bench::Bytes{1, 130}, bench::Bytes{1, 130, 0}})
                    reply.send(50, bytes);
            else if (channel == 179 && data[1] == 0)
                for (const bench::Bytes& bytes :
                     {bench::Bytes{}, blocks({0, 0, 0}, 128, 66), bench::Bytes{1, 0},
                      blocks({1, 0, 1}, 128, 66), blocks({1, 0, 0}, 127, 66),
                      blocks({1, 0, 0}, 129, 5)})
                    reply.send(51, bytes);
        },
        {100, 1, 1, 0}));
    slot(1).DownloadButton.press();
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Download timed out."));
    EXPECT_EQ(blocks(1), std::vector<int>(128, 5)); // no more than was asked for
    EXPECT_FALSE(history(1).SaveDirty());
    for (const char* line : {"50 DD1 0 1", "50 DD3 2 3", "51 DD1 nothing 1", "51 DD1 0 1",
                             "51 DD2 nothing 0", "51 DD2 256 0", "51 DD3 127 128"})
        EXPECT_TRUE(desk.bench.logged(line)) << line;
    expectIdle();
}

TEST_F(Quillon, TellsOfAMissingLinkAndOfAnotherProduct) {
    for (Button* button : {&slot(0).DownloadButton, &slot(0).UploadButton}) {
        button->press();
        EXPECT_THAT(desk.person.takeMessage(), HasSubstr("Error: No Corvane is connected."));
    }
    desk.bench.plugIn("lumora-1.2"); // of no vendor that this program knows
    desk.bench.run(100);
    configure();
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Unable to connect to the Quillon."));
    EXPECT_EQ(dialog, nullptr);
    expectIdle();
}

TEST_F(Quillon, TheReceiverIsReadAndWritten) {
    plugIn();
    configure();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(takeRequests(), Requests{"183: "});
    EXPECT_TRUE(dialog->optReceiver[0].Value());
    int closed = 0;
    Connection onClosed = dialog->Closed.connect([&] { ++closed; });
    dialog->optReceiver[2].choose();
    EXPECT_FALSE(dialog->optReceiver[0].Value());
    dialog->OKButton.press();
    EXPECT_EQ(takeRequests(), Requests{"184: 2"});
    EXPECT_EQ(closed, 1);
    configure();
    EXPECT_TRUE(dialog->optReceiver[2].Value());
    takeRequests();
    dialog->CancelButton.press();
    EXPECT_THAT(requests, IsEmpty());

    EXPECT_TRUE(control.WriteOptions(7)); // of which there is no button
    configure();
    EXPECT_TRUE(std::none_of(dialog->optReceiver.begin(), dialog->optReceiver.end(),
                             [](const OptionButton& option) { return option.Value(); }));
    dialog->OKButton.press();
    EXPECT_EQ(takeRequests().back(), "184: 7");
    configure();
    plugIn("silent=184");
    onClosed = dialog->Closed.connect([&] { ++closed; });
    dialog->OKButton.press();
    EXPECT_THAT(desk.person.takeMessage(),
                StartsWith("Error: Couldn't write controller settings."));
    EXPECT_EQ(closed, 1);
    expectIdle();
}

TEST_F(Quillon, EachSlotHasItsOwnFile) {
    fill(0, 75);
    EXPECT_EQ(slot(0).ProgramFrame.Caption(), "Program 1");
    const std::string file = desk.folder.path() / "a.Quillon";
    desk.person.files = {file, file, std::nullopt};
    slot(0).SaveButton.press();
    EXPECT_EQ(desk.person.asked.back(), "save Quillon Programs (*.Quillon)|*.Quillon|"
                                        "All Files (*.*)|*.* as ");
    EXPECT_EQ(slot(0).ProgramFrame.Caption(), "Program 1 - a.Quillon");
    EXPECT_EQ(desk.folder.content("a.Quillon").substr(0, 41),
              "Quillon\t75\t75\t0\t1\nQuillonPWM\t7\nQuillonPWM");
    slot(1).OpenButton.press();
    slot(1).OpenButton.press(); // cancelled
    for (const auto& [lines, what] : {std::pair("LumoraTime\t1\n", "unrecognized prefix"),
                                      {"QuillonPWM\t256\n", "deserialization error"},
                                      {"QuillonPWM\n", "deserialization error"}}) {
        desk.person.files = {
            desk.folder.file("b.Quillon", std::string("Quillon\t1\t1\t0\t1\n") + lines)};
        slot(1).OpenButton.press();
        EXPECT_THAT(desk.person.takeMessage(), HasSubstr(what));
    }
    EXPECT_EQ(blocks(1), blocks(0));

    // A change belongs to its slot, whatever else was worked on since.
    fill(1, 1);
    history(0).Undo();
    EXPECT_EQ(blocks(0).size(), 74U);
    EXPECT_EQ(blocks(1).size(), 76U);
    EXPECT_EQ(slot(0).ProgramFrame.Caption(), "Program 1 - a.Quillon*");
    EXPECT_EQ(slot(1).ProgramFrame.Caption(), "Program 2 - a.Quillon");
}

TEST_F(Quillon, TheLongestProgramGoesEverywhereUnchanged) {
    plugIn();
    fill(0, QuillonProgram::MaxLength);
    EXPECT_FALSE(slot(0).program.append(1));
    const std::vector<int> whole = blocks(0);
    slot(0).UploadButton.press();
    slot(0).DownloadButton.press();
    EXPECT_EQ(blocks(0), whole);
    std::string tooLong = "Quillon\t65536\t0\t0\t1\n";
    for (int i = 0; i < 65536; ++i)
        tooLong += "QuillonPWM\t1\n";
    const std::string file = desk.folder.path() / "a.Quillon";
    desk.person.files = {file, file, desk.folder.file("b.Quillon", tooLong)};
    slot(0).SaveButton.press();
    slot(1).OpenButton.press();
    slot(1).OpenButton.press();
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("deserialization error"));
    EXPECT_EQ(blocks(1), whole);
}

} // namespace
} // namespace corvane
