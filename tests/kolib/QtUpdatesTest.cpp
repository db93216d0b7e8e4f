#include "kolib/update/QtUpdates.h"

#include "support/HttpSite.h"
#include "support/OwnHome.h"
#include "support/TemporaryFolder.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>
#include <gtest/gtest.h>

namespace corvane {
namespace {

/// A publisher with the real signing tool, a server, and a client of the version 2.21.
class Updates : public testing::Test {
  protected:
    TemporaryFolder folder;
    HttpSite site;
    std::string package = std::string(300000, 'p') + "ackage";
    std::unique_ptr<QtUpdates> client;

    void SetUp() override {
        makeKey("ours");
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
    void makeKey(const std::string& name) const {
        run({"-q", "-G", "-W", "-p", pathOf(name + ".pub"), "-s", pathOf(name + ".sec")});
    }
    /// The real signature of some bytes.
    std::string signatureOf(const std::string& bytes, const std::string& key = "ours",
                            bool legacy = false) const {
        folder.file("signed", bytes);
        QStringList arguments{"-q", "-S", "-s", pathOf(key + ".sec"), "-m", pathOf("signed")};
        if (legacy)
            arguments.append("-l");
        run(arguments);
        return folder.content("signed.minisig");
    }
    void publishManifest(const std::string& manifest) {
        site["/m.json"] = {manifest};
        site["/m.json.minisig"] = {signatureOf(manifest)};
    }
    std::string manifestOf(const std::string& version, std::size_t size) const {
        return R"({"version": ")" + version + R"(", "notes": "Better.", "url": ")" +
               site.url("/p.deb") + R"(", "size": )" + std::to_string(size) + "}";
    }
    void publish(const std::string& version = "2.22") {
        publishManifest(manifestOf(version, package.size()));
        site["/p.deb"] = {package};
        site["/p.deb.minisig"] = {signatureOf(package)};
    }
    UpdateSource source() const {
        UpdateSource source{site.url("/m.json"), folder.content("ours.pub"), "2.21",
                            folder.path() / "cache"};
        source.stallTime = 300;
        source.wholeTime = 400;
        source.retryTime = 10;
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
        client = std::make_unique<QtUpdates>(source());
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
    void expectFailedDownload() {
        EXPECT_EQ(checkAndDownload(), KOUpdates::Failed);
        EXPECT_EQ(filesLeft(), 0U);
    }
};

TEST_F(Updates, ANewVersionIsFoundFetchedAndVerified) {
    EXPECT_EQ(check(), KOUpdates::Available);
    EXPECT_EQ(client->UC_GetChangeLog(), "Better.");
    EXPECT_EQ(filesLeft(), 0U);
    client->UC_DownloadUpdate();
    EXPECT_EQ(client->UC_GetState(), KOUpdates::Working);
    EXPECT_EQ(settled(), KOUpdates::Downloaded);
    EXPECT_EQ(filesLeft(), 2U);
    EXPECT_EQ(folder.content("cache/update.deb"), package);
    EXPECT_EQ(folder.content("cache/update.deb.minisig"), site["/p.deb.minisig"].body);
    EXPECT_EQ(site.requests,
              (std::vector<std::string>{"/m.json", "/m.json.minisig", "/p.deb", "/p.deb.minisig"}));
}

TEST_F(Updates, SignaturesOfTheOlderKindAreGoodToo) {
    site["/m.json.minisig"] = {signatureOf(site["/m.json"].body, "ours", true)};
    site["/p.deb.minisig"] = {signatureOf(package, "ours", true)};
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded);
}

TEST_F(Updates, ABuildWithoutThemIsOff) {
    for (const auto& [url, key] : {std::pair<std::string, std::string>{"", source().key},
                                   {source().url, ""},
                                   {"http://192.0.2.1/m.json", source().key},
                                   {"ftp://127.0.0.1/m.json", source().key}}) {
        UpdateSource none = source();
        none.url = url;
        none.key = key;
        QtUpdates off(none);
        off.UC_Begin();
        EXPECT_EQ(off.UC_GetState(), KOUpdates::Failed) << url;
    }
    EXPECT_TRUE(site.requests.empty());
}

TEST_F(Updates, OnlyANewerVersionIsOne) {
    for (const char* version : {"2.21", "2.20", "1.99", "2.21.0", "2.3"}) {
        publish(version);
        EXPECT_EQ(check(), KOUpdates::NothingNew) << version;
    }
    for (const char* version : {"2.100", "3", "2.21.1"}) {
        publish(version);
        EXPECT_EQ(check(), KOUpdates::Available) << version;
    }
    for (const char* version : {"", "2.", "2.x", "v2.22", "-3.1", "2.22 ", "1.2.3.4.5"}) {
        publish(version);
        EXPECT_EQ(check(), KOUpdates::Failed) << version;
    }
}

TEST_F(Updates, AnUnsoundManifestIsNone) {
    for (const std::string& manifest :
         {std::string("no JSON"), std::string("[]"), std::string("{}"), manifestOf("2.22", 0),
          manifestOf("2.22", std::size_t{1} << 31U), std::string(300000, ' ') + "{}"}) {
        publishManifest(manifest);
        EXPECT_EQ(check(), KOUpdates::Failed) << manifest.substr(0, 60);
    }
    std::string elsewhere = manifestOf("2.22", 5);
    elsewhere.replace(elsewhere.find("127.0.0.1"), 9, "192.0.2.1"); // not over plain HTTP
    publishManifest(elsewhere);
    EXPECT_EQ(check(), KOUpdates::Failed);
}

