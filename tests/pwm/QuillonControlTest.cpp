#include "pwm/QuillonControl.h"

#include "bench/QuillonFirmware.h"
#include "support/Desk.h"

#include <gmock/gmock.h>

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
    /// A product that stores programs, does this wrong, and whose requests are noted.
    LinkBench::Plugged& plugIn(const std::string& misbehaviour = {}) {
        const auto wrong = bench::QuillonFirmware::parse(misbehaviour);
        auto firmware =
            std::make_shared<bench::QuillonFirmware>(bench::Identity{100, 1, 1, 0}, wrong.value());
        EXPECT_TRUE(firmware->keepIn(desk.folder.path() / "memory"));
        LinkBench::Plugged& plugged = desk.bench.plugIn(scripted(
            [this, firmware](std::uint8_t channel, bench::ByteView data, bench::Reply& reply) {
                requests.push_back(std::to_string(channel) + ": " + DecimalBytes(data));
                firmware->packet(channel, data, {}, reply);
            },
            {100, 1, 1, 0}));
        desk.bench.run(100);
        return plugged;
    }
    /// All requests of a kind, and forgets all.
    Requests takeRequests(int channel = 0) {
        Requests taken;
        for (const std::string& request : std::exchange(requests, {}))
            if (channel == 0 || request.starts_with(std::to_string(channel)))
                taken.push_back(request);
        return taken;
    }
    void expectIdle() {
        EXPECT_FALSE(desk.bench.link.MaintainConnection());
        EXPECT_FALSE(desk.bench.link.Negotiated());
        EXPECT_FALSE(desk.person.busy);
        EXPECT_FALSE(desk.person.sawBusyMessage);
        for (std::size_t index : {0, 1})
            EXPECT_EQ(slot(index).ProgramProgress.Caption(), "");
    }
};

TEST_F(Quillon, AProgramGoesUpAndComesDownInPieces) {
    plugIn();
    fill(0, 129);
    slot(0).UploadButton.press();
    const Requests up = takeRequests();
    ASSERT_EQ(up.size(), 7U);
    EXPECT_EQ(up[0], "180: 0 129 0");
    EXPECT_EQ(up[1].substr(0, 17), "181: 0 0 0 7 14 2");
    EXPECT_EQ(up[5], "181: 0 128 0 135");
    EXPECT_EQ(up[6], "182: 0");
    EXPECT_FALSE(history(0).SaveDirty());
    expectIdle();

    slot(0).DownloadButton.press(); // replaces what is there
    EXPECT_EQ(takeRequests(), (Requests{"178: 0", "179: 0 0 0 128", "179: 0 128 0 1"}));
    EXPECT_EQ(blocks(0).size(), 129U);
    EXPECT_EQ(blocks(0).back(), 135);
    EXPECT_FALSE(history(0).SaveDirty());
    EXPECT_EQ(history(0).Length(), 129);
    EXPECT_EQ(slot(0).ProgramInfo.Caption(), "2.58 seconds");
    EXPECT_THAT(blocks(1), IsEmpty());
    expectIdle();
    EXPECT_THAT(desk.person.messages, IsEmpty());
}

TEST_F(Quillon, OffsetsHaveTwoBytesAndProgressShowsBetweenTheEnds) {
    plugIn();
    fill(1, 300);
    slot(1).UploadButton.press();
    EXPECT_EQ(takeRequests(181)[8].substr(0, 11), "181: 1 0 1 ");
    std::vector<std::string> progress;
    const Connection onProgress = slot(1).ProgramProgress.Changed.connect(
        [&] { progress.push_back(slot(1).ProgramProgress.Caption()); });
    slot(1).DownloadButton.press();
    EXPECT_EQ(takeRequests(179).back(), "179: 1 0 1 44");
    EXPECT_THAT(progress, ElementsAre("43%", "85%", ""));
}

TEST_F(Quillon, NothingAndNothingButZerosAreNoProgram) {
    plugIn();
    slot(0).DownloadButton.press();
    EXPECT_EQ(takeRequests(), Requests{"178: 0"});
    EXPECT_EQ(slot(0).ProgramInfo.Caption(), "0.00 seconds");
    slot(0).UploadButton.press(); // an empty program has a beginning and an end
    EXPECT_EQ(takeRequests(), (Requests{"180: 0 0 0", "182: 0"}));
    for (int i = 0; i < 50; ++i)
        ASSERT_TRUE(slot(1).program.append(0));
    EXPECT_EQ(slot(1).ProgramInfo.Caption(), "1.00 seconds");
    slot(1).UploadButton.press();
    slot(1).DownloadButton.press();
    EXPECT_EQ(history(1).Length(), 0);
    EXPECT_THAT(desk.person.messages, IsEmpty());
}

