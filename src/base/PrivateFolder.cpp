#include "base/PrivateFolder.h"

#include <sys/stat.h>
#include <unistd.h>

namespace corvane {

bool IsPrivateFolder(const std::filesystem::path& folder) {
    struct stat status {};
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & 077U) == 0;
}

} // namespace corvane
