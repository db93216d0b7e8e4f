#include "kolib/update/RootInstaller.h"

#include "kolib/update/Versions.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {

namespace {

constexpr const char* CopyName = "update.deb";
constexpr std::int64_t MostBytes = std::int64_t{1} << 30;
constexpr std::size_t SignatureLimit = 4 * 1024; // bytes
constexpr int SignatureLines = 4;
constexpr int Patience = 60000; // ms without a byte

/// The next bytes of the input: 0 at its end, below 0 if it fails or falls silent.
ssize_t readSome(int input, char* bytes, std::size_t room) {
    for (;;) {
        pollfd waiting{input, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, Patience);
        const ssize_t count = ready > 0 ? ::read(input, bytes, room) : -1;
        if (count >= 0 || (errno != EINTR && errno != EAGAIN) || ready == 0)
            return count;
    }
}

bool writeAll(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

/// Runs a program to its end and gives its exit status, or -1. What it writes goes to `output`, as
/// far as that is of a sensible length; into nothing if there is none.
int run(std::vector<std::string> words, const std::vector<std::string>& more, std::string* output) {
    words.insert(words.end(), more.begin(), more.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    const Handle from(ends[0]);
    Handle into(ends[1]);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_RDWR);
        ::dup2(nothing, STDIN_FILENO);
        ::dup2(output != nullptr ? into.get() : nothing, STDOUT_FILENO);
        ::setsid(); // whoever ends our terminal does not end this
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXFSZ})
            ::signal(signal, SIG_DFL); // which a program keeps from the one that starts it
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    into = Handle();
    constexpr std::size_t most = 4096;
    char piece[512];
    for (ssize_t count = 1; output != nullptr && count > 0;) {
        count = ::read(from.get(), piece, sizeof piece);
        if (count > 0 && output->size() < most)
            output->append(piece, static_cast<std::size_t>(count));
        else if (count < 0 && errno == EINTR)
            count = 1;
    }
    int status = 0;
    if (child < 0)
        return -1;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string withoutEnd(std::string text) {
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

} // namespace

RootInstaller::Outcome RootInstaller::refuse(const std::string& why) {
    why_ = why;
    return Outcome::Refused;
}

RootInstaller::Outcome RootInstaller::fail(const std::string& why) {
    why_ = why;
    return Outcome::Failed;
}

RootInstaller::Outcome RootInstaller::install(const std::string& version, int input) {
    const auto key = Minisign::readKey(room_.key);
    if (!key)
        return refuse("this build of Corvane has no updates");
    if (!IsNewer(version, "0"))
        return refuse("that is no version");
    const auto signature = readSignature(input);
    if (!signature)
        return refuse("there is no signature");
    const std::string said = "corvane " + version + " ";
    if (!signature->trustedComment.starts_with(said))
        return refuse("the signature is that of \"" + signature->trustedComment +
                      "\" and not of version " + version);
    Outcome outcome = openFolder();
    if (outcome != Outcome::Installed)
        return outcome;
    outcome = copy(input);
    if (outcome == Outcome::Installed && !Minisign::verifyFile(*key, *signature, copy_.get()))
        outcome = refuse("the package is not signed by us");
    if (outcome == Outcome::Installed)
        outcome = fits(version);
    if (outcome == Outcome::Installed)
        outcome = handOver();
    ::unlinkat(folder_.get(), CopyName, 0);
    return outcome;
}

RootInstaller::Outcome RootInstaller::openFolder() {
    ::mkdir(room_.folder.c_str(), 0700);
    // Left open to what is run from here, and the lock with it: if this is killed and dpkg goes on
    // with the copy, nobody else puts another file in its place.
    folder_ = Handle(::open(room_.folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
    struct stat status {};
    if (!folder_.valid() || ::fstat(folder_.get(), &status) != 0 || status.st_uid != room_.owner ||
        (status.st_mode & 077U) != 0 || ::geteuid() != room_.owner)
        return fail("there is no place for the package that only the system can write to");
    if (::flock(folder_.get(), LOCK_EX | LOCK_NB) != 0)
        return fail("another installation is under way");
    return Outcome::Installed;
}

std::optional<Minisign::Signature> RootInstaller::readSignature(int input) {
    // Byte by byte, so that all behind it is the package.
    std::string text;
    for (int lines = 0; lines < SignatureLines;) {
        char c = 0;
        if (text.size() == SignatureLimit || readSome(input, &c, 1) != 1)
            return std::nullopt;
        text += c;
        lines += c == '\n' ? 1 : 0;
    }
    return Minisign::readSignature(text);
}

RootInstaller::Outcome RootInstaller::copy(int input) {
    ::unlinkat(folder_.get(), CopyName, 0); // of one that was interrupted
    copy_ = Handle(::openat(folder_.get(), CopyName,
                            O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!copy_.valid())
        return fail(std::string("the package can't be copied: ") + std::strerror(errno));
    std::vector<char> piece(1U << 16U);
    std::int64_t all = 0;
    for (;;) {
        const ssize_t count = readSome(input, piece.data(), piece.size());
        if (count < 0)
            return refuse("the package does not come to its end");
        if (count == 0)
            return Outcome::Installed;
        all += count;
        if (all > MostBytes)
            return refuse("the package is too large");
        if (!writeAll(copy_.get(), piece.data(), static_cast<std::size_t>(count)))
            return fail(std::string("the package can't be copied: ") + std::strerror(errno));
    }
}

RootInstaller::Outcome RootInstaller::fits(const std::string& version) {
    std::string said;
    if (run(room_.dpkgDeb, {"--show", "--showformat=${Package} ${Version}", copyPath()}, &said) !=
            0 ||
        withoutEnd(said) != "corvane " + version)
        return refuse("the package is not Corvane " + version);
    std::string state;
    if (run(room_.dpkgQuery, {"--show", "--showformat=${db:Status-Status} ${Version}", "corvane"},
            &state) != 0)
        return refuse("Corvane was not installed by the system here");
    const std::size_t blank = state.find(' ');
    const std::string installed = withoutEnd(state.substr(std::min(blank, state.size() - 1) + 1));
    const bool whole = state.substr(0, blank) == "installed";
    if (IsNewer(version, installed).value_or(false) || (!whole && version == installed))
        return Outcome::Installed;
    return refuse(version + " is not newer than " + installed + ", which is installed");
}

RootInstaller::Outcome RootInstaller::handOver() {
    const int status = run(room_.dpkg, {"--refuse-downgrade", "--install", copyPath()}, nullptr);
    return status == 0 ? Outcome::Installed : fail("dpkg ended with " + std::to_string(status));
}

} // namespace corvane
