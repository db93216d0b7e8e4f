#include "kolib/update/DownloadFolder.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace corvane {

namespace {

constexpr std::size_t SignatureLimit = 4 * 1024; // bytes

bool isPlainFileOfOurs(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
           status.st_uid == ::geteuid();
}

} // namespace

bool DownloadFolder::open(std::string& whyNot) {
    std::error_code error;
    std::filesystem::create_directories(path_.parent_path(), error);
    ::mkdir(path_.c_str(), 0700);
    folder_ = Handle(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder_.valid() || ::fstat(folder_.get(), &status) != 0)
        whyNot = "the folder " + path_.string() + " can't be used (" + std::strerror(errno) + ")";
    else if (status.st_uid != ::geteuid())
        whyNot = "the folder " + path_.string() + " belongs to somebody else";
    else if (::fchmod(folder_.get(), 0700) == 0)
        return true;
    else
        whyNot = "the folder " + path_.string() + " can't be closed to others";
    folder_ = Handle();
    return false;
}

Handle DownloadFolder::openPart() const {
    constexpr int how = O_RDWR | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    Handle part(::openat(folder_.get(), Part, how, 0600));
    if (part.valid() && isPlainFileOfOurs(part.get()))
        return part;
    // A link or a foreign file in its place is not written through but replaced.
    ::unlinkat(folder_.get(), Part, 0);
    return Handle(::openat(folder_.get(), Part, how | O_EXCL, 0600));
}

Handle DownloadFolder::openToRead(const char* name) const {
    Handle file(::openat(folder_.get(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return file.valid() && isPlainFileOfOurs(file.get()) ? std::move(file) : Handle();
}

std::string DownloadFolder::signatureText() const {
    const Handle file = openToRead(Signature);
    std::string text(SignatureLimit + 1, '\0');
    const ssize_t count = file.valid() ? ::read(file.get(), text.data(), text.size()) : 0;
    text.resize(count > 0 && count <= static_cast<ssize_t>(SignatureLimit)
                    ? static_cast<std::size_t>(count)
                    : 0);
    return text;
}

bool DownloadFolder::keep(std::string_view signature) const {
    // The signature is on the disk before the package gets its name: at no moment does a package
    // stand there without what it is verified by.
    ::unlinkat(folder_.get(), Signature, 0);
    const Handle file(::openat(folder_.get(), Signature,
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    return file.valid() &&
           ::write(file.get(), signature.data(), signature.size()) ==
               static_cast<ssize_t>(signature.size()) &&
           ::fsync(file.get()) == 0 &&
           ::renameat(folder_.get(), Part, folder_.get(), Package) == 0 &&
           (::fsync(folder_.get()) == 0 || errno == EINVAL);
}

void DownloadFolder::clear() const {
    for (const char* name : {Part, Package, Signature})
        ::unlinkat(folder_.get(), name, 0);
}

} // namespace corvane
