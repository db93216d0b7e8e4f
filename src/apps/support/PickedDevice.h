#pragma once

#include "kolib/KODevice.h"

#include <optional>

namespace corvane {

/// Which of several links a person means: nothing is any of them.
struct DevicePick {
    std::optional<int> index;          ///< As the links are listed.
    std::optional<std::string> serial; ///< Its serial number.

    [[nodiscard]] bool any() const { return !index && !serial; }
    [[nodiscard]] bool fits(const KODevice& devices, int at) const {
        return (!index || *index == at) &&
               (!serial || *serial == devices.GetDeviceInfo(at).SerialNumber);
    }
};

/// Shows only one of the devices, for a person who has plugged in several. The others must outlive
/// it.
class PickedDevice final : public KODevice {
  public:
    PickedDevice(KODevice& devices, DevicePick pick) : devices_(devices), pick_(std::move(pick)) {}

    void EnumerateDevices() override { devices_.EnumerateDevices(); }
    [[nodiscard]] int GetDeviceCount() const override { return picked() < 0 ? 0 : 1; }
    [[nodiscard]] DeviceInfo GetDeviceInfo(int) const override {
        return devices_.GetDeviceInfo(picked());
    }
    [[nodiscard]] bool EnumerationPending() const override { return devices_.EnumerationPending(); }
    void OpenDevice(int) override { devices_.OpenDevice(picked()); }
    [[nodiscard]] LinkHindrance Hindrance() const override { return devices_.Hindrance(); }
    void CloseDevice() override { devices_.CloseDevice(); }
    [[nodiscard]] int GetDeviceState2() override { return devices_.GetDeviceState2(); }
    void ResetDevice() override { devices_.ResetDevice(); }
    [[nodiscard]] bool CheckForDriver() override { return devices_.CheckForDriver(); }
    [[nodiscard]] bool ProgramDevice(const DeviceInfo& strings) override {
        return devices_.ProgramDevice(strings);
    }
    [[nodiscard]] int Descriptor() const override { return devices_.Descriptor(); }
    void WaitForData(int milliseconds) override { devices_.WaitForData(milliseconds); }

  private:
    /// Index among all of them, or -1.
    [[nodiscard]] int picked() const {
        for (int at = 0; at < devices_.GetDeviceCount(); ++at)
            if (pick_.fits(devices_, at))
                return at;
        return -1;
    }

    KODevice& devices_;
    DevicePick pick_;
};

} // namespace corvane
