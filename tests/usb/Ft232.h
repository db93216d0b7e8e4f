#pragma once

#include "bench/VirtualLink.h"

#include <array>
#include <deque>
#include <map>
#include <string>

namespace corvane::usb {

using bench::Bytes;
using bench::ByteView;
using bench::Time;

/// What the EEPROM of a chip holds, with the chip's own checksum.
using Memory = std::array<std::uint8_t, 128>;
[[nodiscard]] Memory stockMemory(const std::string& manufacturer, const std::string& product,
                                 const std::string& serial);
[[nodiscard]] Memory emptyMemory();
[[nodiscard]] bool isSound(const Memory& memory);

/// A transfer that has ended. The status is that of the kernel: 0 or a negative errno.
struct Ended {
    std::uint64_t id = 0;
    int status = 0;
    std::size_t length = 0; ///< Bytes that passed.
    Bytes data;             ///< Those that came in.
};

/// An FT232R as a thing of requests and time: descriptors, vendor requests, EEPROM, the two FIFOs,
/// the latency timer with its status packets, and the pace of the wire. Behind it a product of the
/// bench, which has power while RTS is on and hears only 250 000 baud, 8N1. It is strict: what no
/// driver should do is kept in `violations`.
class Ft232 {
  public:
    /// What can go wrong with it.
    struct Faults {
        std::map<int, int> stallRequest{}; ///< Vendor request: so often.
        int stallIn = 0;                   ///< So many bulk transfers.
        int stallOut = 0;
        Time outDelay{0};           ///< Before it takes the next bytes, once.
        bool forgetsMemory = false; ///< Takes the words of its EEPROM and does not keep them.
        int unplugAfter = 0;        ///< So many transfers; 0 for never.
    };
    struct PowerChange {
        Time at{0};
        bool on = false;
        std::string why;
    };

    /// Nothing behind it without a product.
    Ft232(const Memory& memory, std::string_view product, Time writeTime);

    void plugIn(Time now);
    void unplug();
    /// It should be pulled out now.
    [[nodiscard]] bool unplugDue() const {
        return faults.unplugAfter > 0 && transfers >= faults.unplugAfter;
    }
    /// The kernel's serial driver takes it.
    void driverBound() { latency_ = 16; }

    /// A control request: the eight setup bytes, and the data that goes out.
    [[nodiscard]] Ended control(std::uint64_t id, ByteView setup, Time now);
    void submitOut(std::uint64_t id, ByteView data, Time now);
    void submitIn(std::uint64_t id, std::size_t length);
    /// False if it is not under way.
    bool cancel(std::uint64_t id);
    /// Lets everything happen that is due, and gives the transfers that have ended.
    [[nodiscard]] std::vector<Ended> run(Time now);
    [[nodiscard]] Time nextEvent(Time now) const;

    /// Device descriptor and configuration, as sysfs has them.
    [[nodiscard]] Bytes descriptors() const;
    /// Manufacturer, product, serial number, as shown since it was plugged in.
    [[nodiscard]] const std::array<std::string, 3>& strings() const { return shown_; }

    Faults faults;
    Memory memory;
    std::vector<std::string> violations;
    std::vector<PowerChange> power;
    int transfers = 0;
    int vendorRequests = 0;
    int memoryReads = 0; ///< Whole ones.
    std::size_t overruns = 0;

    [[nodiscard]] bool hasPower() const { return rts_; }
    /// How long the product was without power each time that it lost it, but for unplugging.
    [[nodiscard]] std::vector<Time> powerLosses() const;

  private:
    struct In {
        std::uint64_t id;
        std::size_t length;
        Bytes data;
    };
    struct Out {
        std::uint64_t id;
        std::size_t length;
        Time due;
    };
    struct Piece {
        Time due;
        Bytes bytes;
    };

    [[nodiscard]] Ended descriptor(std::uint64_t id, int kind, int index, std::size_t length) const;
    [[nodiscard]] bool vendorOut(int request, int value, int index, Time now);
    [[nodiscard]] bool setBaud(int value, int index);
    [[nodiscard]] bool writeWord(int index, int value);
    void setRts(bool on, const std::string& why, Time now);
    void violation(const std::string& text) { violations.push_back(text); }
    void toProduct(Time now);
    void fromProduct(Time now);
    void happen(Time now, std::vector<Ended>& ended);
    void fillPacket(In& transfer, Time now);
    void endIns(Time now, std::vector<Ended>& ended);

    std::unique_ptr<bench::VirtualLink> link_;
    std::array<std::string, 3> shown_;
    bool rts_ = false;
    bool baudRight_ = false;
    bool formatRight_ = false;
    int latency_ = 16; // ms
    bool statusPolled_ = false;
    int nextWord_ = 0;
    Time ranUntil_{0};
    Time lastIn_{0};
    Time sendingUntil_{0};
    Time comingUntil_{0};
    std::deque<Out> outs_;
    std::deque<In> ins_;
    std::deque<Piece> sending_;                        // to the product
    std::deque<std::pair<Time, std::uint8_t>> coming_; // on the wire from the product
    std::deque<std::uint8_t> received_;                // in the chip
    bool overrun_ = false;
};

} // namespace corvane::usb
