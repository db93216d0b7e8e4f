#pragma once

#include "bench/Eeprom.h"
#include "bench/LightPlayer.h"

namespace corvane::bench {

/// A light controller: keeps a program in its memory, and plays it.
class LumoraFirmware : public Firmware {
  public:
    explicit LumoraFirmware(Identity identity, std::size_t memorySize)
        : identity_(identity), memory_(memorySize) {}

    [[nodiscard]] bool keepIn(const std::filesystem::path& file) { return memory_.keepIn(file); }
    [[nodiscard]] Identity identity() const override { return identity_; }
    void powerOn(Time now) override { player_.start(program(), now); }
    [[nodiscard]] Outputs* outputs() override { return &player_; }

  protected:
    [[nodiscard]] virtual LightProgram program() const = 0;
    [[nodiscard]] Eeprom& memory() { return memory_; }
    [[nodiscard]] const Eeprom& memory() const { return memory_; }
    [[nodiscard]] Bytes bytes(std::size_t offset, std::size_t length) const;

  private:
    Identity identity_;
    Eeprom memory_;
    LightPlayer player_;
};

/// The older generation, which takes typed transfers.
class OlderLumora final : public LumoraFirmware {
  public:
    explicit OlderLumora(Identity identity) : LumoraFirmware(identity, TablesLength) {}

    void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) override;
    void tick(Time, Reply&) override {}
    [[nodiscard]] std::optional<Time> nextTick() const override { return std::nullopt; }

  protected:
    [[nodiscard]] LightProgram program() const override;

  private:
    [[nodiscard]] bool store(std::uint8_t kind, ByteView data);
    void dump(Reply& reply) const;
};

/// The newer generation, whose EEPROM holds an image.
class NewerLumora final : public LumoraFirmware {
  public:
    NewerLumora(Identity identity, Time writeTime)
        : LumoraFirmware(identity, EepromSize), service_(memory(), writeTime) {}

    void powerOn(Time now) override;
    void sessionBegins() override { service_.answerNobody(); }
    void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) override;
    void tick(Time now, Reply& reply) override { service_.tick(now, reply); }
    [[nodiscard]] std::optional<Time> nextTick() const override { return service_.nextTick(); }

  protected:
    [[nodiscard]] LightProgram program() const override;

  private:
    static constexpr std::size_t EepromSize = 256;

    EepromService service_;
};

} // namespace corvane::bench
