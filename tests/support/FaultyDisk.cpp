#include "support/FaultyDisk.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace corvane {

namespace {

std::atomic<const char*> faultyCall = nullptr;
std::atomic<int> callsLeft = 0;
std::atomic<int> faultError = 0;

bool callFails(const char* call) {
    const char* wanted = faultyCall;
    if (wanted == nullptr || std::strcmp(wanted, call) != 0 || --callsLeft != 0)
        return false;
    errno = faultError;
    return true;
}

void makeWrong(timespec& time) {
    static std::atomic<std::int64_t> stoodAt; // seconds
    const char* wanted = faultyCall;
    if (wanted == nullptr || std::strcmp(wanted, "clock_gettime") != 0)
        return;
    const int left = --callsLeft;
    if (left == 0)
        stoodAt = time.tv_sec;
    if (left <= 0)
        time.tv_sec = faultError == 0 ? stoodAt.load() : time.tv_sec + faultError;
    if (left <= 0 && faultError == 0)
        time.tv_nsec = 0;
}

} // namespace

FaultyDisk::FaultyDisk(const char* call, int n, int error) {
    callsLeft = n;
    faultError = error;
    faultyCall = call;
}

FaultyDisk::~FaultyDisk() {
    faultyCall = nullptr;
}

bool FaultyDisk::hasFailed() const {
    return callsLeft <= 0;
}

} // namespace corvane

// These stand in for those of the C library, which the program would call otherwise.
// NOLINTBEGIN(*-vararg)
extern "C" {

ssize_t write(int file, const void* bytes, size_t count) {
    return file > STDERR_FILENO && corvane::callFails("write")
               ? -1
               : ::syscall(SYS_write, file, bytes, count);
}

ssize_t pwrite(int file, const void* bytes, size_t count, off_t at) {
    return corvane::callFails("pwrite") ? -1 : ::syscall(SYS_pwrite64, file, bytes, count, at);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    // The steady one only ever goes on.
    if (clock == CLOCK_REALTIME || (clock == CLOCK_MONOTONIC && corvane::faultError > 0))
        corvane::makeWrong(*time);
    return result;
}

int fsync(int file) {
    return corvane::callFails("fsync") ? -1 : static_cast<int>(::syscall(SYS_fsync, file));
}

int fdatasync(int file) {
    return corvane::callFails("fdatasync") ? -1 : static_cast<int>(::syscall(SYS_fdatasync, file));
}

int ftruncate(int file, off_t length) noexcept {
    return corvane::callFails("ftruncate")
               ? -1
               : static_cast<int>(::syscall(SYS_ftruncate, file, length));
}

int rename(const char* from, const char* to) noexcept {
    return corvane::callFails("rename")
               ? -1
               : static_cast<int>(::syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return corvane::callFails("linkat")
               ? -1
               : static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

int flock(int file, int operation) noexcept {
    return corvane::callFails("flock") ? -1
                                       : static_cast<int>(::syscall(SYS_flock, file, operation));
}

} // extern "C"
// NOLINTEND(*-vararg)
