#include "kolib/update/QtUpdates.h"

#include "kolib/update/Versions.h"
#include "support/HttpSite.h"
#include "support/OwnHome.h"
#include "support/TemporaryFolder.h"
#include "system/DiskFiles.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace corvane {
namespace {

/// A publisher with the real signing tool, a server, and a client of the version 2.21.
class Updates : public testing::Test {
  protected:
    TemporaryFolder folder;
    HttpSite site;
    std::string package = std::string(300000, 'p') + "ackage";
    DiskFiles files;
    std::unique_ptr<QtUpdates> client;
    std::int64_t now = *ReadUtc("2026-06-01T12:00:00Z");
    bool whole = true;
    int retryTime = 10;
    std::string version = "2.21";
    std::string told;

    void SetUp() override {
        run({"-q", "-G", "-W", "-p", pathOf("ours.pub"), "-s", pathOf("ours.sec")});
        publish();
    }
    static void run(const QStringList& arguments) {
        QProcess minisign;
        minisign.start("minisign", arguments);
        EXPECT_TRUE(minisign.waitForFinished());
        EXPECT_EQ(minisign.exitCode(), 0) << minisign.readAllStandardError().toStdString();
    }
    QString pathOf(const std::string& name) const {
        return QString::fromStdString(folder.path() / name);
    }
    /// The real signature of some bytes.
    std::string signatureOf(const std::string& bytes, const std::string& comment,
                            bool legacy) const {
        folder.file("signed", bytes);
        QStringList arguments{"-q", "-S",
                              "-s", pathOf("ours.sec"),
                              "-m", pathOf("signed"),
                              "-t", QString::fromStdString(comment)};
        if (legacy)
            arguments.append("-l");
        run(arguments);
        return folder.content("signed.minisig");
    }
    std::string manifestOf(const std::string& of) const {
        folder.file("package", package);
        QFile file(pathOf("package"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return R"({"version": ")" + of + R"(", "notes": "Better.", "url": ")" + site.url("/p.deb") +
               R"(", "issued": ")" + WriteUtc(now - 3600) + R"(", "expires": ")" +
               WriteUtc(now + 86400) + R"(", "sha256": ")" + Minisign::sha256Of(file.handle()) +
               R"(", "size": )" + std::to_string(package.size()) + "}";
    }
    void publish(const std::string& of = "2.22", bool legacy = false) {
        const std::string manifest = manifestOf(of);
        site["/m.json"] = {manifest};
        site["/m.json.minisig"] = {signatureOf(manifest, "corvane manifest " + of, legacy)};
        site["/p.deb"] = {package};
        site["/p.deb.minisig"] = {signatureOf(package, "corvane " + of + " p.deb", legacy)};
        site.requests.clear();
    }
    UpdateSource source() {
        UpdateSource source{site.url("/m.json"), folder.content("ours.pub"), version,
                            folder.path() / "cache", folder.path() / "state"};
        source.now = [this] { return now; };
        source.installedWhole = [this] { return whole; };
        source.tell = [this](const std::string& line) { told += line + "\n"; };
        source.stallTime = 300;
        source.wholeTime = 400;
        source.retryTime = retryTime;
        source.retries = 2;
        return source;
    }
    /// The state that the client comes to.
    int settled() const {
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return client->UC_GetState() != KOUpdates::Working; }, 20000));
        return client->UC_GetState();
    }
    int check() {
        client.reset(); // whoever was at it has ended
        client = std::make_unique<QtUpdates>(source(), files);
        client->UC_Begin();
        return settled();
    }
    int checkAndDownload() {
        EXPECT_EQ(check(), KOUpdates::Available);
        client->UC_DownloadUpdate();
        return settled();
    }
    std::size_t filesLeft() const {
        const std::filesystem::path cache = folder.path() / "cache";
        if (!std::filesystem::exists(cache))
            return 0;
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(cache), {}));
    }
    /// As if nobody had ever looked for an update here.
    void forget() {
        client.reset();
        for (const char* name : {"cache", "state"})
            std::filesystem::remove_all(folder.path() / name);
    }
    /// How it stood when somebody was killed.
    void note(UpdateRecord::State state) {
        client.reset();
        const UpdateRecordFile file(folder.path() / "state", files);
        UpdateRecord record = file.load();
        record.state = state;
        ASSERT_TRUE(file.save(record));
    }
};

