#pragma once

#include "support/TemporaryFolder.h"
#include "usb/Ft232.h"

#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace corvane::usb {

struct Request;

/// A USB of its own, with emulated chips on it, for programs that run with the shim. As the kernel
/// it claims, reaps and unplugs, has a serial driver for each chip, and tells of what comes and
/// goes. It runs in a thread; the operations here may be called from another. Programs find it
/// while it lives by the environment, which it sets.
class UsbBus {
  public:
    struct Chip {
        Memory memory;
        std::string product;
        Time writeTime{0};
        int port = 1;
        Time stringsAfter{0}; ///< Until the kernel has read them.
    };

    UsbBus();
    ~UsbBus();
    UsbBus(const UsbBus&) = delete;
    UsbBus& operator=(const UsbBus&) = delete;

    /// A link with a product behind it.
    Ft232& plugIn(const std::string& product, const std::string& serial = "KO1234567",
                  int port = 1);
    Ft232& plugIn(const Chip& chip);
    void plugInAgain(Ft232& chip);
    void unplug(Ft232& chip);
    void setRights(const Ft232& chip, bool given);
    /// Another program claims it, or lets it go again.
    void claimElsewhere(const Ft232& chip, bool claimed);

    /// Looks at a chip while nothing happens to it.
    template<class Look>
    auto with(Look look) {
        const std::lock_guard lock(mutex_);
        return look();
    }
    /// The kernel's serial driver has it.
    [[nodiscard]] bool hasTty(const Ft232& chip);
    /// Programs that have it open.
    [[nodiscard]] int users(const Ft232& chip);
    [[nodiscard]] int opened() const { return opened_; } ///< So often in all.

  private:
    struct Device;
    struct Client;

    void loop();
    void accept();
    void serve(Client& client);
    void answer(Client& client, const Request& request, ByteView data);
    int open(Client& client, int number);
    int submit(Client& client, const Request& request, ByteView data);
    int claim(Client& client, bool fromDriver);
    void giveUp(Client& client);
    void advance();
    void show(Device& device);
    void showStrings(Device& device) const;
    void hide(Device& device);
    void tell(const Device& device, const std::string& action);
    Device& of(const Ft232& chip);
    [[nodiscard]] Time now() const;
    void wake() const;

    TemporaryFolder folder_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
    std::vector<std::unique_ptr<Device>> devices_;
    std::vector<std::unique_ptr<Client>> clients_;
    int lastNumber_ = 1;
    int listener_ = -1;
    int wake_ = -1;
    std::atomic<int> opened_ = 0;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace corvane::usb
