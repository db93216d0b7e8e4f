#include "shell/LinkStatus.h"

#include "support/LinkBench.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using State = LinkStatus::State;

class LinkStatusTest : public testing::Test {
  protected:
    LinkStatusTest() { bench.link.setMaintainConnection(false); }

    LinkBench bench;
    LinkStatus status{bench.link};
    int changes = 0;
    Connection onChanged = status.Changed.connect([this] { ++changes; });
};

TEST_F(LinkStatusTest, TellsOfAJobFromItsBeginningToItsEnd) {
    bench.plugIn("lumora-1.2");
    bench.run(200);
    EXPECT_EQ(status.headline(), "A link is plugged in");
    std::vector<std::string> told;
    const Connection onTold = status.Changed.connect([&] { told.push_back(status.headline()); });
    ASSERT_TRUE(bench.link.Connect("Corvane.LumoraControl", false));
    bench.run(100);
    bench.link.DisconnectAndBlock(false);
    bench.run(100);
    EXPECT_EQ(told, (std::vector<std::string>{"The link is busy", "Busy with Lumora 1.2",
                                              "Lumora 1.2", "A link is plugged in"}));
    bench.run(10000);
    EXPECT_EQ(told.size(), 4U);
}

TEST_F(LinkStatusTest, NamesWhatIsThereAndNotWhatWasThere) {
    LinkBench::Plugged* plugged = nullptr;
    bench.link.setMaintainConnection(true);
    for (const auto& [product, headline] : {std::pair("pactor-3.1", "Pactor 3.1"),
                                            {"quillon", "Unrecognized product"},
                                            {"lumora-1.1", "Lumora 1.1"},
                                            {"lumora-1.2", "Lumora 1.2"},
                                            {"quillon", "Unrecognized product"},
                                            {"pactor-3.1", "Pactor 3.1"}}) {
        if (plugged != nullptr)
            bench.unplug(*plugged);
        bench.run(1000);
        EXPECT_EQ(status.headline(), "No link is plugged in");
        std::vector<std::string> told;
        const Connection onTold =
            status.Changed.connect([&] { told.push_back(status.headline()); });
        plugged = &bench.plugIn(product);
        bench.run(1000);
        EXPECT_EQ(told, (std::vector<std::string>{"A link is plugged in", headline}));
    }
}

TEST_F(LinkStatusTest, AJobThatFindsNoLinkSaysSo) {
    EXPECT_FALSE(bench.link.Connect("Corvane.LumoraControl", false));
    EXPECT_EQ(status.state(), State::NoDevice);
    EXPECT_FALSE(bench.link.InUse());
}

} // namespace
} // namespace corvane