TEST_F(Updates, ANewVersionIsFoundFetchedAndVerified) {
    for (const bool ofTheOlderKind : {false, true}) {
        forget();
        publish("2.22", ofTheOlderKind);
        EXPECT_EQ(check(), KOUpdates::Available);
        EXPECT_EQ(client->UC_GetChangeLog(), "Better.");
        EXPECT_EQ(filesLeft(), 0U);
        client->UC_DownloadUpdate();
        EXPECT_EQ(client->UC_GetState(), KOUpdates::Working);
        EXPECT_EQ(settled(), KOUpdates::Downloaded);
        EXPECT_EQ(folder.content("cache/update.deb"), package);
        EXPECT_EQ(folder.content("cache/update.deb.minisig"), site["/p.deb.minisig"].body);
    }
}

TEST_F(Updates, ABuildWithoutThemIsOff) {
    for (const auto& [url, key] : {std::pair<std::string, std::string>{"", source().key},
                                   {source().url, ""},
                                   {"http://192.0.2.1/m.json", source().key},
                                   {"ftp://127.0.0.1/m.json", source().key}}) {
        UpdateSource none = source();
        none.url = url;
        none.key = key;
        QtUpdates off(none, files);
        off.UC_Begin();
        EXPECT_EQ(off.UC_GetState(), KOUpdates::Failed) << url;
    }
    EXPECT_TRUE(site.requests.empty());
}

TEST_F(Updates, OnlyANewerVersionIsOne) {
    for (const char* older : {"2.21", "2.20", "1.99", "2.21.0", "2.3"})
        EXPECT_EQ(IsNewer(older, "2.21"), false) << older;
    for (const char* newer : {"2.100", "3", "2.21.1"})
        EXPECT_EQ(IsNewer(newer, "2.21"), true) << newer;
    for (const char* none : {"", "2.", "2.x", "v2.22", "-3.1", "2.22 ", "1.2.3.4.5", "."})
        EXPECT_EQ(IsNewer(none, "2.21"), std::nullopt) << none;
}

TEST_F(Updates, AnUnsoundManifestIsNone) {
    const std::string sound = manifestOf("2.22");
    ASSERT_TRUE(UpdateManifest::read(sound));
    const std::string hash = UpdateManifest::read(sound)->sha256;
    for (const auto& [part, instead] : std::vector<std::pair<std::string, std::string>>{
             {sound, "no JSON"},
             {sound, "[]"},
             {"\"2.22\"", "2.22"},
             {"\"2.22\"", "\"2.x\""},
             {"\"Better.\"", "7"},
             {"300006", "0"},
             {"300006", "1.5"},
             {"300006", "2147483648"},
             {"300006", "\"300006\""},
             {hash, hash.substr(1)},
             {hash, "g" + hash.substr(1)},
             {"p.deb", ""},
             {"p.deb", "p.deb?x"},
             {"p.deb", "%2e%2e"},
             {"2026-06-02T", "2026-02-30T"},
             {"2026-06-02T", "2025-06-02T"}, // before it was made
             {"T12:00:00Z", "T12:00:00"},
             {"T12:00:00Z", "T24:00:00Z"}}) {
        std::string unsound = sound;
        ASSERT_NE(unsound.find(part), std::string::npos) << part;
        unsound.replace(unsound.find(part), part.size(), instead);
        EXPECT_FALSE(UpdateManifest::read(unsound)) << unsound;
    }
}

TEST_F(Updates, ABrokenDownloadGoesOnWhereItStopped) {
    for (const bool knowsParts : {true, false}) { // which begins at the beginning again
        forget();
        publish();
        site["/p.deb"].cutAfter = 100000;
        site["/p.deb"].knowsParts = knowsParts;
        EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded);
        EXPECT_EQ(site.requests[3], "/p.deb from 100000");
        EXPECT_EQ(folder.content("cache/update.deb"), package);
    }
}

TEST_F(Updates, WhatOneRunHasBegunTheNextOneGoesOnWith) {
    retryTime = 60000;
    site["/p.deb"].cutAfter = 100000;
    EXPECT_EQ(check(), KOUpdates::Available);
    client->UC_DownloadUpdate();
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return std::filesystem::exists(folder.path() / "cache/update.part") &&
               std::filesystem::file_size(folder.path() / "cache/update.part") == 100000;
    }));
    EXPECT_EQ(client->UC_GetStanding().percent, 33);
    site.requests.clear();
    EXPECT_EQ(check(), KOUpdates::Downloaded); // a new client, which asks nobody
    EXPECT_EQ(site.requests[2], "/p.deb from 100000");
}

