#pragma once

#include "bench/Firmware.h"

#include <filesystem>
#include <fstream>

namespace corvane::bench {

/// A product's EEPROM, kept in a file if one is given. Addresses past its end come round again, as
/// the unused address lines of a real part do. New cells hold 255.
class Eeprom {
  public:
    explicit Eeprom(std::size_t size) : cells_(size, 0xFF) {}

    /// Keeps the cells in this file from now on, and takes over what it holds already. False if
    /// it can't be read or written.
    [[nodiscard]] bool keepIn(const std::filesystem::path& file);

    [[nodiscard]] std::size_t size() const { return cells_.size(); }
    [[nodiscard]] std::uint8_t at(std::size_t address) const {
        return cells_[address % cells_.size()];
    }
    void write(std::size_t address, std::uint8_t value);
    /// Hands what was written to the file.
    void save() { file_.flush(); }

  private:
    Bytes cells_;
    std::fstream file_;
};

/// Answers the packets that read and write an EEPROM, one after another: a request that comes
/// while a write takes its time waits.
class EepromService {
  public:
    static constexpr std::uint8_t ReadChannel = 208;
    static constexpr std::uint8_t WriteChannel = 209;

    /// What it may do wrong when it answers a read.
    enum class Fault { None, TooShort, TooLong, WrongKind };

    /// Reads "too-short", "too-long" or "wrong-kind"; empty text for none. Nothing for anything
    /// else.
    [[nodiscard]] static std::optional<Fault> parse(std::string_view text);

    EepromService(Eeprom& eeprom, Time writeTimePerByte, Fault fault = Fault::None)
        : eeprom_(eeprom), writeTime_(writeTimePerByte), fault_(fault) {}

    /// True if the packet is one of these requests.
    [[nodiscard]] bool packet(std::uint8_t channel, ByteView data, Time now, Reply& reply);
    void tick(Time now, Reply& reply);
    [[nodiscard]] std::optional<Time> nextTick() const;
    /// Drops all requests; what a write has done so far stays.
    void powerOff() { requests_.clear(); }
    /// Goes on with the writes, and answers none of the requests so far.
    void answerNobody();

  private:
    struct Request {
        bool write = false;
        std::size_t address = 0;
        Bytes data;              // to write
        std::size_t count = 0;   // to read, or written so far
        std::optional<Time> due; // of the next byte written
        bool answered = true;
    };

    bool work(Request& request, Time now, Reply& reply);
    void answerRead(const Request& request, Reply& reply) const;

    Eeprom& eeprom_;
    Time writeTime_;
    Fault fault_;
    std::deque<Request> requests_;
};

} // namespace corvane::bench
