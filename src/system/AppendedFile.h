#pragma once

#include "base/Handle.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace corvane {

/// A file of this user alone that lines are appended to. What `Append` has returned from is with
/// the system and outlives a killed program. The file is locked as long as this lives. It is
/// written through calls alone: memory that is a part of a file ends the program when another cuts
/// the file short, or when its disk fails.
class AppendedFile {
  public:
    /// A new file in the folder, with a name of its own and this ending, which has this content
    /// from the moment that it has its name. Nothing if it can't be had; `errno` then says why.
    [[nodiscard]] static std::shared_ptr<AppendedFile>
    Create(const std::filesystem::path& folder, std::string_view ending, std::string_view content);
    AppendedFile(Handle file, std::filesystem::path path, std::size_t size)
        : file_(std::move(file)), path_(std::move(path)), used_(size) {}
    AppendedFile(const AppendedFile&) = delete;
    AppendedFile& operator=(const AppendedFile&) = delete;

    /// Appends a line. False, with what stood there as it was, if there is no room or the disk
    /// fails; `errno` then says why.
    [[nodiscard]] bool Append(std::string_view line);
    /// Whether it still is a file somewhere and as long as what was appended. Costs next to
    /// nothing.
    [[nodiscard]] bool isUncut() const;
    /// The same, and it stands under its name.
    [[nodiscard]] bool isWhole() const;
    /// Forces all to the disk. Any thread may do that.
    void Sync();
    /// Why the disk did not take what was to be forced to it; 0 if it did.
    [[nodiscard]] int syncProblem() const { return syncProblem_; }
    /// Unless another file has taken the name.
    void Remove();

    /// Whether it has been marked since `takeMark`; marks it. Cheap, and for two threads.
    bool mark() { return marked_.load(std::memory_order_relaxed) || marked_.exchange(true); }
    void takeMark() { marked_ = false; }

  private:
    Handle file_;
    std::filesystem::path path_;
    std::size_t used_; // bytes
    std::atomic<int> syncProblem_ = 0;
    std::atomic<bool> marked_ = false;
};

} // namespace corvane
