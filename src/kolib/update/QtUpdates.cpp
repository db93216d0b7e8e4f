#include "kolib/update/QtUpdates.h"

#include <QHostAddress>
#include <QTimer>

#include <fstream>

namespace corvane {

namespace {

constexpr qint64 ManifestLimit = 256 * 1024; // bytes
constexpr qint64 SignatureLimit = 4 * 1024;
constexpr int MostRedirects = 5;
constexpr int Partial = 206;

bool mayBeAsked(const QUrl& url) {
    if (url.scheme() == "https")
        return !url.host().isEmpty();
    return url.scheme() == "http" &&
           (url.host() == "localhost" || QHostAddress(url.host()).isLoopback());
}

QUrl withSuffix(QUrl url) {
    url.setPath(url.path() + ".minisig");
    return url;
}

std::string_view textOf(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

int statusOf(const QNetworkReply& reply) {
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

} // namespace

QtUpdates::~QtUpdates() {
    UC_Reset();
    verifier_.waitForDone();
}

void QtUpdates::UC_Begin() {
    UC_Reset();
    key_ = Minisign::readKey(source_.key);
    const QUrl url(QString::fromStdString(source_.url));
    if (!key_ || !mayBeAsked(url)) {
        state_ = Failed;
        return;
    }
    fetchSmall(url, ManifestLimit, [this, url](const QByteArray& manifest) {
        fetchSmall(withSuffix(url), SignatureLimit,
                   [this, manifest](const QByteArray& signature) { adopt(manifest, signature); });
    });
}

void QtUpdates::UC_Reset() {
    ++run_;
    state_ = Working;
    manifest_ = {};
    part_.close();
    if (reply_ != nullptr) {
        reply_->disconnect(this);
        reply_->abort();
        reply_->deleteLater();
    }
}

QNetworkReply* QtUpdates::get(const QUrl& url, std::int64_t from) {
    QNetworkRequest request(url);
    request.setTransferTimeout(source_.stallTime);
    request.setMaximumRedirectsAllowed(MostRedirects);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    // What arrives is what is signed, and not what it could be unpacked to.
    request.setRawHeader("Accept-Encoding", "identity");
    if (from > 0)
        request.setRawHeader("Range", "bytes=" + QByteArray::number(qint64{from}) + "-");
    QNetworkReply* reply = network_.get(request);
    reply_ = reply;
    connect(reply, &QNetworkReply::redirected, this, [reply](const QUrl& target) {
        if (mayBeAsked(target))
            Q_EMIT reply->redirectAllowed();
        else
            reply->abort();
    });
    return reply;
}

void QtUpdates::fetchSmall(const QUrl& url, qint64 limit, Then then) {
    QNetworkReply* reply = get(url, 0);
    reply->setReadBufferSize(limit + 1);
    QTimer::singleShot(source_.wholeTime, reply, [reply] { reply->abort(); });
    connect(reply, &QNetworkReply::readyRead, this, [reply, limit] {
        if (reply->bytesAvailable() > limit)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, limit, then = std::move(then)] {
        reply->deleteLater();
        const QByteArray bytes =
            reply->error() == QNetworkReply::NoError ? reply->readAll() : QByteArray();
        if (bytes.isEmpty() || bytes.size() > limit)
            return fail();
        then(bytes);
    });
}

void QtUpdates::adopt(const QByteArray& bytes, const QByteArray& signatureBytes) {
    const auto signature = Minisign::readSignature(textOf(signatureBytes));
    if (!signature || !Minisign::verify(*key_, *signature, textOf(bytes)))
        return fail();
    const auto manifest = UpdateManifest::read(textOf(bytes));
    if (!manifest || !mayBeAsked(QUrl(QString::fromStdString(manifest->url))))
        return fail();
    if (!IsNewer(manifest->version, source_.version).value_or(false)) {
        state_ = NothingNew;
        return;
    }
    manifest_ = *manifest;
    state_ = Available;
}

void QtUpdates::UC_DownloadUpdate() {
    if (state_ != Available)
        return;
    state_ = Working;
    retriesLeft_ = source_.retries;
    std::error_code error;
    std::filesystem::create_directories(source_.folder, error);
    // A part of another package is of no use.
    const std::filesystem::path named = source_.folder / "update.name";
    const std::string name = manifest_.version + " " + manifest_.url;
    std::string present;
    std::getline(std::ifstream(named), present);
    if (present != name)
        removeFiles();
    std::ofstream(named) << name << '\n';
    part_.setFileName(QString::fromStdString(partFile()));
    if (!part_.open(QIODevice::ReadWrite | QIODevice::Append))
        return fail();
    resumeDownload();
}

void QtUpdates::resumeDownload() {
    if (part_.size() > manifest_.size)
        return fail();
    const QUrl url(QString::fromStdString(manifest_.url));
    if (part_.size() == manifest_.size) {
        part_.close();
        return fetchSmall(withSuffix(url), SignatureLimit,
                          [this](const QByteArray& signature) { checkPackage(signature); });
    }
    QNetworkReply* reply = get(url, part_.size());
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] {
        // A server that does not know of parts begins at the beginning.
        if (statusOf(*reply) / 100 == 2 && statusOf(*reply) != Partial)
            part_.resize(0);
        // And one that begins elsewhere is of no use.
        const QByteArray range = "bytes " + QByteArray::number(part_.size()) + "-";
        if (statusOf(*reply) == Partial && !reply->rawHeader("Content-Range").startsWith(range))
            part_.resize(manifest_.size + 1);
    });
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { receive(*reply); });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { ended(*reply); });
}