TEST_F(Updates, WhatIsReadyStaysSoAndIsNotFetchedAgain) {
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded);
    site.requests.clear();
    EXPECT_EQ(check(), KOUpdates::Downloaded);
    EXPECT_EQ(client->UC_GetChangeLog(), "Better.");
    EXPECT_EQ(site.requests.size(), 2U);
    site["/m.json"].status = 500;
    EXPECT_EQ(check(), KOUpdates::Downloaded); // also without the server
    note(UpdateRecord::State::Installing);     // somebody was killed there
    EXPECT_EQ(check(), KOUpdates::Downloaded);
    version = "2.22"; // which runs, but the system or its package manager was killed before the end
    whole = false;
    for (const auto state : {UpdateRecord::State::Installing, UpdateRecord::State::Ready}) {
        note(state);
        EXPECT_EQ(check(), KOUpdates::Downloaded);
        EXPECT_EQ(filesLeft(), 2U);
    }

    note(UpdateRecord::State::Installing);
    whole = true;
    publish();
    EXPECT_EQ(check(), KOUpdates::NothingNew);
    EXPECT_EQ(filesLeft(), 0U);
    EXPECT_NE(told.find("2.22 is installed"), std::string::npos);
}

TEST_F(Updates, TheNewestManifestDecidesWhatIsReady) {
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded);
    publish("2.23");
    EXPECT_EQ(check(), KOUpdates::Available);
    EXPECT_EQ(client->UC_GetStanding().version, "2.23");
    EXPECT_EQ(filesLeft(), 0U);
    client->UC_DownloadUpdate();
    EXPECT_EQ(settled(), KOUpdates::Downloaded);
    publish("2.21"); // the other two were withdrawn
    EXPECT_EQ(check(), KOUpdates::NothingNew);
    EXPECT_EQ(client->UC_GetStanding().state, UpdateStanding::State::Newest);
    EXPECT_EQ(filesLeft(), 0U);
}

TEST_F(Updates, NoIsForThisRunAndSkippingForThisVersion) {
    EXPECT_EQ(check(), KOUpdates::Available);
    client->UC_Decline(false);
    EXPECT_EQ(client->UC_GetState(), KOUpdates::NothingNew);
    EXPECT_EQ(check(), KOUpdates::Available);
    client->UC_Decline(true);
    EXPECT_EQ(check(), KOUpdates::NothingNew);
    client->UC_BeginNow(); // but whoever asks is told
    EXPECT_EQ(settled(), KOUpdates::Available);
    EXPECT_TRUE(client->UC_GetStanding().skipped);
    publish("2.23");
    EXPECT_EQ(check(), KOUpdates::Available);
    EXPECT_FALSE(client->UC_GetStanding().skipped);
}

TEST_F(Updates, OneProgramAtATimeIsAtWork) {
    EXPECT_EQ(check(), KOUpdates::Available);
    QtUpdates second(source(), files);
    second.UC_Begin();
    EXPECT_EQ(second.UC_GetState(), KOUpdates::NothingNew);
    EXPECT_EQ(second.UC_GetStanding().state, UpdateStanding::State::Elsewhere);
}

TEST_F(Updates, DaysWithoutNewsAreCountedFromTheNewestManifest) {
    EXPECT_EQ(check(), KOUpdates::Available);
    now += 40 * 86400;
    client->UC_DownloadUpdate(); // a Yes that comes too late
    EXPECT_EQ(settled(), KOUpdates::Failed);
    EXPECT_EQ(check(), KOUpdates::Failed); // it has run out
    EXPECT_EQ(client->UC_GetStanding().daysWithoutNews, 40);
    forget(); // and where there was never one, from the first look
    EXPECT_EQ(check(), KOUpdates::Failed);
    now += 30 * 86400;
    EXPECT_EQ(check(), KOUpdates::Failed);
    EXPECT_EQ(client->UC_GetStanding().daysWithoutNews, 30);
}

TEST_F(Updates, AFullDiskEndsTheDownload) {
    EXPECT_EQ(check(), KOUpdates::Available);
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit usual{RLIM_INFINITY, RLIM_INFINITY};
    const rlimit little{100000, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &little);
    client->UC_DownloadUpdate();
    EXPECT_EQ(settled(), KOUpdates::Failed);
    ::setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_EQ(filesLeft(), 0U);
}

} // namespace
} // namespace corvane

int main(int argc, char** argv) {
    const corvane::OwnHome home;
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
