#include "support/Process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {

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

int Process::end() {
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return status;
}

int Process::wait() {
    const int status = end();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Process::waitForSignal() {
    const int status = end();
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

std::string Process::output() const {
    return folder_.content("out");
}

std::string Process::errors() const {
    return folder_.content("err");
}

} // namespace corvane
