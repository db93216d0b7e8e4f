#include "support/Process.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {

namespace {
std::string textOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}
} // namespace

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Process::Process(const std::string& program, const std::vector<std::string>& arguments) {
    const std::string path = std::string(CORVANE_PROGRAMS) + "/" + program;
    const std::string out = folder_.path() / "out";
    const std::string err = folder_.path() / "err";
    std::vector<char*> argv{const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ != 0)
        return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
    ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
    ::execv(path.c_str(), argv.data());
    ::_exit(127);
}

Process::~Process() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        wait();
    }
}

void Process::signal(int number) const {
    ::kill(pid_, number);
}

int Process::wait() {
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Process::running() {
    return ::kill(pid_, 0) == 0;
}

std::string Process::output() const {
    return textOf(folder_.path() / "out");
}

std::string Process::errors() const {
    return textOf(folder_.path() / "err");
}

} // namespace corvane
