// Installs an update as root, for a person who was asked for a password: takes the version as its
// only argument, and by the standard input the signature and the package. Started by hand it does
// the same, and no more.
#include "apps/support/InstallRoom.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <sys/resource.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace {

/// Nothing of whoever started this has a say in what follows: not the environment, not the open
/// files, not the folder, not signals, not limits that would end the installation half-way.
bool standAlone() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != stream)
            return false;
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    ::clearenv();
    ::setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("DEBIAN_FRONTEND", "noninteractive", 1);
    ::umask(022);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGCHLD, SIG_DFL);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXFSZ})
        ::signal(signal, SIG_IGN);
    const rlimit endless{RLIM_INFINITY, RLIM_INFINITY};
    for (const auto limit : {RLIMIT_FSIZE, RLIMIT_CPU, RLIMIT_AS, RLIMIT_DATA})
        ::setrlimit(limit, &endless);
    const rlimit manyFiles{1024, 4096};
    ::setrlimit(RLIMIT_NOFILE, &manyFiles);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    return ::chdir("/") == 0;
}

} // namespace

int main(int argc, char** argv) {
    using corvane::RootInstaller;
    constexpr int misused = static_cast<int>(RootInstaller::Outcome::Refused);
    if (!standAlone())
        return misused;
    if (argc != 2) {
        std::fputs("corvane-install-update VERSION, with a signature and its package as the "
                   "standard input\n",
                   stderr);
        return misused;
    }
    const std::string version = argv[1];
    RootInstaller installer(corvane::OwnInstallRoom());
    const RootInstaller::Outcome outcome = installer.install(version, STDIN_FILENO);
    const bool done = outcome == RootInstaller::Outcome::Installed;
    ::openlog("corvane-install-update", LOG_PID, LOG_AUTHPRIV);
    if (done) {
        ::syslog(LOG_NOTICE, "an update is installed");
    } else {
        std::fprintf(stderr, "%s\n", installer.why().c_str());
        ::syslog(LOG_WARNING, "no update was installed: %s", installer.why().c_str());
    }
    return static_cast<int>(outcome);
}
