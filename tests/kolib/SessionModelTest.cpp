// The rules of a session, played through: both ends of the wire are the real ones, and every order
// of what may happen between them is tried up to a depth.
#include "bench/ProductSession.h"
#include "kolib/wire/HostSession.h"
#include "support/Effort.h"
#include "support/ManualClock.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <unordered_set>

namespace corvane {
namespace {

using bench::Bytes;
using bench::ByteView;

constexpr int RequestChannel = 200;
constexpr int ReplyChannel = 72;

/// A frame under way, with what its receiver can't see: whose it is.
struct UnderWay {
    Bytes bytes;
    wire::FrameType type;
    int origin; ///< To the computer: the product's session. To the product: the hello it follows.
};

/// A product that says in its identification which session it is, and sends requests back.
class Product final : public bench::Firmware {
  public:
    int sessions = 0;
    std::function<void(ByteView request)> Asked;

    bench::Identity identity() const override {
        return {1, 2, 0, static_cast<std::uint8_t>(sessions)};
    }
    void powerOn(bench::Time) override {}
    void sessionBegins() override { ++sessions; }
    void packet(std::uint8_t, ByteView data, bench::Time, bench::Reply& reply) override {
        Asked(data);
        reply.send(ReplyChannel, data);
    }
    void tick(bench::Time, bench::Reply&) override {}
    std::optional<bench::Time> nextTick() const override { return std::nullopt; }
};

/// Both ends and the wire between them, as far as a course of steps has brought them. A computer
/// that is killed is followed by another one.
///
/// What is taken for granted: frames keep their order, and no hello or its echo is under way for
/// longer than its sender waits before it says hello again.
class Course {
  public:
    explicit Course(const std::string& steps) {
        product_.Asked = [this](ByteView request) { asked(request); };
        start();
        for (const char step : steps)
            take(step);
    }

    [[nodiscard]] std::string possible() const {
        std::string steps;
        const auto mayCome = [&](char step, bool may, int most) {
            if (may && count(step) < most)
                steps += step;
        };
        const bool greets = helloUnderWay();
        mayCome('h', !greets, 3);                         // the computer says hello
        mayCome('s', epoch_ > firstEpoch_, 2);            // it sends a request
        mayCome('r', waiting_, 9);                        // it takes what has come
        mayCome('>', !toProduct_.empty(), 99);            // a frame arrives
        mayCome('<', !toComputer_.empty(), 99);           //
        mayCome('(', !toComputer_.empty(), 2);            // a frame is lost
        mayCome(')', !toProduct_.empty(), 2);             //
        mayCome('t', !greets && epoch_ > firstEpoch_, 2); // time for repeats passes
        mayCome('k', epoch_ > firstEpoch_, 1);            // the computer's program is killed
        mayCome('p', product_.sessions > 0, 1);           // the product loses its power
        return steps;
    }
    /// Whatever can still make a difference.
    [[nodiscard]] std::string fingerprint() const {
        std::string all = hostLived_ + "|" + productLived_ + "|";
        for (const auto* wire : {&toComputer_, &toProduct_}) {
            for (const UnderWay& frame : *wire)
                all += std::to_string(frame.origin) + ":" +
                       std::string(frame.bytes.begin(), frame.bytes.end());
            all += '|';
        }
        for (const auto& [step, times] : counts_)
            if (std::string_view("hs()tkp").find(step) != std::string_view::npos)
                all += step + std::to_string(times);
        return all;
    }
    [[nodiscard]] int identified() const { return identified_; }
    /// From here everything arrives: a session that lasts goes on, and another one can begin.
    void endWell() {
        settle();
        int errors = 0;
        EXPECT_EQ(host_->SendQueue(errors), 0) << "a request waits for ever";
        for (const int request : asked_)
            EXPECT_TRUE(answered_.contains(request) || errors > 0 || poweredOff_)
                << "a request was lost";
        if (sessionLasts()) {
            EXPECT_EQ(identified_, product_.sessions) << "an identification was lost";
            expectAnswer();
        }
        take('h');
        settle();
        ASSERT_EQ(identified_, product_.sessions);
        expectAnswer();
    }

