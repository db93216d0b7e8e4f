#include "system/Programs.h"

#include "base/Text.h"
#include "system/File.h"

#include <fcntl.h>
#include <filesystem>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace corvane {

namespace {

std::string programFile() {
    constexpr std::string_view replaced = " (deleted)"; // what the system adds then
    std::error_code error;
    std::string file = std::filesystem::read_symlink("/proc/self/exe", error).string();
    if (file.ends_with(replaced) && !std::filesystem::exists(file, error))
        file.resize(file.size() - replaced.size());
    return file;
}

/// The program that stands for a name of the form "Corvane.exe".
std::string programFor(const std::string& path) {
    std::string name = KOIOFilename(path);
    if (LowerCase(KOIOExtension(name)) == "exe")
        name.resize(name.size() - 4);
    else
        return path;
    const std::string starter = KOIODirectory(path) + "corvane-update";
    if (LowerCase(name) == "corvane" && ::access(starter.c_str(), X_OK) == 0)
        return starter;
    const std::string exact = KOIODirectory(path) + name;
    return ::access(exact.c_str(), X_OK) == 0 ? exact : KOIODirectory(path) + LowerCase(name);
}

std::vector<char*> argumentsOf(const std::vector<std::string>& words) {
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (const std::string& word : words)
        argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    return argv;
}

/// Starts a program that this one neither waits for nor is the parent of.
bool startDetached(const std::vector<std::string>& words) {
    const std::vector<char*> argv = argumentsOf(words);
    // The pipe closes by itself when the program starts; a byte in it says that it did not.
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0)
        return false;
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        if (::fork() == 0) {
            ::execvp(argv[0], argv.data());
            static_cast<void>(!::write(report[1], "x", 1));
        }
        ::_exit(0);
    }
    ::close(report[1]);
    char failed = 0;
    const bool started = child > 0 && ::read(report[0], &failed, 1) == 0;
    ::close(report[0]);
    if (child > 0)
        ::waitpid(child, nullptr, 0);
    return started;
}

} // namespace

bool SystemPrograms::Start(const std::string& path, const std::string& arguments) {
    std::vector<std::string> words{programFor(path)};
    std::istringstream rest(arguments);
    for (std::string word; rest >> word;)
        words.push_back(word);
    return startDetached(words);
}

void SystemPrograms::OpenInBrowser(const std::string& target) {
    static_cast<void>(startDetached({"xdg-open", target}));
}

std::string SystemPrograms::ProgramDirectory() const {
    return KOIODirectory(programFile());
}

void RunQuietly(const std::vector<std::string>& words) {
    const std::vector<char*> argv = argumentsOf(words);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            ::dup2(nothing, stream);
        ::execvp(argv[0], argv.data());
        ::_exit(1);
    }
    if (child > 0)
        ::waitpid(child, nullptr, 0);
}

std::string KOIOExecutablePath() {
    return ExecutablePathFor(programFile());
}

std::string ExecutablePathFor(std::string programFile) {
    constexpr std::size_t limit = 4096;
    if (programFile.size() >= limit)
        return {};
    const std::size_t size = programFile.size();
    if (size >= 4 && LowerCase(programFile.substr(size - 4)) == ".bin")
        programFile.replace(size - 4, 4, ".exe");
    return programFile;
}

} // namespace corvane