TEST_F(Updates, AManifestMustBeSignedByUs) {
    makeKey("theirs");
    const std::string manifest = site["/m.json"].body;
    site["/m.json.minisig"] = {signatureOf(manifest, "theirs")};
    EXPECT_EQ(check(), KOUpdates::Failed);
    site["/m.json.minisig"] = {signatureOf(manifest + " ")};
    EXPECT_EQ(check(), KOUpdates::Failed);
    std::string forged = signatureOf(manifest);
    forged.replace(forged.find("timestamp"), 9, "timestomp"); // the comment is covered as well
    site["/m.json.minisig"] = {forged};
    EXPECT_EQ(check(), KOUpdates::Failed);
    for (const std::string& none : {std::string("untrusted comment: x\nAAAA\n"),
                                    std::string(9000, 'x'), std::string("\n\n\n\n")}) {
        site["/m.json.minisig"] = {none};
        EXPECT_EQ(check(), KOUpdates::Failed);
    }
    site["/m.json.minisig"] = {"", 404};
    EXPECT_EQ(check(), KOUpdates::Failed);
}

TEST_F(Updates, AServerThatMisbehavesEndsTheCheck) {
    site["/m.json"] = {"", 200, "/m.json"};
    EXPECT_EQ(check(), KOUpdates::Failed); // round and round
    site["/m.json"] = {"", 200, "http://192.0.2.1/m.json"};
    EXPECT_EQ(check(), KOUpdates::Failed);
    site["/m.json"].location.clear();
    site["/m.json"].silent = true;
    EXPECT_EQ(check(), KOUpdates::Failed);
    site["/m.json"] = {" "};
    site["/m.json"].endless = true; // neither large enough nor ever done
    EXPECT_EQ(check(), KOUpdates::Failed);
    for (const int status : {404, 500}) {
        site["/m.json"] = {"{}", status};
        EXPECT_EQ(check(), KOUpdates::Failed);
    }
    site.close();
    EXPECT_EQ(check(), KOUpdates::Failed);
    EXPECT_EQ(filesLeft(), 0U);
}

TEST_F(Updates, AWrongPackageIsDeleted) {
    makeKey("theirs");
    site["/p.deb.minisig"] = {signatureOf(package, "theirs")};
    expectFailedDownload();
    site["/p.deb.minisig"] = {signatureOf("another")};
    expectFailedDownload();
    site["/p.deb.minisig"] = {"", 404};
    expectFailedDownload();
    site["/p.deb.minisig"] = {signatureOf(package)};
    site["/p.deb"] = {package + "x"};
    expectFailedDownload();
    site["/p.deb"] = {package.substr(1)};
    expectFailedDownload();
    site["/p.deb"] = {package};
    site["/p.deb"].endless = true;
    expectFailedDownload();
    site["/p.deb"] = {"", 404};
    expectFailedDownload();
    site["/p.deb"] = {package};
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded); // after all that
}

TEST_F(Updates, ABrokenDownloadGoesOnWhereItStopped) {
    site["/p.deb"].cutAfter = 100000;
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded);
    EXPECT_EQ(site.requests[3], "/p.deb from 100000");
    EXPECT_EQ(folder.content("cache/update.deb"), package);

    site["/p.deb"].cutAfter = 100000;
    site["/p.deb"].knowsParts = false; // begins at the beginning again
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded);
    EXPECT_EQ(folder.content("cache/update.deb"), package);
}

TEST_F(Updates, WhatOneRunHasFetchedTheNextOneKeeps) {
    site["/p.deb"].cutAfter = 100000;
    EXPECT_EQ(check(), KOUpdates::Available);
    client->UC_DownloadUpdate();
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return std::filesystem::exists(folder.path() / "cache/update.part") &&
               std::filesystem::file_size(folder.path() / "cache/update.part") == 100000;
    }));
    site.requests.clear();
    EXPECT_EQ(checkAndDownload(), KOUpdates::Downloaded); // a new client
    EXPECT_EQ(site.requests[2], "/p.deb from 100000");
}

TEST_F(Updates, AServerThatFallsSilentForGoodEndsTheDownload) {
    EXPECT_EQ(check(), KOUpdates::Available);
    site["/p.deb"].silent = true;
    client->UC_DownloadUpdate();
    EXPECT_EQ(settled(), KOUpdates::Failed);
    EXPECT_EQ(filesLeft(), 0U);
    EXPECT_EQ(site.requests.size(), 5U); // once, and twice again
}

TEST_F(Updates, AFullDiskEndsTheDownload) {
    EXPECT_EQ(check(), KOUpdates::Available);
    std::filesystem::create_directories(folder.path() / "cache");
    std::filesystem::create_symlink("/dev/full", folder.path() / "cache/update.part");
    folder.file("cache/update.name", "2.22 " + site.url("/p.deb") + "\n");
    client->UC_DownloadUpdate();
    EXPECT_EQ(settled(), KOUpdates::Failed);
    EXPECT_EQ(filesLeft(), 0U);
}

TEST_F(Updates, AResetEndsWhateverGoesOn) {
    site["/m.json"].silent = true;
    QtUpdates idle(source());
    idle.UC_Begin();
    QTest::qWait(20);
    idle.UC_Reset();
    QTest::qWait(20);
    EXPECT_EQ(idle.UC_GetState(), KOUpdates::Working);
    EXPECT_EQ(idle.UC_GetChangeLog(), "");
}

} // namespace
} // namespace corvane

int main(int argc, char** argv) {
    const corvane::OwnHome home;
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
