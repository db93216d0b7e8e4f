// How the update client asks servers, and fetches a package.
#include "kolib/update/QtUpdates.h"

#include <QHostAddress>
#include <QTimer>

namespace corvane {

namespace {

constexpr int MostRedirects = 5;
constexpr int Partial = 206;
constexpr int FirstFault = 400;                  // of the answers that tell of one
constexpr const char* WhyAborted = "whyAborted"; // of a request, if we did

using State = UpdateRecord::State;

int statusOf(const QNetworkReply& reply) {
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// What became of a request that failed, for the log.
std::string faultOf(const QNetworkReply& reply) {
    QString why = reply.property(WhyAborted).toString();
    if (why.isEmpty() && statusOf(reply) >= FirstFault)
        why = QString("the server answers %1").arg(statusOf(reply));
    if (why.isEmpty())
        why = reply.errorString();
    return reply.url().toString(QUrl::RemoveUserInfo | QUrl::RemoveQuery).toStdString() +
           " could not be fetched: " + why.toStdString();
}

/// Ends a request for a reason of our own.
void abortFor(QNetworkReply& reply, const QString& why) {
    reply.setProperty(WhyAborted, why);
    reply.abort();
}

} // namespace

bool QtUpdates::MayBeAsked(const QUrl& url) {
    if (url.scheme() == "https")
        return !url.host().isEmpty();
    return url.scheme() == "http" &&
           (url.host() == "localhost" || QHostAddress(url.host()).isLoopback());
}

QUrl QtUpdates::SignatureOf(QUrl url) {
    url.setPath(url.path() + ".minisig");
    return url;
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
        if (MayBeAsked(target))
            Q_EMIT reply->redirectAllowed();
        else
            abortFor(*reply, "it leads to " + target.toString(QUrl::RemoveUserInfo));
    });
    return reply;
}

void QtUpdates::fetchSmall(const QUrl& url, qint64 limit, Then then) {
    QNetworkReply* reply = get(url, 0);
    reply->setReadBufferSize(limit + 1);
    QTimer::singleShot(source_.wholeTime, reply,
                       [reply] { abortFor(*reply, "it takes too long"); });
    connect(reply, &QNetworkReply::readyRead, this, [reply, limit] {
        if (reply->bytesAvailable() > limit)
            abortFor(*reply, "it is too long");
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, limit, then = std::move(then)] {
        reply->deleteLater();
        const QByteArray bytes =
            reply->error() == QNetworkReply::NoError ? reply->readAll() : QByteArray();
        if (bytes.isEmpty() || bytes.size() > limit)
            return failed(faultOf(*reply));
        then(bytes);
    });
}

void QtUpdates::startDownload() {
    state_ = Working;
    fetching_ = true;
    retriesLeft_ = source_.retries;
    record_.skipped.clear();
    std::string whyNot;
    if (!folder_.open(whyNot))
        return fail(whyNot);
    if (!note(State::Downloading))
        return;
    const int part = ::dup(folder_.openPart().get());
    if (part < 0 ||
        !part_.open(part, QIODevice::ReadWrite | QIODevice::Append, QFileDevice::AutoCloseHandle))
        return fail("the package can't be written");
    resumeDownload();
}

void QtUpdates::resumeDownload() {
    if (part_.size() > offer_.size)
        return fail("the package is longer than the manifest says");
    const QUrl url(QString::fromStdString(offer_.url));
    if (part_.size() == offer_.size) {
        part_.close();
        return fetchSmall(SignatureOf(url), SignatureLimit,
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
            part_.resize(offer_.size + 1);
    });
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { receive(*reply); });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { ended(*reply); });
}

void QtUpdates::receive(QNetworkReply& reply) {
    const int status = statusOf(reply);
    if (status != Partial && status / 100 != 2)
        return; // the text of a failure
    const QByteArray bytes = reply.readAll();
    const bool tooMuch = part_.size() + bytes.size() > offer_.size;
    if (tooMuch || part_.write(bytes) != bytes.size() || !part_.flush()) {
        reply.disconnect(this);
        reply.abort();
        reply.deleteLater();
        return fail(tooMuch ? "the package is longer than the manifest says"
                            : "the package can't be written: " + part_.errorString().toStdString());
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
        return part_.size() == offer_.size ? resumeDownload()
                                           : fail("the package is shorter than the manifest says");
    // A server that has spoken has meant it; a connection may break.
    const bool spoken = statusOf(reply) >= FirstFault || reply.property(WhyAborted).isValid() ||
                        reply.error() == QNetworkReply::SslHandshakeFailedError ||
                        reply.error() == QNetworkReply::TooManyRedirectsError;
    if (spoken || retriesLeft_-- == 0)
        return fail(faultOf(reply), !spoken);
    QTimer::singleShot(source_.retryTime, this, [this, run = run_] {
        if (run == run_)
            resumeDownload();
    });
}

void QtUpdates::inspect(const char* name, const std::string& signature,
                        std::function<void(const std::string&)> then) {
    // A large package takes its time, which the window has not.
    const auto look = [this, run = run_, then = std::move(then), signature, offer = offer_,
                       key = *key_, file = std::make_shared<Handle>(folder_.openToRead(name))] {
        const std::string wrong = WhatIsWrongWith(file->get(), signature, offer, key);
        QMetaObject::invokeMethod(
            this,
            [this, run, then, wrong] {
                if (run == run_)
                    then(wrong);
            },
            Qt::QueuedConnection);
    };
    verifier_.start(look);
}

void QtUpdates::checkPackage(const QByteArray& signature) {
    inspect(
        DownloadFolder::Part, signature.toStdString(), [this, signature](const std::string& wrong) {
            if (!wrong.empty())
                return fail(wrong);
            if (!folder_.keep({signature.constData(), static_cast<std::size_t>(signature.size())}))
                return fail("the package can't be kept");
            if (!note(State::Ready))
                return;
            log(offer_.version + " is fetched, and ours");
            ready_ = true;
            fetching_ = false;
            state_ = Downloaded;
        });
}

void QtUpdates::failed(const std::string& why) {
    fetching_ ? fail(why) : noManifest(why);
}

void QtUpdates::fail(const std::string& why, bool keepPart) {
    fetching_ = false;
    part_.close();
    if (!keepPart)
        folder_.clear();
    record_.why = why;
    log(why);
    static_cast<void>(note(State::Nothing));
    state_ = Failed;
}

} // namespace corvane
