#pragma once

#include "system/AppendedFile.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace corvane {

/// Forces files to the disk beside the program's work: soon after they were appended to, but all
/// together once a second at most. Nothing runs before the first request.
class BackgroundSync {
  public:
    static constexpr std::chrono::milliseconds Interval{1000};

    BackgroundSync() = default;
    ~BackgroundSync();
    BackgroundSync(const BackgroundSync&) = delete;
    BackgroundSync& operator=(const BackgroundSync&) = delete;

    /// To be called after each appending.
    void Request(const std::shared_ptr<AppendedFile>& file) {
        if (!file->mark())
            add(file);
    }

  private:
    void add(const std::shared_ptr<AppendedFile>& file);
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::shared_ptr<AppendedFile>> waiting_;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace corvane
