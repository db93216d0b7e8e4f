#pragma once

#include "support/TemporaryFolder.h"

#include <cstdlib>

namespace corvane {

/// A home of this process's own, so that tests can run side by side: settings, state and virtual
/// links.
class OwnHome {
  public:
    OwnHome() {
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME",
                                 "XDG_CACHE_HOME", "CORVANE_BENCH_DIR"})
            ::unsetenv(name);
        set("HOME", "home");
        set("XDG_RUNTIME_DIR", "run");
    }

  private:
    void set(const char* variable, const char* name) const {
        const std::filesystem::path path = folder_.path() / name;
        std::filesystem::create_directory(path);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        ::setenv(variable, path.c_str(), 1);
    }

    TemporaryFolder folder_;
};

} // namespace corvane