TEST_F(Quillon, EachSilenceEndsItsOperationWithItsMessage) {
    struct Case {
        const char* silent;
        const char* message;
        bool download;
    };
    for (const Case& silence :
         {Case{"silent=178", "Download timed out while getting length.", true},
          Case{"silent=179", "Download timed out.", true},
          Case{"silent=180", "Upload timed out while starting.", false},
          Case{"silent=181", "Upload timed out.", false},
          Case{"silent=182", "Upload timed out during completion.", false}}) {
        fill(0, 40);
        LinkBench::Plugged& product = plugIn();
        slot(0).UploadButton.press();
        desk.bench.unplug(product);
        desk.bench.run(100);
        takeRequests();
        LinkBench::Plugged& silent = plugIn(silence.silent);
        const auto before = desk.bench.clock.now();
        (silence.download ? slot(0).DownloadButton : slot(0).UploadButton).press();
        EXPECT_THAT(desk.person.takeMessage(),
                    StartsWith(std::string("Error: ") + silence.message));
        EXPECT_LT(desk.bench.clock.now() - before, 2000U); // once, and not again
        EXPECT_EQ(history(0).Length(), silence.download ? 0 : 40);
        EXPECT_EQ(takeRequests(182).size(), silence.silent == std::string("silent=182") ? 1U : 0U);
        expectIdle();
        desk.bench.unplug(silent);
        desk.bench.run(100);
        EXPECT_TRUE(history(0).NewHistory());
    }
}

TEST_F(Quillon, KeepsWhatCameBeforeASilence) {
    bench::Bench made = scripted(
        [](std::uint8_t channel, bench::ByteView data, bench::Reply& reply) {
            if (channel == 178)
                reply.send(50, bench::Bytes{data[0], 200, 0});
            else if (channel == 179 && data[1] == 0) {
                bench::Bytes bytes{data[0], 0, 0};
                bytes.resize(3 + 128, 5);
                reply.send(51, bytes);
            }
        },
        {100, 1, 1, 0});
    desk.bench.plugIn(std::move(made));
    desk.bench.run(100);
    slot(1).DownloadButton.press();
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Download timed out."));
    EXPECT_EQ(blocks(1), std::vector<int>(128, 5));
    EXPECT_FALSE(history(1).SaveDirty());
    expectIdle();
}

TEST_F(Quillon, ReportsWrongRepliesAndWaitsOn) {
    fill(0, 10);
    LinkBench::Plugged* product = &plugIn();
    const auto replace = [&](const char* misbehaviour) {
        desk.bench.unplug(*product);
        desk.bench.run(100);
        product = &plugIn(misbehaviour);
        desk.bench.takeLog();
        slot(0).DownloadButton.press();
        return desk.person.takeMessage();
    };
    EXPECT_THAT(replace("wrong-slot"),
                StartsWith("Error: Download timed out while getting length."));
    EXPECT_TRUE(desk.bench.logged("50 DD1 1 0"));
    EXPECT_THAT(replace("too-short"),
                StartsWith("Error: Download timed out while getting length."));
    EXPECT_TRUE(desk.bench.logged("50 DD3 2 3"));

    // One after another, each wrong in its way, and in the end the right one.
    desk.bench.unplug(*product);
    desk.bench.run(100);
    desk.bench.plugIn(scripted(
        [](std::uint8_t channel, bench::ByteView, bench::Reply& reply) {
            if (channel == 178)
                return reply.send(50, bench::Bytes{1, 2, 0});
            for (const bench::Bytes& bytes :
                 {bench::Bytes{}, bench::Bytes{0, 0, 0, 66, 66}, bench::Bytes{1, 0},
                  bench::Bytes{1, 0, 1, 66, 66}, bench::Bytes{1, 0, 0, 66},
                  bench::Bytes{1, 0, 0, 7, 8, 9}, bench::Bytes{1, 0, 0, 66, 66}})
                reply.send(51, bytes);
        },
        {100, 1, 1, 0}));
    desk.bench.run(100);
    slot(1).DownloadButton.press();
    EXPECT_THAT(desk.person.messages, IsEmpty());
    EXPECT_THAT(blocks(1), ElementsAre(7, 8)); // no more than was asked for
    for (const char* line :
         {"51 DD1 nothing 1", "51 DD1 0 1", "51 DD2 nothing 0", "51 DD2 256 0", "51 DD3 1 2"})
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
    control.options.SelectItem("Configure &Controller...");
    EXPECT_THAT(desk.person.takeMessage(),
                HasSubstr("Error: Unable to connect to the Quillon.\r\n\r\nThe product behind the "
                          "link is of type 1.2, which this program does not know."));
    EXPECT_EQ(dialog, nullptr);
    expectIdle();
}

