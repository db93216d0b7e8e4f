// What the programs built for the vendor "RQ" do.
#include "support/BenchProgram.h"

namespace corvane {
namespace {

using testing::HasSubstr;

class ProgramsForRQ : public BenchProgram {
  protected:
    [[nodiscard]] static Ran run(const std::vector<std::string>& arguments) {
        return ctl(arguments, "corvanectl-rq");
    }
};

TEST_F(ProgramsForRQ, KnowTheQuillonAndNothingElse) {
    {
        Process bench("corvane-bench", {"quillon"});
        waitFor("quillon");
        EXPECT_EQ(run({"identify"}).output, "Quillon\t100.1\t3.7\n");
    }
    Process bench("corvane-bench", {"lumora-1.2"});
    waitFor("lumora-1.2");
    const Ran light = run({"identify"});
    EXPECT_EQ(light.status, 1);
}

TEST_F(ProgramsForRQ, CheckAndConvertItsFiles) {
    const std::string file =
        folder.file("a.Quillon", "Quillon\t2\t1\t0\t1\r\nQuillonPWM\t 7 \r\nQuillonPWM\t255\r\n");
    EXPECT_EQ(run({"check", file}).output,
              "type\tQuillon\nversion\t1\nchanges\t2\nposition\t1\nstop point\t0\n");
    EXPECT_EQ(run({"convert", file, folder.path() / "b.Quillon"}).status, 0);
    EXPECT_EQ(folder.content("b.Quillon"), "Quillon\t2\t1\t0\t1\nQuillonPWM\t7\nQuillonPWM\t255\n");
    const Ran light = run({"check", "a.lumora"});
    EXPECT_EQ(light.status, 1);
    EXPECT_THAT(light.errors, HasSubstr("No product owns files like a.lumora."));
}

} // namespace
} // namespace corvane
