#include "system/BackgroundSync.h"

#include <utility>

namespace corvane {

BackgroundSync::~BackgroundSync() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

void BackgroundSync::add(const std::shared_ptr<AppendedFile>& file) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(file);
        if (!thread_.joinable())
            thread_ = std::thread([this] { run(); });
    }
    changed_.notify_one();
}

void BackgroundSync::run() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        const std::vector<std::shared_ptr<AppendedFile>> files = std::exchange(waiting_, {});
        lock.unlock();
        for (const auto& file : files) {
            file->takeMark(); // before: what comes meanwhile is for the next time
            // A journal that has ended meanwhile has let go of its file.
            if (file.use_count() > 1)
                file->Sync();
        }
        lock.lock();
        // The pause comes after the first one, not before: a lone change is safe at once.
        changed_.wait_for(lock, Interval, [this] { return ending_; });
    }
}

} // namespace corvane
