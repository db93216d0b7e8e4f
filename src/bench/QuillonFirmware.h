#pragma once

#include "bench/Eeprom.h"

namespace corvane::bench {

/// A PWM product: keeps two programs of up to 65535 blocks and the number of its receiver.
class QuillonFirmware final : public Firmware {
  public:
    /// What it may do wrong.
    enum class Fault {
        None,
        WrongSlot,   ///< Names the other slot in what it sends.
        WrongOffset, ///< Names another offset.
        TooShort,    ///< Leaves out the last byte of what it sends.
        TooLong,     ///< Sends a byte more.
        Silent,      ///< Does not answer one kind of request.
    };
    struct Misbehaviour {
        Fault fault = Fault::None;
        std::uint8_t silentChannel = 0; ///< The request that gets no answer.
    };

    /// Reads "wrong-slot", "wrong-offset", "too-short", "too-long", or "silent=CHANNEL" with a
    /// channel from 178 to 184; empty text for none. Nothing for anything else.
    [[nodiscard]] static std::optional<Misbehaviour> parse(std::string_view text);

    QuillonFirmware(Identity identity, Misbehaviour misbehaviour);

    [[nodiscard]] bool keepIn(const std::filesystem::path& file) { return memory_.keepIn(file); }
    [[nodiscard]] Identity identity() const override { return identity_; }
    void powerOn(Time) override {}
    void packet(std::uint8_t channel, ByteView data, Time now, Reply& reply) override;
    void tick(Time, Reply&) override {}
    [[nodiscard]] std::optional<Time> nextTick() const override { return std::nullopt; }

  private:
    [[nodiscard]] std::optional<Bytes> answer(std::uint8_t channel, ByteView data);
    [[nodiscard]] Bytes blocks(std::size_t slot, std::size_t offset, std::size_t count) const;
    void spoil(std::uint8_t channel, Bytes& answer) const;
    [[nodiscard]] std::size_t length(std::size_t slot) const;
    void setLength(std::size_t slot, std::size_t length);

    Identity identity_;
    Misbehaviour misbehaviour_;
    Eeprom memory_;
};

} // namespace corvane::bench
