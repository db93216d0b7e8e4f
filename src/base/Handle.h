#pragma once

#include <utility>

namespace corvane {

/// A file descriptor that is closed when this object ends.
class Handle {
  public:
    Handle() = default;
    explicit Handle(int descriptor) : descriptor_(descriptor) {}
    Handle(Handle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();

    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] bool valid() const { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

} // namespace corvane
