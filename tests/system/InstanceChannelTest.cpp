#include "system/InstanceChannel.h"

#include "shell/Startup.h"
#include "support/ManualClock.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace corvane {
namespace {

namespace fs = std::filesystem;

/// A start of the program in the folder that all of them share.
class Instances : public testing::Test {
  protected:
    TemporaryFolder folder;
    const fs::path place = folder.path() / "run" / "corvane";
    InstanceChannel first{place};
    InstanceChannel second{place};
    ManualClock clock{0};

    bool handOver(const std::string& file, const std::function<void(int pass)>& betweenPasses) {
        int pass = 0;
        return HandOver(second, file, "token", [&](std::chrono::milliseconds time) {
            clock.advance(static_cast<std::uint64_t>(time.count()));
            betweenPasses(++pass);
        });
    }
    /// Runs in another process, which is killed with what it has.
    template<class Work>
    int inChild(Work work) const {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(work() ? 0 : 1);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    [[nodiscard]] Handle connected() const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = place / InstanceChannel::MarkName;
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        Handle socket(::socket(AF_UNIX, SOCK_STREAM, 0));
        EXPECT_EQ(::connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address),
                  0);
        return socket;
    }
    void sendRaw(std::string_view bytes) const {
        const Handle socket = connected();
        ASSERT_EQ(::send(socket.get(), bytes.data(), bytes.size(), 0), std::ssize(bytes));
    }
};

TEST_F(Instances, OnlyOneRunsAtATime) {
    EXPECT_FALSE(first.EarlierInstanceRuns());
    EXPECT_TRUE(second.EarlierInstanceRuns());
    EXPECT_FALSE(second.Post({InstanceRecord::Foreground, {}})); // it has no mark yet
    EXPECT_TRUE(first.Mark());
    EXPECT_TRUE(second.Post({InstanceRecord::Foreground, "token"}));
    EXPECT_EQ(first.Receive()->record, (InstanceRecord{InstanceRecord::Foreground, "token"}));
    first.Unmark();
    EXPECT_FALSE(second.Post({InstanceRecord::Foreground, {}}));
    EXPECT_FALSE(second.EarlierInstanceRuns());
}

TEST_F(Instances, WhatAKilledInstanceLeavesIsNoInstance) {
    EXPECT_EQ(inChild([&] { // ends without unmarking
                  InstanceChannel killed(place);
                  return !killed.EarlierInstanceRuns() && killed.Mark() &&
                         ::kill(::getpid(), SIGKILL) == 0;
              }),
              -1);
    EXPECT_TRUE(fs::exists(place / InstanceChannel::MarkName));
    EXPECT_FALSE(second.EarlierInstanceRuns());
    EXPECT_TRUE(second.Mark());
    EXPECT_TRUE(first.EarlierInstanceRuns());
    EXPECT_TRUE(first.Post({InstanceRecord::Foreground, {}}));
    EXPECT_TRUE(second.Receive());
}

TEST_F(Instances, OneThatTookThePlaceKeepsItsMark) {
    ASSERT_FALSE(first.EarlierInstanceRuns());
    ASSERT_TRUE(first.Mark());
    ASSERT_TRUE(second.Mark());
    first.Unmark();
    InstanceChannel third(place);
    EXPECT_TRUE(third.EarlierInstanceRuns()); // though nobody holds the lock
    EXPECT_TRUE(third.Post({InstanceRecord::Foreground, {}}));
    EXPECT_TRUE(second.Receive());
}

TEST_F(Instances, RecordsThatAreNoneAreSkipped) {
    ASSERT_TRUE(first.Mark());
    sendRaw("");
    sendRaw(std::string_view("\x64\0\0\0\5\0\0\0abc", 11)); // too short
    sendRaw(std::string_view("\x64\0\0\0\xff\xff\xff\xff", 8));
    EXPECT_FALSE(
        second.Post({InstanceRecord::Path, std::string(InstanceChannel::MaxData + 1, 'a')}));
    EXPECT_TRUE(second.Post({InstanceRecord::Path, std::string(InstanceChannel::MaxData, 'b')}));
    const auto delivery = first.Receive();
    ASSERT_TRUE(delivery);
    EXPECT_EQ(delivery->record.lpData, std::string(InstanceChannel::MaxData, 'b'));
    EXPECT_FALSE(first.Receive());
}

