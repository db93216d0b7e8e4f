#pragma once

#include "kolib/KODevice.h"

namespace corvane {

/// Shows only one of the devices, for a person who has plugged in several. The others must outlive
/// it.
class PickedDevice final : public KODevice {
  public:
    PickedDevice(KODevice& devices, int index) : devices_(devices), index_(index) {}

    void EnumerateDevices() override { devices_.EnumerateDevices(); }
    [[nodiscard]] int GetDeviceCount() const override {
        return index_ < devices_.GetDeviceCount() ? 1 : 0;
    }
    [[nodiscard]] DeviceInfo GetDeviceInfo(int) const override {
        return devices_.GetDeviceInfo(index_);
    }
    [[nodiscard]] bool EnumerationPending() const override { return devices_.EnumerationPending(); }
    void OpenDevice(int) override { devices_.OpenDevice(index_); }
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
    KODevice& devices_;
    int index_;
};

} // namespace corvane
