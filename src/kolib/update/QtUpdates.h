#pragma once

#include "kolib/KOUpdates.h"
#include "kolib/update/PackageCheck.h"
#include "kolib/update/UpdateRecord.h"
#include "kolib/update/UtcTime.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QThreadPool>

#include <functional>

namespace corvane {

/// Where updates come from, and where they go.
struct UpdateSource {
    std::string url;               ///< Of the manifest; empty for no updates at all.
    std::string key;               ///< The publisher's public key in minisign's format.
    std::string version;           ///< Of the running program.
    std::filesystem::path folder;  ///< Where packages are kept; made if need be.
    std::filesystem::path records; ///< Where the record is kept; made if need be.
    int stallTime = 20000;         ///< ms without a byte that end a request.
    int wholeTime = 60000;         ///< ms that a manifest or a signature may take in all.
    int retryTime = 1000;          ///< ms before a broken download is gone on with.
    int retries = 5;               ///< In a row without a byte.
    /// Seconds since 1970.
    std::function<std::int64_t()> now = UtcNow;
    /// Whether the system has installed all of the running version, and not been interrupted.
    std::function<bool()> installedWhole = [] { return true; };
    /// Takes the lines of the diagnostics log.
    std::function<void(const std::string&)> tell = [](const std::string&) {};
};

/// The update client over HTTPS, one request at a time. Needs an event loop. Plain HTTP is only
/// taken from this machine. `files` must outlive it.
class QtUpdates final : public QObject, public KOUpdates {
  public:
    QtUpdates(UpdateSource source, FileDoor& files);
    ~QtUpdates() override;

    void UC_Begin() override { begin(false); }
    void UC_BeginNow() override { begin(true); }
    void UC_Reset() override;
    [[nodiscard]] int UC_GetState() const override { return state_; }
    [[nodiscard]] std::string UC_GetChangeLog() const override { return offer_.notes; }
    void UC_DownloadUpdate() override;
    void UC_Decline(bool forGood) override;
    [[nodiscard]] UpdateStanding UC_GetStanding() const override;

  private:
    static constexpr qint64 SignatureLimit = 4 * 1024; // bytes

    using Then = std::function<void(const QByteArray&)>;

    /// Over HTTPS, or on this machine.
    [[nodiscard]] static bool MayBeAsked(const QUrl& url);
    [[nodiscard]] static QUrl SignatureOf(QUrl url);
    void begin(bool asked);
    void takeUpRecord();
    void fetchManifest();
    [[nodiscard]] QNetworkReply* get(const QUrl& url, std::int64_t from);
    void fetchSmall(const QUrl& url, qint64 limit, Then then);
    void adopt(const QByteArray& manifest, const QByteArray& signature);
    [[nodiscard]] std::string whatIsWrongWith(const UpdateManifest& manifest,
                                              const std::string& comment) const;
    [[nodiscard]] std::string whatHasRunOutOf(const UpdateManifest& manifest) const;
    void settle(const UpdateManifest& manifest, const std::string& text);
    void startDownload();
    void resumeDownload();
    void receive(QNetworkReply& reply);
    void ended(QNetworkReply& reply);
    /// Looks at one of the files in the folder in the background; then goes on with what is wrong.
    void inspect(const char* file, const std::string& signature,
                 std::function<void(const std::string& wrong)> then);
    void checkPackage(const QByteArray& signature);
    [[nodiscard]] bool note(UpdateRecord::State state);
    void log(const std::string& line) const;
    void failed(const std::string& why);
    void noManifest(const std::string& why);
    void fail(const std::string& why, bool keepPart = false);

    UpdateSource source_;
    UpdateRecordFile file_;
    UpdateRecord record_;
    DownloadFolder folder_;
    std::optional<Minisign::PublicKey> key_;
    UpdateManifest offer_;
    int state_ = Working;
    bool begun_ = false;
    bool elsewhere_ = false; // another program holds the record
    bool asked_ = false;     // by the person
    bool ready_ = false;     // what lies there is good
    bool fetching_ = false;  // a package
    int run_ = 0;            // counts checks, so that what belongs to an earlier one is known
    int retriesLeft_ = 0;
    QNetworkAccessManager network_;
    QPointer<QNetworkReply> reply_;
    QFile part_;
    QThreadPool verifier_;
};

} // namespace corvane
