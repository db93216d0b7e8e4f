#include "desktop/InstanceDoor.h"

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
    std::atomic<int> heard = 0; // how many senders know that theirs has been dealt with
    void deliver(const std::string& path) {
        senders.emplace_back([this, path] {
            heard += other.Deliver({InstanceRecord::Path, path}) ? 1 : 0;
        });
    }
    struct Question : QMessageBox {
        Question() {
            setModal(true);
            show();
        }
    };
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
        const Question question;
        deliver("second");
        QTest::qWait(300);
        EXPECT_EQ(opened, std::vector<std::string>{"first"});
    };
    deliver("first");
    EXPECT_TRUE(QTest::qWaitFor([this] { return opened.size() == 2 && heard == 2; }));
    EXPECT_EQ(opened.back(), "second");

    Question question;
    deliver("third");
    QTest::qWait(300);
    EXPECT_EQ(opened.size(), 2U);
    EXPECT_EQ(heard, 2);
    question.close();
    EXPECT_TRUE(QTest::qWaitFor([this] { return opened.size() == 3 && heard == 3; }));
}

} // namespace
} // namespace corvane
