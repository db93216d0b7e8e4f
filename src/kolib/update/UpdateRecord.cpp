#include "kolib/update/UpdateRecord.h"

#include "kolib/update/UtcTime.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace corvane {

namespace {

constexpr std::array<const char*, 5> StateNames{"nothing", "offered", "downloading", "ready",
                                                "installing"};

UpdateRecord::State stateCalled(const std::string& name) {
    const auto* found = std::find(StateNames.begin(), StateNames.end(), name);
    return found == StateNames.end() ? UpdateRecord::State::Nothing
                                     : static_cast<UpdateRecord::State>(found - StateNames.begin());
}

/// What came from elsewhere must not look like lines of ours.
std::string inOneLine(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
            c = ' ';
    return text;
}

} // namespace

int UpdateRecord::daysWithoutNews(std::int64_t now) const {
    constexpr std::int64_t day = 24 * 60 * 60;
    const std::int64_t from = issued > 0 ? issued : since;
    return from <= 0 || now <= from ? 0 : static_cast<int>((now - from) / day);
}

void UpdateRecordFile::makeFolder() const {
    std::error_code error;
    std::filesystem::create_directories(folder_.parent_path(), error);
    ::mkdir(folder_.c_str(), 0700);
}

bool UpdateRecordFile::acquire() {
    if (lock_.valid())
        return true;
    makeFolder();
    Handle lock(::open(pathOf("lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!lock.valid() || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        return false;
    lock_ = std::move(lock);
    return true;
}

UpdateRecord UpdateRecordFile::load() const {
    UpdateRecord record;
    std::string bytes;
    if (files_.ReadWhole(pathOf("state"), bytes) != FileDoor::ReadResult::Done)
        return record;
    const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromStdString(bytes)).object();
    const auto text = [&object](const char* name) {
        return object.value(QLatin1String(name)).toString().toStdString();
    };
    const auto time = [&text](const char* name) { return ReadUtc(text(name)).value_or(0); };
    record.state = stateCalled(text("state"));
    record.manifest = text("manifest");
    // Without a manifest that can be read no state means anything.
    if (!record.update())
        record.state = UpdateRecord::State::Nothing;
    record.issued = time("issued");
    record.looked = time("looked");
    record.since = time("since");
    record.skipped = text("skipped");
    record.why = text("why");
    return record;
}

bool UpdateRecordFile::save(const UpdateRecord& record) const {
    QJsonObject object;
    const auto put = [&object](const char* name, const std::string& text) {
        if (!text.empty())
            object.insert(QLatin1String(name), QString::fromStdString(text));
    };
    const auto putTime = [&put](const char* name, std::int64_t time) {
        put(name, time > 0 ? WriteUtc(time) : std::string());
    };
    put("state", StateNames.at(static_cast<std::size_t>(record.state)));
    put("manifest", record.manifest);
    putTime("issued", record.issued);
    putTime("looked", record.looked);
    putTime("since", record.since);
    put("skipped", record.skipped);
    put("why", record.why);
    makeFolder();
    return files_.ReplaceWhole(pathOf("state"), QJsonDocument(object).toJson().toStdString());
}

void UpdateRecordFile::log(const std::string& line) const {
    constexpr std::size_t most = 64 * 1024; // bytes
    makeFolder();
    std::string text;
    if (files_.ReadWhole(pathOf("log"), text) == FileDoor::ReadResult::Failed)
        return;
    text += WriteUtc(UtcNow()) + " " + inOneLine(line) + "\n";
    if (text.size() > most)
        text.erase(0, text.find('\n', text.size() - most / 2) + 1);
    static_cast<void>(files_.ReplaceWhole(pathOf("log"), text));
}

} // namespace corvane
