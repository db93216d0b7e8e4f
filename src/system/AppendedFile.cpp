#include "system/AppendedFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace corvane {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t FirstRoom = 64UL * 1024; // bytes
constexpr std::size_t MostRoom = 4UL * 1024 * 1024;

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

/// Whether room that was set aside on the file's disk stays there, so that writing into it can't
/// fail later. Not so where each writing of a block takes a new one.
bool keepsItsRoom(int file) {
    struct statfs disk {};
    if (::fstatfs(file, &disk) != 0)
        return false;
    constexpr std::array kinds{EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC};
    return std::find(kinds.begin(), kinds.end(), disk.f_type) != kinds.end();
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
    if (file.valid() && writeAt(file.get(), content, 0) && ::flock(file.get(), LOCK_EX) == 0)
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
    if (mapping_ && used_ + line.size() > windowEnd_ && !makeRoom(line.size()))
        return false;
    if (!mapping_)
        return write(line);
    // The end last: until it is there, the line does not count.
    char* target = window_ + (used_ - windowStart_);
    std::memcpy(target, line.data(), line.size() - 1);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    target[line.size() - 1] = line.back();
    used_ += line.size();
    return true;
}

/// A call of the system for each line would cost more than all else that is done for it; memory
/// that is a part of the file goes to the system without one. Its room is set aside on the disk
/// before, so that it can't run out later.
bool AppendedFile::makeRoom(std::size_t size) {
    static const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    unmap();
    const std::size_t start = used_ / page * page;
    const std::size_t room = std::clamp(used_, FirstRoom, MostRoom);
    const std::size_t length = (used_ - start + std::max(size, room) + page - 1) / page * page;
    mapping_ = keepsItsRoom(file_.get());
    if (!mapping_)
        return true;
    if (::fallocate(file_.get(), 0, static_cast<off_t>(start), static_cast<off_t>(length)) != 0)
        return false;
    void* window = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE,
                          file_.get(), static_cast<off_t>(start));
    mapping_ = window != MAP_FAILED;
    if (mapping_) {
        window_ = static_cast<char*>(window);
        windowStart_ = start;
        windowEnd_ = start + length;
    }
    return true;
}

bool AppendedFile::write(std::string_view line) {
    if (!writeAt(file_.get(), line, used_)) {
        const int problem = errno;
        static_cast<void>(!::ftruncate(file_.get(), static_cast<off_t>(used_)));
        errno = problem;
        return false;
    }
    used_ += line.size();
    return true;
}

void AppendedFile::Sync() const {
    ::fdatasync(file_.get());
    const Handle folder(::open(path_.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::fsync(folder.get()); // the name
}

void AppendedFile::Remove() {
    ::unlink(path_.c_str());
}

void AppendedFile::unmap() {
    if (window_ != nullptr)
        ::munmap(window_, windowEnd_ - windowStart_);
    window_ = nullptr;
    windowStart_ = windowEnd_ = 0;
}

} // namespace corvane