  private:
    struct Stream final : wire::ByteStream {
        Course& course;
        Bytes arrived;
        explicit Stream(Course& of) : course(of) {}
        std::size_t read(std::span<std::uint8_t> target) override {
            const std::size_t size = std::min(target.size(), arrived.size());
            std::copy_n(arrived.begin(), size, target.begin());
            arrived.erase(arrived.begin(), arrived.begin() + static_cast<std::ptrdiff_t>(size));
            return size;
        }
        void write(ByteView bytes) override {
            course.toProduct_.push_back(course.underWay(bytes, course.epoch_));
        }
        void waitForData(int milliseconds) override {
            course.clock_.advance(static_cast<std::uint64_t>(milliseconds));
        }
    };

    static UnderWay underWay(ByteView bytes, int origin) {
        const auto frame = wire::decodeFrame(bytes.first(bytes.size() - 1));
        return {Bytes(bytes.begin(), bytes.end()), frame.value().type, origin};
    }
    void start() {
        stream_ = std::make_unique<Stream>(*this);
        host_ = std::make_unique<wire::HostSession>(clock_, DebugCallbacks{});
        host_->attach(stream_.get());
        firstEpoch_ = ++epoch_;
        hostLived_.clear();
        waiting_ = poweredOff_ = false;
        asked_.clear();
        lastEcho_ = identified_ = -1;
    }
    [[nodiscard]] int count(char step) const {
        const auto found = counts_.find(step);
        return found == counts_.end() ? 0 : found->second;
    }
    [[nodiscard]] bool helloUnderWay() const {
        const auto isOwn = [this](const UnderWay& frame) {
            return frame.type == wire::FrameType::Hello && frame.origin > firstEpoch_;
        };
        const auto answersOwn = [this](const UnderWay& frame) {
            return frame.type == wire::FrameType::Echo && helloOf_.at(frame.origin) > firstEpoch_;
        };
        return std::any_of(toProduct_.begin(), toProduct_.end(), isOwn) ||
               std::any_of(toComputer_.begin(), toComputer_.end(), answersOwn);
    }
    [[nodiscard]] bool sessionLasts() const {
        return session_.inSession() && lastEcho_ == product_.sessions &&
               helloOf_.at(lastEcho_) == epoch_;
    }

    void take(char step) {
        ++counts_[step];
        switch (step) {
        case 'h':
            ++epoch_;
            asked_.clear();
            poweredOff_ = false;
            EXPECT_TRUE(host_->SendHello(125));
            break;
        case 's':
            send();
            break;
        case 'r':
            receive();
            break;
        case '>':
        case ')':
            arrive(toProduct_, step == '>' ? &Course::toProduct : nullptr);
            return;
        case '<':
        case '(':
            arrive(toComputer_, step == '<' ? &Course::toComputer : nullptr);
            return;
        case 't':
            clock_.advance(50);
            host_->pump();
            session_.tick(clock_.sinceStart());
            productLived_ += step;
            break;
        case 'k':
            start();
            return;
        case 'p':
            poweredOff_ = true;
            session_.powerCycle(clock_.sinceStart());
            productLived_ = std::to_string(product_.sessions);
            return;
        default:
            FAIL() << step;
        }
        hostLived_ += step;
    }
    void arrive(std::deque<UnderWay>& wire, void (Course::*at)(const UnderWay&)) {
        const UnderWay frame = std::move(wire.front());
        wire.pop_front();
        if (at != nullptr)
            (this->*at)(frame);
    }
    void toProduct(const UnderWay& frame) {
        if (frame.type == wire::FrameType::Hello)
            helloOf_[product_.sessions + 1] = frame.origin;
        productLived_.append(frame.bytes.begin(), frame.bytes.end());
        productLived_ += std::to_string(frame.origin);
        session_.received(frame.bytes, clock_.sinceStart());
    }
    void toComputer(const UnderWay& frame) {
        if (frame.type == wire::FrameType::Echo)
            lastEcho_ = frame.origin;
        hostLived_.append(frame.bytes.begin(), frame.bytes.end());
        hostLived_ += std::to_string(frame.origin);
        stream_->arrived.insert(stream_->arrived.end(), frame.bytes.begin(), frame.bytes.end());
        host_->pump();
        waiting_ = true;
    }

