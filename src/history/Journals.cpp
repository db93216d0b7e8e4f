#include "history/Journals.h"

#include "base/PrivateFolder.h"
#include "history/LostJournal.h"
#include "system/UserFolders.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t Day = 24L * 60 * 60; // seconds
constexpr std::int64_t Implausible = 365 * Day;

/// A journal that nobody holds; not valid if there is somebody, or it is not this user's.
Handle take(const fs::path& path, struct stat& status) {
    Handle file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_uid != ::geteuid() || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 ||
        ::access(path.c_str(), F_OK) != 0) // its program has just ended in an orderly way
        return {};
    return file;
}

/// Lets one go that was put aside long enough ago. A time that can't be is the fault of a clock
/// that was wrong, and its week begins anew.
void letGo(const Handle& file, const fs::path& path, const struct stat& status) {
    const std::int64_t age = ::time(nullptr) - status.st_mtim.tv_sec;
    if (age < 0 || age > Implausible)
        ::futimens(file.get(), nullptr);
    else if (age > Journals::DaysAside * Day)
        ::unlink(path.c_str());
}

} // namespace

std::shared_ptr<AppendedFile> Journals::Begin(std::string_view content) {
    std::shared_ptr<AppendedFile> file;
    errno = 0;
    if (MakePrivateFolder(folder_) && IsPrivateFolder(folder_))
        file = AppendedFile::Create(folder_, Ending, content);
    else if (errno == 0)
        errno = EACCES; // it is there, but someone else's
    if (file == nullptr)
        tell();
    else
        sync_.Request(file);
    Begun.raise();
    return file;
}

bool Journals::Append(const std::shared_ptr<AppendedFile>& journal, std::string_view lines) {
    if (!journal->Append(lines)) {
        tell();
        return false;
    }
    sync_.Request(journal);
    return true;
}

void Journals::tell() {
    if (!std::exchange(told_, true))
        Failed.raise(std::strerror(errno));
}

void Journals::tellReplaced() {
    if (!std::exchange(toldReplaced_, true))
        Replaced.raise();
}

bool Journals::Look() {
    bool any = false;
    Looking.raise(any);
    return any;
}

template<class Take>
void Journals::look(Take found) {
    std::error_code error;
    if (!IsPrivateFolder(folder_))
        return;
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(folder_, error))
        paths.push_back(entry.path());
    for (const fs::path& path : paths) {
        const bool aside = path.extension() == AsideEnding;
        struct stat status {};
        if (!aside && path.extension() != Ending)
            continue;
        if (Handle file = take(path, status); file.valid())
            found(std::move(file), path, status, aside);
    }
}

std::vector<LostJournal> Journals::Lost() {
    std::vector<std::pair<std::int64_t, LostJournal>> lost;
    look([&](Handle file, const fs::path& path, const struct stat& status, bool aside) {
        if (aside)
            letGo(file, path, status);
        else
            lost.emplace_back(status.st_mtim.tv_sec, LostJournal(std::move(file), path, files_));
    });
    std::stable_sort(lost.begin(), lost.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<LostJournal> all;
    all.reserve(lost.size());
    for (auto& [time, journal] : lost)
        all.push_back(std::move(journal));
    return all;
}

std::vector<LostJournal> Journals::LostAndAside() {
    std::vector<LostJournal> all;
    look([&](Handle file, const fs::path& path, const struct stat&, bool) {
        all.emplace_back(std::move(file), path, files_);
    });
    std::sort(all.begin(), all.end(),
              [](const LostJournal& a, const LostJournal& b) { return a.Name() < b.Name(); });
    return all;
}

} // namespace corvane
