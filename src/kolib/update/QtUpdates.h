#pragma once

#include "kolib/KOUpdates.h"
#include "kolib/update/Minisign.h"
#include "kolib/update/UpdateManifest.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QThreadPool>

#include <filesystem>
#include <functional>

namespace corvane {

/// Where updates come from, and where they go.
struct UpdateSource {
    std::string url;              ///< Of the manifest; empty for no updates at all.
    std::string key;              ///< The publisher's public key in minisign's format.
    std::string version;          ///< Of the running program.
    std::filesystem::path folder; ///< Where packages are kept; made if need be.
    int stallTime = 20000;        ///< ms without a byte that end a request.
    int wholeTime = 60000;        ///< ms that a manifest or a signature may take in all.
    int retryTime = 1000;         ///< ms before a broken download is gone on with.
    int retries = 5;              ///< In a row without a byte.

    /// The package that was fetched and verified, and its signature beside it.
    [[nodiscard]] std::filesystem::path package() const { return folder / "update.deb"; }
    [[nodiscard]] std::filesystem::path signature() const { return folder / "update.deb.minisig"; }
};

/// The update client over HTTPS, one request at a time. Needs an event loop. Plain HTTP is only
/// taken from this machine.
class QtUpdates final : public QObject, public KOUpdates {
  public:
    explicit QtUpdates(UpdateSource source) : source_(std::move(source)) {}
    ~QtUpdates() override;

    void UC_Begin() override;
    void UC_Reset() override;
    [[nodiscard]] int UC_GetState() const override { return state_; }
    [[nodiscard]] std::string UC_GetChangeLog() const override { return manifest_.notes; }
    void UC_DownloadUpdate() override;

  private:
    using Then = std::function<void(const QByteArray&)>;

    [[nodiscard]] QNetworkReply* get(const QUrl& url, std::int64_t from);
    void fetchSmall(const QUrl& url, qint64 limit, Then then);
    void adopt(const QByteArray& manifest, const QByteArray& signature);
    void resumeDownload();
    void receive(QNetworkReply& reply);
    void ended(QNetworkReply& reply);
    void checkPackage(const QByteArray& signature);
    void fail();
    void removeFiles() const;
    [[nodiscard]] std::filesystem::path partFile() const { return source_.folder / "update.part"; }

    UpdateSource source_;
    std::optional<Minisign::PublicKey> key_;
    UpdateManifest manifest_;
    int state_ = Working;
    int run_ = 0; // counts checks, so that what belongs to an earlier one is known
    int retriesLeft_ = 0;
    QNetworkAccessManager network_;
    QPointer<QNetworkReply> reply_;
    QFile part_;
    QThreadPool verifier_;
};

} // namespace corvane