    void send() {
        const Bytes request{static_cast<std::uint8_t>(epoch_),
                            static_cast<std::uint8_t>(++lastRequest_)};
        asked_.insert(lastRequest_);
        EXPECT_TRUE(host_->SendPacket(RequestChannel, request));
    }
    /// Whether what this computer asked for after a hello belongs into a session: it was begun by
    /// that hello, or by a computer that is no more, of whose session only the beginning came.
    [[nodiscard]] bool belongs(int hello, int session) const {
        const int beganBy = helloOf_.at(session);
        return beganBy > firstEpoch_ ? hello == beganBy
                                     : hello > firstEpoch_ && lastEcho_ == session;
    }
    /// The product acts on a request once.
    void asked(ByteView request) {
        const bool fromKilled = request[0] <= firstEpoch_;
        EXPECT_TRUE(fromKilled ? request[0] >= helloOf_.at(product_.sessions)
                               : belongs(request[0], product_.sessions))
            << "a request of an earlier session";
        EXPECT_TRUE(acted_.insert(request[1]).second) << "a request was acted on twice";
    }
    void receive() {
        waiting_ = false;
        int channel = 0;
        int length = 0;
        while (host_->ReceivePacket(channel, length)) {
            Bytes data(static_cast<std::size_t>(length));
            host_->ReceivePacketData(data);
            if (channel == 0) {
                identified_ = data.at(3);
                EXPECT_GE(identified_, lastEcho_) << "an identification of an earlier session";
            } else if (channel == ReplyChannel) {
                EXPECT_GT(data.at(0), firstEpoch_) << "a reply to a program that was killed";
                EXPECT_TRUE(belongs(data.at(0), lastEcho_)) << "a reply of an earlier session";
                EXPECT_TRUE(answered_.insert(data.at(1)).second) << "a reply came twice";
            }
        }
    }
    void settle() {
        for (int quiet = 0; quiet < 8;) {
            quiet = toProduct_.empty() && toComputer_.empty() ? quiet + 1 : 0;
            while (!toProduct_.empty() || !toComputer_.empty()) {
                if (!toProduct_.empty())
                    take('>');
                if (!toComputer_.empty())
                    take('<');
            }
            take('r');
            take('t');
        }
    }
    void expectAnswer() {
        take('s');
        settle();
        EXPECT_TRUE(answered_.contains(lastRequest_)) << "a request without an answer";
        int errors = 0;
        EXPECT_EQ(host_->SendQueue(errors), 0);
    }

    ManualClock clock_;
    Product product_;
    std::deque<UnderWay> toProduct_;
    std::deque<UnderWay> toComputer_;
    bench::ProductSession session_{product_, [this](ByteView bytes) {
                                       toComputer_.push_back(underWay(bytes, product_.sessions));
                                   }};
    std::unique_ptr<Stream> stream_;
    std::unique_ptr<wire::HostSession> host_;
    int epoch_ = 0;      // the hello that was said last, of all computers
    int firstEpoch_ = 0; // stands for this computer's beginning
    int lastRequest_ = 0;
    int lastEcho_ = -1;          // session of the echo that this computer has heard last
    int identified_ = -1;        // session that it has been told
    bool waiting_ = false;       // something may have been received
    bool poweredOff_ = false;    // since the last hello
    std::map<int, int> helloOf_; // by session
    std::set<int> asked_;        // in this session of the computer's
    std::set<int> acted_;
    std::set<int> answered_;
    std::map<char, int> counts_;
    // What each end has lived through since it began: the same makes the same of it.
    std::string hostLived_;
    std::string productLived_;
};

/// Tries every order of steps behind a beginning; the number of different states.
std::size_t explore(const std::string& beginning, int depth) {
    std::unordered_set<std::string> seen;
    std::vector<std::string> courses{beginning};
    for (int level = 0; level < depth; ++level) {
        std::vector<std::string> next;
        for (const std::string& steps : courses) {
            for (const char step : Course(steps).possible()) {
                const std::string longer = steps + step;
                Course course(longer);
                if (!seen.insert(course.fingerprint()).second)
                    continue;
                course.endWell();
                if (testing::Test::HasFailure()) {
                    ADD_FAILURE() << "after " << longer;
                    return seen.size();
                }
                next.push_back(longer);
            }
        }
        courses = std::move(next);
    }
    return seen.size();
}

TEST(SessionModel, NothingStaleIsDeliveredAndNothingGoodIsLost) {
    const int depth = effort(6, 7);
    EXPECT_GT(explore("", depth), 500U);
    // A session that has been told, at rest and with a reply under way.
    EXPECT_GT(explore("h><<r>", depth - 1), 200U);
    EXPECT_GT(explore("h><<r>s>", depth - 2), 50U);
    EXPECT_EQ(Course("h><<hr").identified(), 1);
    // A further hello that has met a packet of the session before.
    EXPECT_GT(explore("h><<hr", depth - 1), 200U);
}

} // namespace
} // namespace corvane
