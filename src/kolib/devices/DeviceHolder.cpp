#include "kolib/devices/DeviceHolder.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace corvane {

namespace {

namespace fs = std::filesystem;

bool hasOpen(const fs::path& process, const std::string& node) {
    std::error_code denied;
    for (fs::directory_iterator file(process / "fd", denied), end; !denied && file != end;
         file.increment(denied)) {
        std::error_code gone;
        if (fs::read_symlink(file->path(), gone) == node)
            return true;
    }
    return false;
}

} // namespace

std::string HolderOf(const std::string& node) {
    std::error_code error;
    for (fs::directory_iterator process("/proc", error), end; !error && process != end;
         process.increment(error)) {
        const std::string number = process->path().filename();
        const bool isProcess = std::all_of(number.begin(), number.end(), [](unsigned char digit) {
            return std::isdigit(digit) != 0;
        });
        if (!isProcess || number == std::to_string(::getpid()) || !hasOpen(process->path(), node))
            continue;
        std::ifstream file(process->path() / "comm");
        std::string name;
        std::getline(file, name);
        // A program may give itself any name.
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return std::isprint(c) == 0; }, '?');
        return name + " (process " + number + ")";
    }
    return {};
}

} // namespace corvane
