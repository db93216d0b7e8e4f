#include "support/LinkBench.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

constexpr const char* Light = "Corvane.LumoraControl";
constexpr const char* Relay = "Corvane.PactorControl";

TEST(KOCommLink, FindsNegotiatesAndNamesTheProduct) {
    LinkBench bench;
    bench.plugIn("pactor-3.1");
    std::string told;
    const Connection onClass = bench.link.ClassChanged.connect([&] { told += "class "; });
    const Connection onReady =
        bench.link.ReadyStateChanged.connect([&] { told += bench.link.ready() ? "ready" : "not"; });
    bench.run(2000);
    EXPECT_TRUE(bench.link.IsConnected());
    EXPECT_FALSE(bench.link.ready() || bench.link.Negotiated()); // not unasked
    bench.link.setMaintainConnection(true);
    bench.run(200);
    EXPECT_EQ(told, "class ready");
    EXPECT_EQ(bench.link.Class(), Relay);
    EXPECT_EQ(bench.link.deviceType().ToString(), "3.1");
    EXPECT_EQ(bench.link.firmwareVersion().ToString(), "3.7");
    const std::vector<std::string> log = bench.takeLog();
    const std::vector<std::string> beginning(log.begin(), log.begin() + 8);
    EXPECT_EQ(beginning, (std::vector<std::string>{
                             "1 device(s).", "  Candidate device 0:", "    Description: Corvane",
                             "    Manufacturer: Ortaline Works", "    Manufacturer ID: KO",
                             "    Serial Number: KO0000001", "Connected to device 0.", ""}));
    EXPECT_EQ(log.back(), "Detected product 'Pactor'.");
}

TEST(KOCommLink, ConnectsToTheClassAskedFor) {
    LinkBench bench;
    bench.plugIn("lumora-1.2");
    EXPECT_TRUE(bench.link.Connect(Light, false));
    EXPECT_TRUE(bench.logged("Got 'Corvane.LumoraControl', good."));
    EXPECT_FALSE(bench.link.Connect(Relay, false)); // compares at once, as it is connected
    EXPECT_TRUE(bench.logged(
        "Wrong product: got 'Corvane.LumoraControl', needed 'Corvane.PactorControl'."));
    EXPECT_TRUE(bench.link.MaintainConnection());
    EXPECT_TRUE(bench.link.Connect(Relay, true));
}

TEST(KOCommLink, AcceptsAnUnrecognizedProductIfAnyWillDo) {
    LinkBench bench;
    bench.plugIn("quillon");
    EXPECT_TRUE(bench.link.Connect(Relay, true));
    EXPECT_TRUE(bench.logged("Unrecognized product."));
    EXPECT_EQ(bench.link.Class(), Light); // still the start class
}

TEST(KOCommLink, WithoutADeviceGivesUpAfterFiveSecondsWithoutAReset) {
    LinkBench bench;
    const std::uint32_t start = bench.clock.now();
    EXPECT_FALSE(bench.link.Connect(Light, true));
    EXPECT_NEAR(TimeDiff(bench.clock.now(), start), 5000, 5);
    EXPECT_FALSE(bench.logged("Trying resetting the device."));
    EXPECT_FALSE(bench.link.MaintainConnection());
}

TEST(KOCommLink, WithASilentProductResetsOnceAndGivesUpAfterTenSeconds) {
    LinkBench bench({.DebugMode = true}, "KO", 0xFFFFFFFFULL - 3000); // the clock wraps meanwhile
    bench.plugIn("silent");
    const std::uint32_t start = bench.clock.now();
    EXPECT_FALSE(bench.link.Connect(Light, true));
    EXPECT_NEAR(TimeDiff(bench.clock.now(), start), 10000, 25);
    EXPECT_EQ(bench.timesLogged("Trying resetting the device."), 1);
    EXPECT_EQ(bench.timesLogged("Resetting device."), 1);
    // Hellos are spaced: each missed echo waits more than 500 ms.
    EXPECT_NEAR(bench.timesLogged("Echo missed."), 20, 1);
    EXPECT_NEAR(bench.timesLogged("False alarm."), 9, 1);
}

TEST(KOCommLink, LetsTheProductGoAfterItsAcknowledgement) {
    LinkBench bench;
    bench.plugIn("lumora-1.2");
    ASSERT_TRUE(bench.link.Connect(Light, false));
    const std::uint32_t start = bench.clock.now();
    bench.link.Disconnect(false);
    EXPECT_TRUE(bench.link.ready()); // until the first exit request
    bench.link.DisconnectAndBlock(false);
    EXPECT_NEAR(TimeDiff(bench.clock.now(), start), 253, 4);
    EXPECT_FALSE(bench.link.ready());
    EXPECT_EQ(bench.timesLogged("Unnegotiating..."), 1);
    EXPECT_TRUE(bench.logged("Received packet acknowledging exit request."));
    EXPECT_FALSE(bench.logged("Resetting device."));
    bench.takeLog();
    bench.link.DisconnectAndBlock(true); // nothing to let go: at once, and nothing is sent
    EXPECT_TRUE(bench.takeLog().empty());
    EXPECT_TRUE(bench.link.Connect(Light, false));
    bench.link.DisconnectAndBlock(true);
    EXPECT_TRUE(bench.logged("Resetting device."));
}

