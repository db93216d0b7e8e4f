#include "kolib/update/QtUpdates.h"

#include "kolib/update/Versions.h"

namespace corvane {

namespace {

constexpr qint64 ManifestLimit = 256 * 1024; // bytes

using State = UpdateRecord::State;

std::string_view textOf(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

} // namespace

QtUpdates::QtUpdates(UpdateSource source, FileDoor& files)
    : source_(std::move(source)),
      file_(source_.records, files),
      folder_(source_.folder),
      key_(Minisign::readKey(source_.key)) {}

QtUpdates::~QtUpdates() {
    UC_Reset();
    verifier_.waitForDone();
}

void QtUpdates::begin(bool asked) {
    UC_Reset();
    begun_ = true;
    asked_ = asked;
    if (!key_ || !MayBeAsked(QUrl(QString::fromStdString(source_.url)))) {
        state_ = Failed;
        return;
    }
    elsewhere_ = !file_.acquire();
    if (elsewhere_) {
        log("another Corvane is at work on updates");
        state_ = NothingNew;
        return;
    }
    record_ = file_.load();
    record_.why.clear();
    if (record_.since <= 0)
        record_.since = source_.now();
    takeUpRecord();
}

void QtUpdates::takeUpRecord() {
    const auto update = record_.update();
    offer_ = update.value_or(UpdateManifest());
    const bool newer = update && IsNewer(update->version, source_.version).value_or(false);
    // A program whose files are there already, though the package manager did not come to its end.
    const bool half = update && offer_.version == source_.version &&
                      (record_.state == State::Installing || record_.state == State::Ready) &&
                      !source_.installedWhole();
    if (record_.state == State::Installing) {
        // Whoever was at it has ended, or the lock would not be ours.
        const bool goesOn = newer || half;
        log(goesOn ? "the installation of " + offer_.version + " was interrupted"
                   : offer_.version + " is installed");
        if (goesOn)
            record_.state = State::Ready;
    } else if (!newer && !half) {
        record_.state = State::Nothing; // it has come another way
    }
    std::string whyNot;
    if (record_.state == State::Ready && folder_.open(whyNot))
        return inspect(DownloadFolder::Package, folder_.signatureText(),
                       [this](const std::string& wrong) {
                           ready_ = wrong.empty();
                           if (!ready_) {
                               log("what was fetched is deleted: " + wrong);
                               folder_.clear();
                               record_.state = State::Nothing;
                           }
                           fetchManifest();
                       });
    if (update && !newer && folder_.open(whyNot))
        folder_.clear();
    if (record_.state != State::Downloading)
        record_.state = State::Nothing;
    fetchManifest();
}

void QtUpdates::fetchManifest() {
    if (!note(record_.state))
        return;
    const QUrl url(QString::fromStdString(source_.url));
    fetchSmall(url, ManifestLimit, [this, url](const QByteArray& manifest) {
        fetchSmall(SignatureOf(url), SignatureLimit,
                   [this, manifest](const QByteArray& signature) { adopt(manifest, signature); });
    });
}

void QtUpdates::UC_Reset() {
    ++run_;
    state_ = Working;
    offer_ = {};
    ready_ = false;
    fetching_ = false;
    part_.close();
    if (reply_ != nullptr) {
        reply_->disconnect(this);
        reply_->abort();
        reply_->deleteLater();
    }
}

void QtUpdates::adopt(const QByteArray& bytes, const QByteArray& signatureBytes) {
    const auto signature = Minisign::readSignature(textOf(signatureBytes));
    if (!signature || !Minisign::verify(*key_, *signature, textOf(bytes)))
        return noManifest("the manifest is not signed by us");
    const auto manifest = UpdateManifest::read(textOf(bytes));
    if (!manifest || !MayBeAsked(QUrl(QString::fromStdString(manifest->url))))
        return noManifest("the manifest is unsound");
    const std::string wrong = whatIsWrongWith(*manifest, signature->trustedComment);
    if (!wrong.empty())
        return noManifest(wrong);
    record_.issued = manifest->issued;
    record_.looked = source_.now();
    settle(*manifest, bytes.toStdString());
}

std::string QtUpdates::whatIsWrongWith(const UpdateManifest& manifest,
                                       const std::string& comment) const {
    if (comment != manifest.manifestComment())
        return "the manifest's signature is that of \"" + comment + "\" and not of \"" +
               manifest.manifestComment() + "\"";
    if (manifest.issued < record_.issued)
        return "the manifest of " + WriteUtc(manifest.issued) + " is older than the last one, of " +
               WriteUtc(record_.issued);
    return whatHasRunOutOf(manifest);
}

std::string QtUpdates::whatHasRunOutOf(const UpdateManifest& manifest) const {
    // A clock may be set back, but not to before a moment at which it was right: the manifest that
    // was taken then held at that time.
    if (manifest.expires <= std::max(source_.now(), record_.looked))
        return "the manifest holds no longer than until " + WriteUtc(manifest.expires);
    return {};
}

void QtUpdates::settle(const UpdateManifest& manifest, const std::string& text) {
    const auto old = record_.update();
    const bool same = old && old->version == manifest.version && old->sha256 == manifest.sha256;
    if (ready_ && same) {
        if (note(State::Ready))
            state_ = Downloaded;
        return;
    }
    const bool goesOn = same && record_.state == State::Downloading;
    std::string whyNot;
    if (!same && old && folder_.open(whyNot))
        folder_.clear(); // the newest manifest decides
    ready_ = false;
    record_.manifest = text;
    offer_ = manifest;
    if (!IsNewer(manifest.version, source_.version).value_or(false)) {
        log("no newer version than " + source_.version);
        if (note(State::Nothing))
            state_ = NothingNew;
    } else if (manifest.version == record_.skipped && !asked_) {
        log(manifest.version + " is there, and to be skipped");
        if (note(State::Nothing))
            state_ = NothingNew;
    } else if (goesOn) {
        startDownload();
    } else if (note(State::Offered)) {
        log(manifest.version + " is there");
        state_ = Available;
    }
}

void QtUpdates::UC_DownloadUpdate() {
    if (state_ != Available)
        return;
    const std::string wrong =
        whatHasRunOutOf(offer_); // the question may have stood there for weeks
    wrong.empty() ? startDownload() : fail(wrong);
}

void QtUpdates::UC_Decline(bool forGood) {
    if (state_ != Available)
        return;
    if (forGood)
        record_.skipped = offer_.version;
    log(offer_.version + (forGood ? " is not wanted" : " is not wanted now"));
    if (note(State::Nothing))
        state_ = NothingNew;
}

bool QtUpdates::note(UpdateRecord::State state) {
    record_.state = state;
    if (file_.save(record_))
        return true;
    log("how it stands can't be written down");
    record_.why = "how it stands can't be written down";
    state_ = Failed;
    return false;
}

void QtUpdates::log(const std::string& line) const {
    source_.tell("Update: " + line + ".");
    if (!elsewhere_)
        file_.log(line);
}

void QtUpdates::noManifest(const std::string& why) {
    record_.why = why;
    log(why);
    if (note(record_.state))
        state_ = ready_ ? Downloaded : Failed;
}

UpdateStanding QtUpdates::UC_GetStanding() const {
    using Shown = UpdateStanding::State;
    UpdateStanding standing;
    standing.version = offer_.version;
    standing.skipped = !offer_.version.empty() && record_.skipped == offer_.version;
    standing.why = record_.why;
    standing.daysWithoutNews = record_.daysWithoutNews(source_.now());
    if (!key_ || source_.url.empty())
        standing.state = Shown::Off;
    else if (!begun_)
        standing.state = Shown::Unknown;
    else if (elsewhere_)
        standing.state = Shown::Elsewhere;
    else if (fetching_) {
        standing.state = Shown::Downloading;
        standing.percent =
            part_.isOpen() ? static_cast<int>(100 * part_.size() / offer_.size) : 100;
    } else
        standing.state = state_ == Working      ? Shown::Looking
                         : state_ == Available  ? Shown::Offered
                         : state_ == Downloaded ? Shown::Ready
                         : state_ == NothingNew ? Shown::Newest
                                                : Shown::Failed;
    return standing;
}

} // namespace corvane
