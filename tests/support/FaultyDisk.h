#pragma once

namespace corvane {

/// Makes one call of the system for files fail, in the whole test program, as a worn disk would, or
/// its clocks. Links into a test by being used.
class FaultyDisk {
  public:
    /// The n-th call of this name from now on, from 1, fails with an error of `errno`; the others
    /// do what they always do. Known are write, pwrite, fsync, fdatasync, rename, linkat, flock and
    /// ftruncate; and clock_gettime, of which the n-th and all later readings are ahead by so many
    /// seconds. The time of day may also be behind, or with 0 stand still.
    FaultyDisk(const char* call, int n, int error);
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// Whether it has come to that.
    [[nodiscard]] bool hasFailed() const;
};

} // namespace corvane