void QtUpdates::receive(QNetworkReply& reply) {
    const int status = statusOf(reply);
    if (status != Partial && status / 100 != 2)
        return; // the text of a failure
    const QByteArray bytes = reply.readAll();
    if (part_.size() + bytes.size() > manifest_.size || part_.write(bytes) != bytes.size() ||
        !part_.flush()) {
        reply.disconnect(this);
        reply.abort();
        reply.deleteLater();
        return fail();
    }
    if (!bytes.isEmpty())
        retriesLeft_ = source_.retries;
}

void QtUpdates::ended(QNetworkReply& reply) {
    reply.deleteLater();
    receive(reply);
    if (state_ == Failed)
        return;
    const bool broken = reply.error() != QNetworkReply::NoError;
    if (!broken)
        return part_.size() == manifest_.size ? resumeDownload() : fail();
    // A server that has spoken has meant it; a connection may break.
    if (statusOf(reply) >= 400 || retriesLeft_-- == 0)
        return fail();
    QTimer::singleShot(source_.retryTime, this, [this, run = run_] {
        if (run == run_)
            resumeDownload();
    });
}

void QtUpdates::checkPackage(const QByteArray& bytes) {
    const auto signature = Minisign::readSignature(textOf(bytes));
    if (!signature)
        return fail();
    const auto verified = [this, run = run_, bytes](bool sound) {
        if (run != run_)
            return;
        std::error_code error;
        if (sound) {
            std::filesystem::rename(partFile(), source_.package(), error);
            std::error_code left; // one that stays is of no consequence
            std::filesystem::remove(source_.folder / "update.name", left);
        }
        std::ofstream file(source_.signature(), std::ios::binary);
        file << textOf(bytes);
        if (!sound || error || !file.flush())
            return fail();
        state_ = Downloaded;
    };
    // A large package takes its time, which the window has not.
    verifier_.start(
        [this, verified, signature = *signature, key = *key_, path = partFile().string()] {
            const bool sound = Minisign::verifyFile(key, signature, path);
            QMetaObject::invokeMethod(
                this, [verified, sound] { verified(sound); }, Qt::QueuedConnection);
        });
}

void QtUpdates::fail() {
    part_.close();
    removeFiles();
    state_ = Failed;
}

void QtUpdates::removeFiles() const {
    std::error_code error;
    for (const std::filesystem::path& file :
         {partFile(), source_.package(), source_.signature(), source_.folder / "update.name"})
        std::filesystem::remove(file, error);
}

} // namespace corvane