TEST_F(Instances, NobodyIsWaitedFor) {
    ASSERT_TRUE(first.Mark());
    std::vector<Handle> silent;
    for (int i = 0; i < 200; ++i) {
        silent.push_back(connected());
        if (i % 2 == 0) {
            ASSERT_EQ(::send(silent.back().get(), "\x64\0\0\0\5\0\0\0a", 9, 0), 9);
        }
        if (i % 20 == 0) {
            EXPECT_FALSE(first.Receive());
        }
    }
    EXPECT_FALSE(first.Receive());
    // A record in pieces, with others between them.
    const std::string_view record("\x64\0\0\0\3\0\0\0abc", 11);
    const Handle slow = connected();
    for (const char byte : record) {
        EXPECT_FALSE(first.Receive());
        ASSERT_EQ(::send(slow.get(), &byte, 1, 0), 1);
        if (&byte == &record[5]) {
            sendRaw(std::string_view("\x64\0\0\0\1\0\0\0b", 9));
            EXPECT_EQ(first.Receive()->record.lpData, "b");
        }
    }
    EXPECT_EQ(first.Receive()->record.lpData, "abc");
    pollfd descriptor{first.descriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&descriptor, 1, 0), 0); // and nothing calls for attention
}

TEST_F(Instances, AFolderThatOthersMayEnterIsNotUsed) {
    fs::create_directories(place);
    fs::permissions(place, fs::perms(0755));
    EXPECT_FALSE(first.EarlierInstanceRuns());
    EXPECT_FALSE(second.EarlierInstanceRuns()); // nobody is hindered
    EXPECT_FALSE(first.Mark());
    EXPECT_TRUE(fs::is_empty(place));
}

TEST_F(Instances, AnotherUserCanNeitherConnectNorBlock) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be somebody else";
    ASSERT_TRUE(first.Mark());
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(place.parent_path(), fs::perms(0755));
    constexpr uid_t nobody = 65534;
    const auto asNobody = [&](auto work) {
        return inChild([&] { return ::setuid(nobody) == 0 && work(); });
    };
    EXPECT_EQ(asNobody([&] { return !second.Post({InstanceRecord::Path, "/etc/passwd"}); }), 0);
    EXPECT_EQ(asNobody([&] { return !second.EarlierInstanceRuns() && !second.Mark(); }), 0);
    // Even through a folder that is open by mistake.
    fs::permissions(place, fs::perms(0777));
    fs::permissions(place / InstanceChannel::MarkName, fs::perms(0777));
    EXPECT_EQ(asNobody([&] {
                  sendRaw(std::string_view("\x64\0\0\0\3\0\0\0abc", 11));
                  return !testing::Test::HasFailure();
              }),
              0);
    EXPECT_FALSE(first.Receive());
}

TEST_F(Instances, LongFolderNamesDoNotMatter) {
    const fs::path deep = folder.path() / std::string(120, 'x') / std::string(120, 'y');
    InstanceChannel one(deep);
    EXPECT_FALSE(one.EarlierInstanceRuns());
    EXPECT_TRUE(one.Mark());
    EXPECT_TRUE(InstanceChannel(deep).Post({InstanceRecord::Foreground, {}}));
    EXPECT_TRUE(one.Receive());
}

TEST_F(Instances, PassesWithAndWithoutAWindowCancelOut) {
    struct Case {
        bool runs;     // the other one, when this one starts
        int changesAt; // pass
        bool handsOver;
        unsigned passes;
    };
    for (const Case& test : {Case{true, 0, true, 11},
                             {false, 0, false, 11},
                             {false, 5, true, 5 + 5 + 11},
                             {true, 3, false, 3 + 3 + 11}}) {
        const auto run = [&](bool now) { now ? static_cast<void>(first.Mark()) : first.Unmark(); };
        run(test.runs);
        clock = ManualClock(0);
        EXPECT_EQ(handOver({},
                           [&](int pass) {
                               if (pass == test.changesAt)
                                   run(!test.runs);
                           }),
                  test.handsOver);
        EXPECT_EQ(clock.now(), test.passes * 500);
    }
}

TEST_F(Instances, AStartWithAFileEndsAtTheFirstPassThatFindsTheWindow) {
    std::thread running;
    std::vector<InstanceRecord> got;
    const auto serve = [&] {
        while (got.size() < 2) {
            pollfd descriptor{first.descriptor(), POLLIN, 0};
            if (::poll(&descriptor, 1, 5000) != 1)
                break;
            while (const auto delivery = first.Receive()) {
                delivery->confirm();
                got.push_back(delivery->record);
            }
        }
    };
    EXPECT_TRUE(handOver("/docs/a b.lumora", [&](int pass) {
        if (pass == 2) {
            first.Mark();
            running = std::thread(serve);
        }
    }));
    running.join();
    EXPECT_EQ(clock.now(), 1000U);
    EXPECT_EQ(got, (std::vector<InstanceRecord>{{InstanceRecord::Foreground, "token"},
                                                {InstanceRecord::Path, "/docs/a b.lumora"}}));
}

} // namespace
} // namespace corvane
