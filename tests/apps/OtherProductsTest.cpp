// What corvanectl does with products that a document is not made for.
#include "support/OtherProducts.h"

#include "support/BenchProgram.h"

namespace corvane {
namespace {

using testing::HasSubstr;

TEST_F(BenchProgram, ADocumentForAnotherProductIsRefusedWithItsName) {
    for (const WrongPair& pair : WrongPairs()) {
        Process bench("corvane-bench", {pair.product, "--log"});
        waitFor(pair.product);
        const Ran ran =
            ctl({"program", folder.file("a." + pair.extension, DocumentOf(pair.extension))},
                pair.vendor == "RQ" ? "corvanectl-rq" : "corvanectl");
        EXPECT_EQ(ran.status, 1) << pair.extension << pair.product;
        EXPECT_THAT(ran.errors, HasSubstr(pair.named));
        EXPECT_EQ(ran.output, "");
        EXPECT_EQ(WritesAmong(FramesOf(bench)), 0) << pair.extension << pair.product;
    }
}

} // namespace
} // namespace corvane
