#pragma once

#include <cstdio>
#include <sched.h>

namespace corvane {

/// Keeps this process, and those that it starts from now on, on one core, and prints which. Two
/// processes that talk in turn are several times faster or slower as the scheduler places them side
/// by side or together, and neither is a property of what is measured.
inline void StayOnOneCore() {
    const int core = sched_getcpu();
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core < 0 ? 0U : static_cast<unsigned>(core), &cores);
    if (sched_setaffinity(0, sizeof cores, &cores) == 0)
        std::printf("both processes on core %d\n", core);
    else
        std::printf("not pinned to one core: the figures depend on the scheduler\n");
}

} // namespace corvane
