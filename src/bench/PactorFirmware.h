#pragma once

#include "bench/MemoryFirmware.h"

namespace corvane::bench {

/// A relay product: switches a relay and an indicator by the stick, as the seven bytes at the start
/// of its memory say.
class PactorFirmware final : public MemoryFirmware, public Outputs {
  public:
    static constexpr std::size_t MemorySize = 128;

    PactorFirmware(Identity identity, Time writeTime)
        : MemoryFirmware(identity, MemorySize, writeTime) {}

    void powerOn(Time now) override;
    void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) override;
    void tick(Time now, Reply& reply) override;
    [[nodiscard]] Outputs* outputs() override { return this; }

    void setStick(int percent, Time now) override;
    [[nodiscard]] int stick() const override { return stick_; }
    void setSignal(bool present, Time now) override;
    [[nodiscard]] bool signal() const override { return signal_; }
    [[nodiscard]] std::vector<Output> at(Time now) const override;

  private:
    enum class Side { None, Above, Below };

    void compare();
    [[nodiscard]] bool isOn(std::size_t address) const { return memory().at(address) == 1; }

    int stick_ = 50;
    bool signal_ = true;
    Side side_ = Side::None;
};

} // namespace corvane::bench
