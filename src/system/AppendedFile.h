#pragma once

#include "base/Handle.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace corvane {

/// A file of this user alone that lines are appended to, many a millisecond. What `Append` has
/// returned from is with the system and outlives a killed program. Behind the lines there may stand
/// NULs, which are room for more. The file is locked as long as this lives.
class AppendedFile {
  public:
    /// A new file in the folder, with a name of its own and this ending, which has this content
    /// from the moment that it has its name. Nothing if it can't be had; `errno` then says why.
    [[nodiscard]] static std::shared_ptr<AppendedFile>
    Create(const std::filesystem::path& folder, std::string_view ending, std::string_view content);
    AppendedFile(Handle file, std::filesystem::path path, std::size_t size)
        : file_(std::move(file)), path_(std::move(path)), used_(size) {}
    ~AppendedFile() { unmap(); }
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;

    /// Appends a line, which ends in a line feed and has no NUL. False, with what stood there as it
    /// was, if there is no room; `errno` then says why.
    [[nodiscard]] bool Append(std::string_view line);
    /// Forces all to the disk. Any thread may do that.
    void Sync() const;
    void Remove();

    /// Whether it has been marked since `takeMark`; marks it. Cheap, and for two threads.
    bool mark() { return marked_.load(std::memory_order_relaxed) || marked_.exchange(true); }
    void takeMark() { marked_ = false; }

  private:
    [[nodiscard]] bool makeRoom(std::size_t size);
    [[nodiscard]] bool write(std::string_view line);
    void unmap();

    Handle file_;
    std::filesystem::path path_;
    std::size_t used_; // bytes
    bool mapping_ = true;
    char* window_ = nullptr; // on a part of the file
    std::size_t windowStart_ = 0;
    std::size_t windowEnd_ = 0;
    std::atomic<bool> marked_ = false;
};

} // namespace corvane
