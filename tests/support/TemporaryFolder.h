#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace corvane {

/// A folder of the test's own, closed to others, that goes with its scope.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    /// Makes a file with this content and gives its path.
    std::string file(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
        return path_ / name;
    }
    [[nodiscard]] std::string content(const std::string& name) const {
        std::ifstream stream(path_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

  private:
    std::filesystem::path path_;
};

} // namespace corvane
