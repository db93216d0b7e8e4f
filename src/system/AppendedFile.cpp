#include "system/AppendedFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

namespace fs = std::filesystem;

namespace {

bool writeAt(int file, std::string_view bytes, std::size_t at) {
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(at));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        at += static_cast<std::size_t>(count);
    }
    return true;
}

/// Whether the file is the one under this name.
bool stands(const Handle& file, const fs::path& path, struct stat& status) {
    struct stat named {};
    return ::fstat(file.get(), &status) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           named.st_ino == status.st_ino && named.st_dev == status.st_dev;
}

/// Gives a file without a name, or with one that is only its first, the first free name.
fs::path giveName(const Handle& file, const std::string& firstName, const fs::path& folder,
                  std::string_view ending) {
    const std::string source =
        firstName.empty() ? "/proc/self/fd/" + std::to_string(file.get()) : firstName;
    const int flags = firstName.empty() ? AT_SYMLINK_FOLLOW : 0;
    for (int number = 1;; ++number) {
        fs::path path = folder / (std::to_string(::getpid()) + "-" + std::to_string(number) +
                                  std::string(ending));
        if (::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, path.c_str(), flags) == 0)
            return path;
        if (errno != EEXIST)
            return {};
    }
}

} // namespace

std::shared_ptr<AppendedFile> AppendedFile::Create(const fs::path& folder, std::string_view ending,
                                                   std::string_view content) {
    std::string firstName;
    Handle file(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (!file.valid() && (errno == EOPNOTSUPP || errno == EISDIR)) {
        firstName = folder / ".new-XXXXXX";
        file = Handle(::mkostemp(firstName.data(), O_CLOEXEC));
    }
    fs::path path;
    if (file.valid() && writeAt(file.get(), content, 0) &&
        ::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
        path = giveName(file, firstName, folder, ending);
    const int problem = errno;
    if (!firstName.empty())
        ::unlink(firstName.c_str());
    errno = problem;
    if (path.empty())
        return nullptr;
    return std::make_shared<AppendedFile>(std::move(file), std::move(path), content.size());
}

bool AppendedFile::Append(std::string_view line) {
    if (!writeAt(file_.get(), line, used_)) {
        const int problem = errno;
        static_cast<void>(!::ftruncate(file_.get(), static_cast<off_t>(used_)));
        errno = problem;
        return false;
    }
    used_ += line.size();
    return true;
}

bool AppendedFile::isUncut() const {
    struct stat status {};
    return ::fstat(file_.get(), &status) == 0 && status.st_nlink > 0 &&
           static_cast<std::size_t>(status.st_size) == used_;
}

bool AppendedFile::isWhole() const {
    struct stat status {};
    return isUncut() && stands(file_, path_, status);
}

void AppendedFile::Sync() {
    // Some file systems can't, and say so; that is no problem of this file.
    if (::fdatasync(file_.get()) != 0 && (errno == EIO || errno == ENOSPC || errno == EDQUOT))
        syncProblem_ = errno;
    const Handle folder(::open(path_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::fsync(folder.get()); // the name
}

void AppendedFile::Remove() {
    struct stat status {};
    if (stands(file_, path_, status))
        ::unlink(path_.c_str());
}

} // namespace corvane
