// The programs with the firmware kit's library behind a virtual link.
#include "support/BenchProgram.h"

namespace corvane {
namespace {

class FirmwareKit : public BenchProgram, public testing::WithParamInterface<std::string> {};

TEST_P(FirmwareKit, IsIdentifiedProgrammedAndRead) {
    const auto board = [this](std::vector<std::string> arguments) {
        if (!GetParam().empty())
            arguments.push_back(GetParam());
        auto process = std::make_unique<Process>("firmware-link", arguments);
        waitFor(arguments[0]);
        return process;
    };
    auto lights = board({"lights", "1", "2"});
    EXPECT_EQ(ctl({"identify"}).output, "Lumora\t1.2\t3.7\n");
    const std::string light =
        folder.file("a.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert2\t2\t0\t1\t100\t1\tP\t0\n");
    const Ran programmed = ctl({"program", light});
    EXPECT_EQ(programmed.status, 0) << programmed.errors;
    EXPECT_EQ(ctl({"read", "25", "8"}).output, "100 0 100 0 100 251 100 0\n");
    EXPECT_EQ(ctl({"write", "250", "1", "0", "255", "0", "9"}).status, 0);
    EXPECT_EQ(ctl({"read", "249", "7"}).output, "0 1 0 255 0 9 255\n");
    lights.reset();
    std::filesystem::remove(socketOf("lights"));

    const auto relay = board({"relay", "3", "1"});
    const std::string settings =
        folder.file("a.relay", "Pactor\t1\t1\t0\t1\nPactorText\t0\tTrip Point\t50\t30\n");
    EXPECT_EQ(ctl({"program", settings}).status, 0);
    EXPECT_EQ(ctl({"read", "0", "8"}).output, "76 0 1 0 1 0 0 255\n");
}

INSTANTIATE_TEST_SUITE_P(Builds, FirmwareKit, testing::Values("", "small"));

} // namespace
} // namespace corvane
