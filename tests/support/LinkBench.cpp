#include "support/LinkBench.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace corvane {

namespace {

/// The computer's end of an opened virtual link.
class BenchPort final : public LinkPort {
  public:
    BenchPort(LinkBench::Plugged& plugged, ManualClock& clock, const bool& killed)
        : plugged_(plugged), clock_(clock), killed_(killed) {
        plugged_.inUse = true;
    }
    ~BenchPort() override {
        if (!killed_)
            plugged_.inUse = false;
    }

    std::size_t read(std::span<std::uint8_t> target) override {
        if (!alive())
            return 0;
        take();
        auto& waiting = plugged_.fromProduct;
        const std::size_t count = std::min(target.size(), waiting.size());
        std::copy_n(waiting.begin(), count, target.begin());
        waiting.erase(waiting.begin(), waiting.begin() + static_cast<std::ptrdiff_t>(count));
        return count;
    }
    void take() {
        const bench::Bytes arrived = plugged_.link->run(clock_.sinceStart());
        auto& waiting = plugged_.fromProduct;
        waiting.insert(waiting.end(), arrived.begin(), arrived.end());
    }
    void write(wire::ByteView bytes) override {
        if (alive())
            plugged_.link->fromComputer(bytes, clock_.sinceStart());
    }
    void service() override {}
    [[nodiscard]] bool alive() const override {
        return !killed_ && plugged_.in && !plugged_.link->unplugged();
    }
    void powerCycle() override {
        if (alive())
            plugged_.link->powerCycle();
    }
    bool writeStrings(const DeviceInfo& strings) override {
        if (!plugged_.in)
            return false;
        plugged_.link->program({strings.Description, strings.Manufacturer, strings.ManufacturerID,
                                strings.SerialNumber});
        return true;
    }
    void waitForData(int milliseconds) override {
        for (int i = 0; i < milliseconds && plugged_.fromProduct.empty(); ++i) {
            clock_.advance(1);
            if (alive())
                take();
        }
    }

  private:
    LinkBench::Plugged& plugged_;
    ManualClock& clock_;
    const bool& killed_;
};

} // namespace

class LinkBench::Source final : public LinkSource {
  public:
    explicit Source(LinkBench& bench) : bench_(bench) {}

    bool refresh() override {
        if (!std::exchange(bench_.changed_, false))
            return false;
        list_.clear();
        in_.clear();
        for (const auto& plugged : bench_.plugged_) {
            if (!plugged->in)
                continue;
            const bench::LinkStrings& shown = plugged->link->strings();
            if (plugged->accessible)
                list_.push_back({{shown.description, shown.manufacturer, shown.manufacturerId,
                                  shown.serialNumber}});
            else
                list_.push_back({{}, false}); // can't be asked for its strings either
            in_.push_back(plugged.get());
        }
        return true;
    }
    [[nodiscard]] bool pending() const override { return false; }
    [[nodiscard]] const std::vector<Device>& devices() const override { return list_; }
    OpenOutcome open(std::size_t index) override {
        Plugged& plugged = *in_.at(index);
        ++plugged.openings;
        if (plugged.claimed)
            return {nullptr, "The link device is busy.", {LinkHindrance::Kind::Busy, {}}};
        return {std::make_unique<BenchPort>(plugged, bench_.clock, bench_.killed_), {}, {}};
    }

  private:
    LinkBench& bench_;
    std::vector<Device> list_;
    std::vector<Plugged*> in_;
};

LinkBench::LinkBench(RunModes runModes, std::string_view vendor, std::uint64_t startTime)
    : modes(runModes),
      clock(startTime),
      debug(modes),
      vendor_(vendor),
      onLine_(
          debugger.WritingLine.connect([this](const std::string& line) { log_.push_back(line); })),
      pause_(clock),
      packets(clock, {}),
      device(sourcesOf(*this), packets, debug, clock),
      products(vendor, debug),
      link({device, packets, products, modes, clock, debug, pause_}) {
    debug.SetDebugger(&debugger);
}

LinkBench::LinkBench(LinkBench& killed)
    : LinkBench(killed.modes, killed.vendor_, killed.killedAt_) {
    plugged_ = killed.plugged_;
    for (const auto& plugged : plugged_)
        plugged->inUse = false;
}

void LinkBench::kill() {
    if (std::exchange(killed_, true))
        return;
    killedAt_ = static_cast<std::uint64_t>(clock.sinceStart() / std::chrono::milliseconds(1));
    for (const auto& plugged : plugged_)
        plugged->fromProduct.clear(); // it had them already
}

std::vector<std::unique_ptr<LinkSource>> LinkBench::sourcesOf(LinkBench& bench) {
    std::vector<std::unique_ptr<LinkSource>> sources;
    sources.push_back(std::make_unique<Source>(bench));
    return sources;
}

LinkBench::Plugged& LinkBench::plugIn(std::string_view product, const std::string& faults,
                                      unsigned seed, const bench::Setup& setup) {
    std::string error;
    auto made = bench::makeBench(product, setup, error);
    if (!made)
        throw std::runtime_error(error);
    return plugIn(std::move(*made), faults, seed);
}

LinkBench::Plugged& LinkBench::plugIn(bench::Bench made, const std::string& faults, unsigned seed) {
    auto& plugged = *plugged_.emplace_back(std::make_shared<Plugged>());
    bench::VirtualLink::Log log;
    if (noteFrames)
        log = [&plugged](const std::string& frame) { plugged.frames.push_back(frame); };
    plugged.link = std::make_unique<bench::VirtualLink>(
        std::move(made), bench::parseFaults(faults).value(), 0, seed, std::move(log));
    plugged.link->plugIn(clock.sinceStart());
    changed_ = true;
    return plugged;
}

void LinkBench::unplug(Plugged& plugged) {
    plugged.in = false;
    changed_ = true;
}

void LinkBench::run(int milliseconds) {
    for (int elapsed = 0; elapsed < milliseconds; elapsed += 50) {
        link.Update();
        clock.advance(50);
    }
}

bool LinkBench::logged(std::string_view line) const {
    return timesLogged(line) > 0;
}

int LinkBench::timesLogged(std::string_view line) const {
    return static_cast<int>(std::count(log_.begin(), log_.end(), line));
}

bench::Bench scripted(ScriptedFirmware::Answer answer, bench::Identity identity) {
    return {{"Corvane", "Ortaline Works", "KO", "KO0000001"},
            std::make_unique<ScriptedFirmware>(std::move(answer), identity)};
}

} // namespace corvane
