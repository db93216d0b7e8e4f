#include "desktop/InstanceDoor.h"

#include "shell/Startup.h"
#include "support/TemporaryFolder.h"

#include <QMessageBox>
#include <QTest>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace corvane {
namespace {

class Door : public testing::Test {
  protected:
    TemporaryFolder folder;
    InstanceChannel channel{folder.path() / "run"};
    InstanceChannel other{folder.path() / "run"};
    QWidget window;
    std::vector<std::string> opened;
    InstanceDoor door{channel, window, [this](const std::string& path) { open(path); }};
    std::function<void(const std::string&)> whileOpening = [](const std::string&) {};
    std::vector<std::thread> senders;

    ~Door() override {
        door.close();
        for (std::thread& sender : senders)
            sender.join();
    }
    void open(const std::string& path) {
        opened.push_back(path);
        whileOpening(path);
    }
    void deliver(const std::string& path) {
        senders.emplace_back([this, path] {
            static_cast<void>(other.Deliver({InstanceRecord::Path, path}));
        });
    }
};

TEST_F(Door, AnotherStartBringsTheWindowBack) {
    window.showMinimized();
    ASSERT_TRUE(other.Post({InstanceRecord::Foreground, {}}));
    EXPECT_TRUE(QTest::qWaitFor([this] { return !window.isMinimized(); }));
    EXPECT_TRUE(window.isVisible());
}

TEST_F(Door, FilesOpenOneAfterTheOtherAndNeverInAQuestion) {
    window.show();
    ASSERT_TRUE(other.Post({77, "no path"}));
    ASSERT_TRUE(other.Post({InstanceRecord::Path, {}}));
    whileOpening = [this](const std::string& path) {
        if (path != "first")
            return;
        // The first asks; meanwhile the second arrives.
        QMessageBox question;
        question.setModal(true);
        question.show();
        deliver("second");
        QTest::qWait(300);
        EXPECT_EQ(opened, std::vector<std::string>{"first"});
    };
    deliver("first");
    EXPECT_TRUE(QTest::qWaitFor([this] { return opened.size() == 2; }));
    EXPECT_EQ(opened.back(), "second");

    QMessageBox question;
    question.setModal(true);
    question.show();
    deliver("third");
    QTest::qWait(300);
    EXPECT_EQ(opened.size(), 2U);
    question.close();
    EXPECT_TRUE(QTest::qWaitFor([this] { return opened.size() == 3; }));
}

TEST_F(Door, AFileThatComesWhileItClosesIsSaidToBeUnheard) {
    window.show();
    QMessageBox question; // whether to save, say
    question.setModal(true);
    question.show();
    std::atomic<int> heard = -1;
    senders.emplace_back([&] { heard = other.Deliver({InstanceRecord::Path, "late"}) ? 1 : 0; });
    QTest::qWait(100);
    EXPECT_EQ(heard, -1); // waits until the question is answered
    door.close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return heard != -1; }));
    EXPECT_EQ(heard, 0); // and opens it itself then
    EXPECT_TRUE(opened.empty());
    EXPECT_FALSE(HandOver(other, "late", {}, [](std::chrono::milliseconds) {}));
}

TEST_F(Door, NothingOpensOnceItIsClosed) {
    door.close();
    EXPECT_FALSE(other.Post({InstanceRecord::Foreground, {}}));
    EXPECT_EQ(channel.descriptor(), -1);
}

} // namespace
} // namespace corvane