/// A transport whose packets are laid in by hand, for the states that a sound product never shows.
struct ByHand final : KODevice, KOPackets {
    std::vector<std::pair<int, std::vector<std::uint8_t>>> incoming;
    std::vector<int> sent; // channels
    int errors = 0;
    int unsent = 0;
    int resets = 0;
    std::size_t taken = 0;
    int hellos = 0;
    bool echoes = false;
    bool driver = true;

    void EnumerateDevices() override {}
    int GetDeviceCount() const override { return 1; }
    DeviceInfo GetDeviceInfo(int) const override { return {"Corvane", "Ortaline Works", "", ""}; }
    bool EnumerationPending() const override { return false; }
    void OpenDevice(int) override {}
    void CloseDevice() override {}
    int GetDeviceState2() override { return -1; }
    void ResetDevice() override { ++resets; }
    bool CheckForDriver() override { return driver; }
    bool ProgramDevice(const DeviceInfo&) override { return false; }
    void WaitForData(int) override {}
    bool SendHello(int value) override {
        hellos += value == 125 ? 1 : 0;
        return true;
    }
    bool ReceivedHello() override { return echoes; }
    bool SendPacket(int channel, std::span<const std::uint8_t>) override {
        sent.push_back(channel);
        return true;
    }
    int SendQueue(int& errorCount) override {
        errorCount = errors;
        return unsent;
    }
    bool ReceivePacket(int& channel, int& length) override {
        if (taken == incoming.size())
            return false;
        channel = incoming[taken].first;
        length = static_cast<int>(incoming[taken].second.size());
        ++taken;
        return true;
    }
    void ReceivePacketData(std::span<std::uint8_t> target) override {
        std::copy_n(incoming[taken - 1].second.begin(), target.size(), target.begin());
    }
};

class LinkByHand : public testing::Test {
  protected:
    LinkBench bench; // its clock, log and products only
    ByHand door;
    StepPause pause{bench.clock};
    KOCommLink link{{door, door, bench.products, bench.modes, bench.clock, bench.debug, pause}};

    void receive(int channel, std::vector<std::uint8_t> data = {}) {
        door.incoming.emplace_back(channel, std::move(data));
        link.Update();
    }
    void negotiate() {
        link.Update();
        link.setMaintainConnection(true);
        receive(0, {1, 2, 3, 7, 13});
        ASSERT_TRUE(link.ready());
        bench.takeLog();
    }
};

TEST_F(LinkByHand, WhileEchoesComeAHelloGoesOutAtEveryStep) {
    door.echoes = true;
    link.setMaintainConnection(true);
    for (int i = 0; i < 6; ++i)
        link.Update();
    EXPECT_EQ(door.hellos, 5); // the first step found the device
    EXPECT_EQ(bench.timesLogged("Echo received."), 5);
    EXPECT_FALSE(link.Negotiated());
}

TEST_F(LinkByHand, TellsADeadProductFromOneThatDoesNotSayWhatItIs) {
    for (const bool echoes : {false, true}) {
        door.echoes = echoes;
        EXPECT_FALSE(link.Connect(Light, true));
        EXPECT_EQ(link.EchoHeard(), echoes);
    }
}

TEST_F(LinkByHand, KnowsTheProductOfThisSessionAndOfNoOther) {
    using Record = AttachedProduct::Record;
    negotiate();
    EXPECT_TRUE(link.Product().isOf(Light));
    EXPECT_EQ(link.Product().name(), "Lumora 1.2");
    link.ResetDevice();
    EXPECT_EQ(link.Product().record, Record::None);
    EXPECT_EQ(link.Class(), Light);
    receive(0, {9, 9, 0, 0, 18});
    EXPECT_EQ(link.Product().record, Record::Unknown);
    EXPECT_EQ(link.Product().deviceType.ToString(), "9.9");
    receive(0, {1, 2, 3, 7, 14});
    EXPECT_EQ(link.Product().record, Record::Damaged);
    EXPECT_FALSE(link.Product().isOf(Light));
    EXPECT_EQ(link.deviceType().ToString(), "1.2"); // of long ago
}

TEST_F(LinkByHand, OnlySomeChannelsAreSignsOfLife) {
    std::vector<int> passedOn;
    const Connection onPacket = link.PacketReceived.connect(
        [&](const KOPacket& packet) { passedOn.push_back(packet.Channel()); });
    link.Update();
    link.setMaintainConnection(true);
    receive(1, {5});
    receive(127);
    EXPECT_FALSE(link.Negotiated());
    receive(0); // too short a record is no product, but a sign of life
    EXPECT_TRUE(link.Negotiated());
    EXPECT_TRUE(bench.logged("Unrecognized product."));
    for (const int channel : {80, 126, 1})
        receive(channel, {1, 2});
    EXPECT_EQ(passedOn, (std::vector<int>{80, 126}));
}

