// Two real processes of the window's program, without a screen.
#include "support/Process.h"
#include "system/InstanceChannel.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>

namespace corvane {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class TwoInstances : public testing::Test {
  protected:
    TemporaryFolder folder;
    const fs::path run = folder.path() / "run" / "corvane";

    TwoInstances() {
        for (const auto& [name, place] : {std::pair("XDG_RUNTIME_DIR", "run"),
                                          {"XDG_CONFIG_HOME", "config"},
                                          {"XDG_CACHE_HOME", "cache"},
                                          {"XDG_STATE_HOME", "state"},
                                          {"XDG_DATA_HOME", "data"},
                                          {"CORVANE_BENCH_DIR", "bench"}}) {
            fs::create_directory(folder.path() / place);
            fs::permissions(folder.path() / place, fs::perms(0700));
            ::setenv(name, (folder.path() / place).c_str(), 1);
        }
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        folder.file("empty.lumora", "Lumora\t0\t0\t0\t2\n");
    }
    template<class Condition>
    static bool waitFor(Condition condition) {
        for (int i = 0; i < 600 && !condition(); ++i)
            std::this_thread::sleep_for(50ms);
        return condition();
    }
    [[nodiscard]] bool marked() const {
        return InstanceChannel(run).Post({InstanceRecord::Foreground, {}});
    }
};

TEST_F(TwoInstances, TheSecondHandsItsFileOverAndEnds) {
    Process first("corvane", {});
    ASSERT_TRUE(waitFor([this] { return marked(); }));
    // The second names the file from a folder of its own, and only the first opens it.
    const Handle watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ::inotify_add_watch(watch.get(), (folder.path() / "empty.lumora").c_str(), IN_OPEN);
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    Process second("corvane", {"empty.lumora"});
    fs::current_path(before);
    EXPECT_EQ(second.wait(), 0);
    char event[4096];
    EXPECT_GT(::read(watch.get(), event, sizeof event), 0);
    EXPECT_TRUE(first.running());

    first.signal(SIGKILL);
    first.wait();
    Process third("corvane", {"empty.lumora"}); // finds only what the first left behind
    EXPECT_TRUE(waitFor([this] { return marked(); }));
    EXPECT_TRUE(third.running());
}

TEST_F(TwoInstances, RegisteringWritesAndEndsAtOnce) {
    EXPECT_EQ(Process("corvane", {"-register"}).wait(), 0);
    EXPECT_NE(folder.content("config/corvane/settings").find("Corvane.Lumora"), std::string::npos);
    EXPECT_TRUE(fs::exists(folder.path() / "data/mime/packages/corvane.xml"));
    EXPECT_FALSE(fs::exists(run / "instance.lock"));
}

} // namespace
} // namespace corvane
