#pragma once

#include "bench/VirtualLink.h"
#include "kolib/devices/LinkDevices.h"
#include "link/KOCommLink.h"
#include "support/ManualClock.h"

#include <memory>
#include <string>
#include <vector>

namespace corvane {

/// A whole link on a manual clock: the real transport, the real virtual products, joined byte by
/// byte without a socket. Time moves only by `run` and in the pauses of blocking operations.
class LinkBench {
  public:
    /// A virtual link that is plugged in, and which tests may pull out.
    struct Plugged {
        std::unique_ptr<bench::VirtualLink> link;
        int openings = 0; ///< Tries, whether they came to something or not.
        bool in = true;
        bool inUse = false;
        bool accessible = true;          ///< The system lets it be opened.
        bool claimed = false;            ///< By another program.
        bench::Bytes fromProduct;        // taken by the computer's end when it next reads
        std::vector<std::string> frames; ///< All that passed in words, if they are noted.
    };

    explicit LinkBench(RunModes runModes = {.DebugMode = true}, std::string_view vendor = "KO",
                       std::uint64_t startTime = 1000);
    /// The next start of a program after one that was killed: what was plugged in is so still, and
    /// what was under way on the wires as well.
    explicit LinkBench(LinkBench& killed);

    /// The program is no more: nothing that it does comes through to the wires.
    void kill();

    Plugged& plugIn(std::string_view product, const std::string& faults = {}, unsigned seed = 1,
                    const bench::Setup& setup = {});
    Plugged& plugIn(bench::Bench bench, const std::string& faults = {}, unsigned seed = 1);
    void unplug(Plugged& plugged);

    /// The main loop's ticks for this long.
    void run(int milliseconds);

    [[nodiscard]] bool logged(std::string_view line) const;
    [[nodiscard]] int timesLogged(std::string_view line) const;
    std::vector<std::string> takeLog() { return std::exchange(log_, {}); }

    bool noteFrames = false; ///< Of what is plugged in from now on.
    RunModes modes;
    ManualClock clock;
    KODebugger debugger;
    KODebug debug;

  private:
    class Source;

    static std::vector<std::unique_ptr<LinkSource>> sourcesOf(LinkBench& bench);

    std::vector<std::shared_ptr<Plugged>> plugged_;
    std::string vendor_;
    bool killed_ = false;
    std::uint64_t killedAt_ = 0; // ms
    bool changed_ = true;
    std::vector<std::string> log_;
    Connection onLine_;
    StepPause pause_;

  public:
    wire::HostSession packets;
    LinkDevices device;
    KOProductList products;
    KOCommLink link;
};

/// Firmware that tests write in place: answers packets with a function.
class ScriptedFirmware final : public bench::Firmware {
  public:
    using Answer = std::function<void(std::uint8_t channel, bench::ByteView data, bench::Reply&)>;

    explicit ScriptedFirmware(Answer answer, bench::Identity identity = {1, 2, 3, 7})
        : answer_(std::move(answer)), identity_(identity) {}

    [[nodiscard]] bench::Identity identity() const override { return identity_; }
    void powerOn(bench::Time) override {}
    void packet(std::uint8_t channel, bench::ByteView data, bench::Time,
                bench::Reply& reply) override {
        answer_(channel, data, reply);
    }
    void tick(bench::Time, bench::Reply&) override {}
    [[nodiscard]] std::optional<bench::Time> nextTick() const override { return std::nullopt; }

  private:
    Answer answer_;
    bench::Identity identity_;
};

[[nodiscard]] bench::Bench scripted(ScriptedFirmware::Answer answer,
                                    bench::Identity identity = {1, 2, 3, 7});

} // namespace corvane
