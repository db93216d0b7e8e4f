#include "support/BenchProgram.h"

#include "base/Product.h"

#include <map>

namespace corvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

TEST_F(BenchProgram, EachProductOfTheVendorIsNamedAndAnotherToldOf) {
    struct Case {
        const char* product;
        const char* line;
        const char* program = "corvanectl";
    };
    for (const auto& [product, line, program] :
         {Case{"lumora-1.1", "Lumora\t1.1\t3.7\n"}, Case{"lumora-1.2", "Lumora\t1.2\t3.7\n"},
          Case{"pactor-2.1", "Pactor\t2.1\t3.7\n"}, Case{"pactor-3.1", "Pactor\t3.1\t3.7\n"},
          Case{"eeprom", "KOEEPROM\t255.1\t3.7\n"}, Case{"quillon", ""},
          Case{"quillon", "Quillon\t100.1\t3.7\n", "corvanectl-rq"},
          Case{"pactor-3.1", "", "corvanectl-rq"}}) {
        Process bench("corvane-bench", {product});
        waitFor(product);
        const bool known = *line != '\0';
        const Ran identify = ctl({"identify", "--debug"}, program);
        EXPECT_EQ(identify.status, known ? 0 : 1) << product;
        EXPECT_EQ(identify.output, line);
        EXPECT_EQ(identify.errors.find("\nUnrecognized product.\n") == std::string::npos, known);
        bench.signal(SIGTERM);
        EXPECT_EQ(bench.wait(), 0);
        EXPECT_FALSE(std::filesystem::exists(socketOf(product)));
    }
}

TEST_F(BenchProgram, AVirtualLinkThatAnotherProgramHoldsIsCalledBusy) {
    Process bench("corvane-bench", {"eeprom", "--size", "65536", "--write-time", "0", "--log"});
    waitFor("eeprom");
    Process holder("corvanectl", {"read", "0", "65536"});
    ASSERT_TRUE(
        eventually([&] { return bench.output().find("channel 208") != std::string::npos; }));
    holder.signal(SIGSTOP);
    const Ran identify = ctl({"identify"});
    EXPECT_EQ(identify.status, 1);
    EXPECT_THAT(identify.errors,
                HasSubstr("The link is busy: another program uses it, corvanectl (process " +
                          std::to_string(holder.id()) + "). Close that program"));
    holder.signal(SIGCONT);
    static_cast<void>(holder.wait()); // which may have waited too long meanwhile
    EXPECT_EQ(ctl({"identify"}).status, 0);
}

TEST_F(BenchProgram, TheWindowTellsInASentenceThatThereIsNoDesktop) {
    for (const auto& [name, value] : {std::pair("QT_QPA_PLATFORM", "xcb"), std::pair("DISPLAY", ""),
                                      std::pair("WAYLAND_DISPLAY", "")})
        ::setenv(name, value, 1);
    Process window("corvane", {});
    EXPECT_EQ(window.wait(), 1);
    EXPECT_EQ(window.errors(),
              "corvane: There is no desktop to show a window on. Start it within one.\n");
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

TEST_F(BenchProgram, WrongUsageIsToldApartFromFailure) {
    using Arguments = std::vector<std::string>;
    for (const auto& [program, all] : std::map<const char*, std::vector<Arguments>>{
             {"corvanectl",
              {{}, {"frobnicate"}, {"identify", "--device", "-1"}, {"identify", "--device"}}},
             {"corvane-bench",
              {{"toaster"},
               {},
               {"eeprom", "--fault", "drop=2"},
               {"eeprom", "--firmware", "x"},
               {"eeprom", "--name", "../x"},
               {"eeprom", "--eeprom", "/nowhere/at/all"}}}})
        for (const Arguments& arguments : all) {
            const Ran wrong = ctl(arguments, program);
            EXPECT_EQ(wrong.status, 2);
            EXPECT_NE(wrong.errors, "");
        }
    EXPECT_EQ(ctl({"--version"}).output, std::string("corvanectl ") + ProgramVersion + "\n");
}

TEST_F(BenchProgram, ListsLinksByNameAndPicksOne) {
    Process b("corvane-bench", {"pactor-2.1", "--name", "b"});
    Process a("corvane-bench", {"lumora-1.1", "--name", "a"});
    Process c("corvane-bench", {"blank", "--name", "c"});
    for (const char* name : {"a", "b", "c"})
        waitFor(name);
    EXPECT_EQ(ctl({"devices"}).output, "0\tCorvane\tOrtaline Works\tKO\tKO0000001\n"
                                       "1\tCorvane\tOrtaline Works\tKO\tKO0000001\n"
                                       "2\tFT232R USB UART\tFTDI\tFT\tFT0000001\n");
    EXPECT_EQ(ctl({"identify", "--device", "0"}).output, "Lumora\t1.1\t3.7\n");
}

TEST_F(BenchProgram, AKilledBenchLeavesASocketThatTheNextOneReplaces) {
    {
        Process killed("corvane-bench", {"eeprom"});
        waitFor("eeprom");
    }
    ASSERT_TRUE(std::filesystem::exists(socketOf("eeprom")));
    const auto device = devices();
    EXPECT_TRUE(countBecomes(*device, 0));
    Process next("corvane-bench", {"eeprom"});
    EXPECT_TRUE(countBecomes(*device, 1));
    const Ran second = ctl({"eeprom"}, "corvane-bench");
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.errors, HasSubstr("plugged in already"));
}

TEST_F(BenchProgram, ForeignFilesAndFoldersThatOthersMayEnterAreLeftAlone) {
    folder.file("keep.link", "precious");
    const Ran keep = ctl({"eeprom", "--name", "keep"}, "corvane-bench");
    EXPECT_EQ(keep.status, 1);
    EXPECT_THAT(keep.errors, HasSubstr("Choose another name with --name."));
    EXPECT_EQ(folder.content("keep.link"), "precious");
    Process bench("corvane-bench", {"eeprom"});
    waitFor("eeprom");
    EXPECT_EQ(ctl({"devices"}).errors, "");
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const Ran devices = ctl({"devices"});
    EXPECT_EQ(devices.output, "");
    EXPECT_THAT(devices.errors, HasSubstr("Try: chmod 700 " + folder.path().string() + "\n"));
    const Ran other = ctl({"blank"}, "corvane-bench");
    EXPECT_EQ(other.status, 1);
    EXPECT_THAT(other.errors, HasSubstr("mode 0700"));
}

} // namespace
} // namespace corvane
