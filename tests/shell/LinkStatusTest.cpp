#include "shell/LinkStatus.h"

#include "support/LinkBench.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

class LinkStatusTest : public testing::Test {
  protected:
    LinkStatusTest() { bench.link.setMaintainConnection(false); }

    LinkBench bench;
    LinkStatus status{bench.link};
    std::vector<std::string> told;
    Connection onTold = status.Changed.connect([this] { told.push_back(status.headline()); });
};

TEST_F(LinkStatusTest, TellsOfAJobFromItsBeginningToItsEnd) {
    bench.plugIn("lumora-1.2");
    bench.run(200);
    ASSERT_TRUE(bench.link.Connect("Corvane.LumoraControl", false));
    bench.run(100);
    bench.link.DisconnectAndBlock(false);
    bench.run(10000);
    EXPECT_EQ(told, (std::vector<std::string>{"A link is plugged in", "The link is busy",
                                              "Busy with Lumora 1.2", "Lumora 1.2",
                                              "A link is plugged in"}));
}

TEST_F(LinkStatusTest, NamesWhatIsThereAndNotWhatWasThere) {
    bench.link.setMaintainConnection(true);
    for (const auto& [product, headline] : {std::pair("pactor-3.1", "Pactor 3.1"),
                                            {"quillon", "Unrecognized product"},
                                            {"lumora-1.1", "Lumora 1.1"},
                                            {"lumora-1.2", "Lumora 1.2"}}) {
        told.clear();
        LinkBench::Plugged& plugged = bench.plugIn(product);
        bench.run(1000);
        bench.unplug(plugged);
        bench.run(1000);
        EXPECT_EQ(told, (std::vector<std::string>{"A link is plugged in", headline,
                                                  "No link is plugged in"}));
    }
}

TEST_F(LinkStatusTest, AJobThatFindsNoLinkSaysSo) {
    EXPECT_FALSE(bench.link.Connect("Corvane.LumoraControl", false));
    EXPECT_EQ(status.state(), LinkStatus::State::NoDevice);
    EXPECT_FALSE(bench.link.InUse());
}

} // namespace
} // namespace corvane
