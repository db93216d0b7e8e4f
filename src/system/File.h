#pragma once

#include <string>
#include <utility>

namespace corvane {

/// A path taken apart. Folders end at a backslash or, on this system, at a slash.
class File {
  public:
    File() = default;
    explicit File(std::string path) : path_(std::move(path)) {}

    [[nodiscard]] const std::string& CompletePath() const { return path_; }
    void setCompletePath(std::string path) { path_ = std::move(path); }
    /// Up to and with the last separator; empty if there is none.
    [[nodiscard]] std::string Directory() const { return path_.substr(0, nameStart()); }
    /// Behind the last separator.
    [[nodiscard]] std::string filename() const { return path_.substr(nameStart()); }
    /// Behind the last dot of the file name; empty if it has none.
    [[nodiscard]] std::string Extension() const {
        const std::string name = filename();
        const std::size_t dot = name.rfind('.');
        return dot == std::string::npos ? std::string() : name.substr(dot + 1);
    }

  private:
    [[nodiscard]] std::size_t nameStart() const {
        const std::size_t separator = path_.find_last_of("\\/");
        return separator == std::string::npos ? 0 : separator + 1;
    }

    std::string path_;
};

[[nodiscard]] inline std::string KOIODirectory(const std::string& path) {
    return File(path).Directory();
}
[[nodiscard]] inline std::string KOIOFilename(const std::string& path) {
    return File(path).filename();
}
[[nodiscard]] inline std::string KOIOExtension(const std::string& path) {
    return File(path).Extension();
}

} // namespace corvane
