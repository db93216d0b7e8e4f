#include "system/UserFolders.h"

#include "base/PrivateFolder.h"

#include <cstdlib>
#include <sys/stat.h>

namespace corvane {

namespace fs = std::filesystem;

namespace {

fs::path base(const char* variable, const char* usual) {
    // A relative path there counts as none.
    if (const char* value = std::getenv(variable); value != nullptr && *value == '/')
        return value;
    const char* home = std::getenv("HOME");
    return fs::path(home == nullptr ? "/" : home) / usual;
}

} // namespace

fs::path ConfigurationFolder() {
    return base("XDG_CONFIG_HOME", ".config") / "corvane";
}

fs::path CacheFolder() {
    return base("XDG_CACHE_HOME", ".cache") / "corvane";
}

fs::path StateFolder() {
    return base("XDG_STATE_HOME", ".local/state") / "corvane";
}

fs::path DataFolder() {
    return base("XDG_DATA_HOME", ".local/share");
}

fs::path RuntimeFolder() {
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder != nullptr && *folder == '/' && IsPrivateFolder(folder))
        return fs::path(folder) / "corvane";
    return CacheFolder() / "runtime";
}

bool MakePrivateFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error))
        return true;
    if (folder.has_relative_path() && !MakePrivateFolder(folder.parent_path()))
        return false;
    return ::mkdir(folder.c_str(), 0700) == 0 || fs::is_directory(folder, error);
}

} // namespace corvane
