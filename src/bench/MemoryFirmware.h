#pragma once

#include "bench/Eeprom.h"

namespace corvane::bench {

/// A product whose EEPROM can be read and written, and that is nothing else.
class MemoryFirmware : public Firmware {
  public:
    MemoryFirmware(Identity identity, std::size_t size, Time writeTime,
                   EepromService::Fault fault = EepromService::Fault::None)
        : identity_(identity), eeprom_(size), service_(eeprom_, writeTime, fault) {}

    [[nodiscard]] bool keepIn(const std::filesystem::path& file) { return eeprom_.keepIn(file); }

    [[nodiscard]] Identity identity() const override { return identity_; }
    void powerOn(Time) override { service_.powerOff(); }
    void sessionBegins() override { service_.answerNobody(); }
    void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) override {
        static_cast<void>(service_.packet(channel, data, now, reply));
    }
    void tick(Time now, Reply& reply) override { service_.tick(now, reply); }
    [[nodiscard]] std::optional<Time> nextTick() const override { return service_.nextTick(); }

  protected:
    [[nodiscard]] const Eeprom& memory() const { return eeprom_; }

  private:
    Identity identity_;
    Eeprom eeprom_;
    EepromService service_;
};

} // namespace corvane::bench