TEST_F(LinkByHand, AnUnansweredExitRequestIsSentTenTimesAndThenItIsOver) {
    negotiate();
    link.setMaintainConnection(false);
    const std::uint32_t start = bench.clock.now();
    std::vector<std::uint32_t> times; // of each request
    while (link.Negotiated()) {
        link.Update();
        times.resize(door.sent.size(), bench.clock.now() - start);
        bench.clock.advance(1);
    }
    EXPECT_EQ(door.sent, std::vector<int>(10, 127));
    EXPECT_EQ(times.front(), 251U);
    EXPECT_EQ(times.back(), 2510U);
    EXPECT_EQ(bench.clock.now() - start, 2512U); // completes at the very next step
    EXPECT_EQ(door.resets, 0);
}

TEST_F(LinkByHand, QueuedPacketsGoBeforeTheHandshakeEnds) {
    negotiate();
    link.setMaintainConnection(false);
    door.unsent = 2;
    receive(126);
    bench.clock.advance(5000);
    for (const int unsent : {2, 0}) {
        door.unsent = unsent;
        link.Update();
        EXPECT_EQ(link.Negotiated(), unsent != 0);
    }
    EXPECT_TRUE(door.sent.empty());
}

TEST_F(LinkByHand, ErrorsInTheQueueEndTheHandshakeWithAReset) {
    negotiate();
    link.setMaintainConnection(false);
    door.errors = 1;
    link.Update();
    EXPECT_TRUE(bench.logged("Unnegotiation complete, with errors."));
    EXPECT_EQ(door.resets, 1);
    EXPECT_FALSE(link.Negotiated());
    door.errors = 0;
    negotiate(); // again, and for good
    link.Update();
    EXPECT_TRUE(link.ready());
}

TEST_F(LinkByHand, NegotiatingAgainDuringTheHandshakeStartsANewSession) {
    negotiate();
    link.setMaintainConnection(false);
    link.setMaintainConnection(true); // before the first request: still the same session
    link.Update();
    EXPECT_TRUE(link.ready());
    link.setMaintainConnection(false);
    bench.clock.advance(251);
    link.Update();
    EXPECT_FALSE(link.ready());
    link.setMaintainConnection(true);
    EXPECT_FALSE(link.Negotiated()); // at once, so that who connects waits for the new one
    negotiate();
    link.ResetDevice();
    EXPECT_FALSE(link.Negotiated());
}

TEST(KOCommLink, SaysHelloAgainAMonthAfterOneThatWasNotEchoed) {
    LinkBench bench;
    LinkBench::Plugged& silent = bench.plugIn("silent");
    bench.link.setMaintainConnection(true);
    bench.run(2000);
    bench.unplug(silent);
    bench.run(100);
    // The clock can't tell how long ago that was.
    bench.clock.advance(30ULL * 24 * 3600 * 1000);
    bench.plugIn("lumora-1.2");
    bench.run(700);
    EXPECT_TRUE(bench.link.ready());
}

TEST(KOCommLink, PrefersTheHighestIndexAndLeavesStrangersAlone) {
    LinkBench bench;
    LinkBench::Plugged& blank = bench.plugIn("blank");
    bench.run(100);
    EXPECT_EQ(bench.timesLogged("No viable candidates found."), 1); // told once
    EXPECT_EQ(bench.link.Hindrance().holder, "'FT232R USB UART' of 'FTDI'");
    LinkBench::Plugged& one = bench.plugIn("lumora-1.1");
    LinkBench::Plugged& two = bench.plugIn("pactor-2.1");
    LinkBench::Plugged& last = bench.plugIn("blank");
    bench.run(100);
    EXPECT_TRUE(two.inUse);
    EXPECT_FALSE(one.inUse || blank.inUse || last.inUse);
}

TEST(KOCommLink, ProgrammingModesTakeBlankHardware) {
    for (const bool any : {false, true}) {
        LinkBench bench({.ProgramMode = true, .ProgramAnyDevice = any});
        bench.plugIn("lumora-1.1");
        const LinkBench::Plugged* blank = any ? nullptr : &bench.plugIn("blank");
        EXPECT_EQ(bench.link.Class(), "Corvane.DefaultControl");
        bench.run(100);
        EXPECT_TRUE(any || blank->inUse);
        EXPECT_TRUE(bench.link.ready());
        EXPECT_FALSE(bench.link.IsLinkDevice());
        EXPECT_EQ(bench.link.Class(), "Corvane.ProgrammerControl");
    }
}

} // namespace
} // namespace corvane
