#pragma once

#include "kolib/devices/LinkDevices.h"
#include "kolib/devices/VirtualLinkSource.h"
#include "support/Process.h"
#include "system/SystemClock.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace corvane {

template<class Condition>
[[nodiscard]] bool eventually(Condition condition,
                              std::chrono::milliseconds limit = std::chrono::seconds(5)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// The real programs, talking through a folder of virtual links of their own.
class BenchProgram : public testing::Test {
  protected:
    TemporaryFolder folder;
    SystemClock clock;
    RunModes modes;
    KODebug debug{modes};
    wire::HostSession packets{clock, {}};

    void SetUp() override { ::setenv("CORVANE_BENCH_DIR", folder.path().c_str(), 1); }

    [[nodiscard]] std::filesystem::path socketOf(const std::string& name) const {
        return folder.path() / (name + ".link");
    }
    void waitFor(const std::string& name) const {
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(socketOf(name)); })) << name;
    }
    [[nodiscard]] std::unique_ptr<LinkDevices> devices() {
        std::vector<std::unique_ptr<LinkSource>> sources;
        sources.push_back(
            std::make_unique<VirtualLinkSource>(VirtualLinkSource::userFolder(), clock));
        return std::make_unique<LinkDevices>(std::move(sources), packets, debug, clock);
    }
    static bool countBecomes(KODevice& device, int count) {
        return eventually([&] {
            device.EnumerateDevices();
            return device.GetDeviceCount() == count;
        });
    }
};

/// Runs corvanectl and gives its exit status, output and errors.
struct Ran {
    int status;
    std::string output;
    std::string errors;
};
[[nodiscard]] inline Ran ctl(const std::vector<std::string>& arguments,
                             const char* program = "corvanectl") {
    Process process(program, arguments);
    const int status = process.wait();
    return {status, process.output(), process.errors()};
}

} // namespace corvane
