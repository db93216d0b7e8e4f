#include "system/DiskFiles.h"

#include "base/Handle.h"

#include <climits>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

namespace {

namespace fs = std::filesystem;

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return ::fsync(descriptor) == 0;
}

/// Where a path leads once its symbolic links are followed, the last one perhaps to nothing yet.
fs::path followed(fs::path path) {
    constexpr int longestChain = 40;
    std::error_code error;
    for (int i = 0; i < longestChain && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        const fs::path target = fs::read_symlink(path, error);
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return path;
}

/// A new file in the folder that becomes visible under a name only once it is whole, where the
/// file system can do that, and under a name of its own from the start where not.
class NewFile {
  public:
    explicit NewFile(const fs::path& folder)
        : folder_(folder.empty() ? "." : folder),
          descriptor_(::open(folder_.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600)) {
        if (descriptor_ < 0) {
            std::string name = (folder_ / ".corvane-XXXXXX").string();
            descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
            if (descriptor_ >= 0)
                name_ = name;
        }
    }
    ~NewFile() {
        const Handle file(descriptor_);
        if (!name_.empty())
            ::unlink(name_.c_str());
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    [[nodiscard]] int descriptor() const { return descriptor_; }

    [[nodiscard]] bool becomes(const fs::path& path) {
        if (name_.empty() && !giveName())
            return false;
        if (::rename(name_.c_str(), path.c_str()) != 0)
            return false;
        name_.clear();
        const Handle folder(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        ::fsync(folder.get()); // the renaming itself; not every file system can
        return true;
    }

  private:
    bool giveName() {
        const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
        for (int attempt = 0; attempt < 100; ++attempt) {
            const fs::path name = folder_ / (".corvane-" + std::to_string(::getpid()) + "-" +
                                             std::to_string(attempt));
            if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
                name_ = name;
                return true;
            }
            if (errno != EEXIST)
                break;
        }
        return false;
    }

    fs::path folder_;
    int descriptor_;
    std::string name_;
};

} // namespace

FileDoor::ReadResult DiskFiles::ReadWhole(const std::string& path, std::string& bytes) {
    bytes.clear();
    const Handle file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.get() < 0)
        return errno == ENOENT || errno == ENOTDIR ? ReadResult::NotFound : ReadResult::Failed;
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::uintmax_t>(status.st_size) > SizeLimit)
        return ReadResult::Failed;
    bytes.resize(static_cast<std::size_t>(status.st_size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return ReadResult::Failed;
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return ReadResult::Done;
}

bool DiskFiles::ReplaceWhole(const std::string& path, std::string_view bytes) {
    if (path.empty())
        return false;
    const fs::path target = followed(path);
    std::error_code error;
    if (fs::is_symlink(fs::symlink_status(target, error)))
        return false; // a circle
    struct stat old {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    // Renaming would get round the protection of a single file.
    if (exists && (!S_ISREG(old.st_mode) || ::access(target.c_str(), W_OK) != 0))
        return false;
    NewFile file(target.parent_path());
    if (file.descriptor() < 0)
        return false;
    if (exists) {
        if (old.st_uid != ::geteuid() || old.st_gid != ::getegid())
            static_cast<void>(!::fchown(file.descriptor(), old.st_uid, old.st_gid));
        ::fchmod(file.descriptor(), old.st_mode & 07777U);
    } else {
        const mode_t hidden = ::umask(0);
        ::umask(hidden);
        ::fchmod(file.descriptor(), 0666U & ~hidden);
    }
    return writeAll(file.descriptor(), bytes) && file.becomes(target);
}

} // namespace corvane
