#include "kolib/devices/DeviceHolder.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace corvane {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
constexpr auto SearchAgainAfter = std::chrono::seconds(10);

bool leadsTo(const fs::path& link, const std::string& node) {
    std::error_code gone;
    return fs::read_symlink(link, gone) == node;
}

/// The link to the node among the open files of a process; empty if there is none.
std::string openFile(const fs::path& process, const std::string& node) {
    std::error_code denied;
    for (fs::directory_iterator file(process / "fd", denied), end; !denied && file != end;
         file.increment(denied))
        if (leadsTo(file->path(), node))
            return file->path();
    return {};
}

bool isNumber(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char digit) { return std::isdigit(digit) != 0; });
}

std::string nameOf(const fs::path& process) {
    std::ifstream file(process / "comm");
    std::string name;
    std::getline(file, name);
    // A program may give itself any name.
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isprint(c) == 0; }, '?');
    return name + " (process " + process.filename().string() + ")";
}

} // namespace

std::string DeviceHolder::of(const std::string& node) {
    const bool known =
        node == node_ && searched_ &&
        (file_.empty() ? Clock::now() - *searched_ < SearchAgainAfter : leadsTo(file_, node));
    if (!known) {
        node_ = node;
        search();
    }
    return name_;
}

void DeviceHolder::search() {
    searched_ = Clock::now();
    name_.clear();
    file_.clear();
    std::error_code error;
    for (fs::directory_iterator process("/proc", error), end; !error && process != end;
         process.increment(error)) {
        const std::string number = process->path().filename();
        if (!isNumber(number) || number == std::to_string(::getpid()))
            continue;
        file_ = openFile(process->path(), node_);
        if (file_.empty())
            continue;
        name_ = nameOf(process->path());
        return;
    }
}

} // namespace corvane
