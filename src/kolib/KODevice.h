#pragma once

#include <string>

namespace corvane {

/// The strings by which a link device is known.
struct DeviceInfo {
    std::string Description;
    std::string Manufacturer;
    std::string ManufacturerID;
    std::string SerialNumber;

    bool operator==(const DeviceInfo&) const = default;
};

/// Why a link device is not open although it is plugged in.
struct LinkHindrance {
    enum class Kind {
        None,
        Busy,      ///< Another program holds it.
        Forbidden, ///< The system gives this user no rights to it.
        Broken,    ///< It does not answer as it should.
        Stranger   ///< Its strings are not those of a link.
    };

    Kind kind = Kind::None;
    /// Who holds a busy one, such as "minicom (process 1234)"; empty if the system does not tell.
    /// What a stranger calls itself.
    std::string holder;

    bool operator==(const LinkHindrance&) const = default;
};

/// Access to the link devices that are plugged in, of which at most one is open.
class KODevice {
  public:
    virtual ~KODevice() = default;

    /// Brings the list of devices up to date. Cheap enough for every tick: it looks again only
    /// where the system has told of a change. A change shows once every device has told its
    /// strings, after a second at most; the list is empty until then.
    virtual void EnumerateDevices() = 0;
    [[nodiscard]] virtual int GetDeviceCount() const = 0;
    /// `index` from 0, as of the last `EnumerateDevices`.
    [[nodiscard]] virtual DeviceInfo GetDeviceInfo(int index) const = 0;
    /// Whether a device has appeared that has not told its strings yet.
    [[nodiscard]] virtual bool EnumerationPending() const = 0;

    /// A device that can't be opened is told in the log and counts as gone. It is tried again once
    /// a second at most; calls in between do nothing.
    virtual void OpenDevice(int index) = 0;
    /// Why the last `OpenDevice` left no device open.
    [[nodiscard]] virtual LinkHindrance Hindrance() const { return {}; }
    virtual void CloseDevice() = 0;
    /// -1 while the open device lives, 0 if it is gone or none is open. Also moves what has
    /// arrived and what is to be sent, so it is called at each step.
    [[nodiscard]] virtual int GetDeviceState2() = 0;
    /// Power-cycles what hangs on the link.
    virtual void ResetDevice() = 0;
    /// False if devices are plugged in and the system lets none of them be used.
    [[nodiscard]] virtual bool CheckForDriver() = 0;
    /// Writes the strings into the open link's own EEPROM; they show after the next plugging.
    [[nodiscard]] virtual bool ProgramDevice(const DeviceInfo& strings) = 0;

    /// Readable when the open device has something to read; -1 if it can't tell in this way.
    [[nodiscard]] virtual int Descriptor() const { return -1; }
    /// Waits until the open device has something to read, but no longer than this.
    virtual void WaitForData(int milliseconds) = 0;
};

} // namespace corvane
