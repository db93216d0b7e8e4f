#include "update/UpdateInstaller.h"

#include "support/Desk.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

class Installing : public testing::Test {
  protected:
    using State = UpdateRecord::State;
    using Kind = InstallOutcome::Kind;

    Desk desk;
    UpdateRecordFile file{desk.folder.path() / "records", desk.files};
    bool there = false;
    std::string wrong;
    InstallOutcome outcome;
    std::string done;

    void SetUp() override {
        UpdateRecord record;
        record.state = State::Ready;
        record.manifest = R"({"version": "2.22", "notes": "", "url": "https://h/p.deb", "size": 1,
            "issued": "2026-01-01T00:00:00Z", "expires": "2026-02-01T00:00:00Z", "sha256": ")" +
                          std::string(64, 'a') + R"("})";
        ASSERT_TRUE(file.save(record));
    }
    bool install(bool marked = true) {
        if (marked)
            desk.registry.OpenSettingsForWriting()->setIntegers("Update", 1);
        const bool installed =
            UpdateInstaller({desk.registry, desk.person, file, [&](auto&) { return there; },
                             [&](auto&) { return wrong; },
                             [&](auto&) {
                                 done += file.load().state == State::Installing ? "i" : "?";
                                 return outcome;
                             },
                             [&] { done += "c"; }, [&] { done += "w"; }})
                .run();
        if (marked) {
            EXPECT_EQ(desk.registry.OpenSettingsForReading()->Integers("Update"), 0);
        }
        return installed;
    }
};

TEST_F(Installing, EachOutcomeIsToldAndNoted) {
    EXPECT_FALSE(install(false));
    EXPECT_EQ(done, "");
    struct {
        std::string wrong;
        InstallOutcome outcome;
        std::string done;
        State state;
        std::string told;
    } const cases[] = {
        {"", {Kind::Interrupted, "cut"}, "i", State::Installing, "(cut)"},
        {"", {Kind::NotNow, "no password was given"}, "i", State::Ready, "is kept"},
        {"", {Kind::Refused, "older"}, "ic", State::Nothing, "(older)"},
        {"changed", {}, "c", State::Nothing, "not one to be installed (changed)"},
        {"", {}, "ic", State::Nothing, ""},
    };
    for (const auto& one : cases) {
        SetUp();
        done.clear();
        wrong = one.wrong;
        outcome = one.outcome;
        EXPECT_EQ(install(), one.told.empty()) << one.told;
        EXPECT_EQ(done, one.done) << one.told;
        EXPECT_EQ(file.load().state, one.state) << one.told;
        EXPECT_THAT(desk.person.takeMessage(), testing::HasSubstr(one.told));
    }
    EXPECT_FALSE(install()); // marked, but nothing is ready
    SetUp();
    there = true; // it has come another way
    done.clear();
    EXPECT_TRUE(install());
    EXPECT_EQ(done, "c");
    EXPECT_EQ(desk.person.takeMessage(), "");
}

TEST_F(Installing, WaitsForWhoIsAtWorkButNotForEver) {
    UpdateRecordFile other{desk.folder.path() / "records", desk.files};
    ASSERT_TRUE(other.acquire());
    EXPECT_FALSE(install());
    EXPECT_EQ(done, std::string(100, 'w'));
    EXPECT_THAT(desk.folder.content("records/log"), testing::HasSubstr("another Corvane is"));
    other.release();
    EXPECT_TRUE(install());
}

TEST(UpdateRecordFile, KeepsAllAndSurvivesDamage) {
    const TemporaryFolder folder;
    DiskFiles files;
    const UpdateRecordFile file(folder.path(), files);
    UpdateRecord record;
    record.issued = 1'700'000'000;
    record.looked = record.since = 1'700'000'001;
    record.skipped = "2.22";
    record.why = "a \"reason\"";
    ASSERT_TRUE(file.save(record));
    const UpdateRecord read = file.load();
    EXPECT_EQ(read.issued, record.issued);
    EXPECT_EQ(read.looked, record.looked);
    EXPECT_EQ(read.skipped + read.why, record.skipped + record.why);
    EXPECT_EQ(read.daysWithoutNews(record.issued + 30 * 86400), 30);
    EXPECT_EQ(read.daysWithoutNews(0), 0); // a clock that was set back
    for (const char* damaged : {"", "{", "[1]", R"({"state": "ready", "issued": 7})"}) {
        folder.file("state", damaged);
        EXPECT_EQ(file.load().state, UpdateRecord::State::Nothing) << damaged;
        EXPECT_EQ(file.load().issued, 0) << damaged;
    }
    for (int i = 0; i < 60; ++i)
        file.log(std::string(2000, 'x') + "\nthat is meant to look like another line");
    EXPECT_LT(folder.content("log").size(), 65536U);
    EXPECT_THAT(folder.content("log"), testing::Not(testing::HasSubstr("\nthat")));
}

} // namespace
} // namespace corvane