TEST_F(Quillon, TheReceiverIsReadAndWritten) {
    LinkBench::Plugged& product = plugIn();
    control.options.SelectItem("Something else");
    EXPECT_EQ(dialog, nullptr);
    control.options.SelectItem("Configure &Controller...");
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
    control.options.SelectItem("Configure &Controller...");
    EXPECT_TRUE(dialog->optReceiver[2].Value());
    takeRequests();
    onClosed = dialog->Closed.connect([&] { ++closed; });
    dialog->CancelButton.press();
    EXPECT_EQ(closed, 2);
    EXPECT_THAT(requests, IsEmpty());

    EXPECT_TRUE(control.WriteOptions(7));
    control.options.SelectItem("Configure &Controller...");
    EXPECT_TRUE(std::none_of(dialog->optReceiver.begin(), dialog->optReceiver.end(),
                             [](const OptionButton& option) { return option.Value(); }));
    takeRequests();
    dialog->OKButton.press();
    EXPECT_EQ(takeRequests(), Requests{"184: 7"});
    desk.bench.unplug(product);
    desk.bench.run(100);

    plugIn("silent=184");
    onClosed = dialog->Closed.connect([&] { ++closed; });
    dialog->OKButton.press();
    EXPECT_THAT(desk.person.takeMessage(),
                StartsWith("Error: Couldn't write controller settings."));
    EXPECT_EQ(closed, 2);
    expectIdle();
}

TEST_F(Quillon, ASilentProductOpensNoDialog) {
    plugIn("silent=183");
    control.options.SelectItem("Configure &Controller...");
    EXPECT_THAT(desk.person.takeMessage(), StartsWith("Error: Couldn't read controller settings."));
    EXPECT_EQ(dialog, nullptr);
    expectIdle();
}

TEST_F(Quillon, EachSlotHasItsOwnFile) {
    fill(0, 75);
    EXPECT_EQ(slot(0).ProgramInfo.Caption(), "1.50 seconds");
    EXPECT_EQ(slot(0).ProgramFrame.Caption(), "Program 1");
    desk.person.files = {desk.folder.path() / "a.Quillon"};
    slot(0).SaveButton.press();
    EXPECT_EQ(desk.person.asked.back(), "save Quillon Programs (*.Quillon)|*.Quillon|"
                                        "All Files (*.*)|*.* as ");
    EXPECT_EQ(slot(0).ProgramFrame.Caption(), "Program 1 - a.Quillon");
    EXPECT_EQ(desk.folder.content("a.Quillon").substr(0, 41),
              "Quillon\t75\t75\t0\t1\nQuillonPWM\t7\nQuillonPWM");
    desk.person.files = {desk.folder.path() / "a.Quillon", std::nullopt,
                         desk.folder.file("b.Quillon", "Quillon\t1\t1\t0\t1\nLumoraTime\t1\n"),
                         desk.folder.file("c.Quillon", "Quillon\t1\t1\t0\t1\nQuillonPWM\t256\n"),
                         desk.folder.file("d.Quillon", "Quillon\t1\t1\t0\t1\nQuillonPWM\n")};
    slot(1).OpenButton.press();
    EXPECT_EQ(blocks(1), blocks(0));
    EXPECT_EQ(slot(1).ProgramFrame.Caption(), "Program 2 - a.Quillon");
    slot(1).OpenButton.press(); // cancelled
    for (const char* what :
         {"unrecognized prefix", "deserialization error", "deserialization error"}) {
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
    EXPECT_FALSE(history(0).SaveDirty());
    desk.person.files = {desk.folder.path() / "a.Quillon", desk.folder.path() / "a.Quillon"};
    slot(0).SaveButton.press();
    slot(1).OpenButton.press();
    EXPECT_EQ(blocks(1), whole);
    EXPECT_EQ(slot(1).ProgramInfo.Caption(), "1310.70 seconds");
    std::string tooLong = "Quillon\t65536\t0\t0\t1\n";
    for (int i = 0; i < 65536; ++i)
        tooLong += "QuillonPWM\t1\n";
    desk.person.files = {desk.folder.file("b.Quillon", tooLong)};
    slot(1).OpenButton.press();
    EXPECT_THAT(desk.person.takeMessage(), HasSubstr("deserialization error"));
    EXPECT_EQ(blocks(1).size(), 65535U);
}

} // namespace
} // namespace corvane
