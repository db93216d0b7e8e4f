#pragma once

#include "controls/JobButtons.h"
#include "controls/MenuList.h"
#include "link/JobOutcome.h"
#include "link/ProductControl.h"
#include "link/Workplace.h"
#include "pwm/QuillonControllerConfiguration.h"
#include "pwm/QuillonProgram.h"

#include <array>

namespace corvane {

/// One of the two programs of the PWM product, and what can be done with it.
struct QuillonSlot {
    QuillonSlot(int slotIndex, const History::Surroundings& surroundings)
        : index(slotIndex), program(surroundings) {}

    const int index; ///< 0 or 1.
    QuillonProgram program;
    Label ProgramFrame; ///< The slot's caption.
    Button DownloadButton{"Download from Quillon"};
    Button UploadButton{"Upload to Quillon"};
    Button OpenButton{"Load from Disk"};
    Button SaveButton{"Save to Disk"};
    Label ProgramInfo;
    Label ProgramProgress;
};

/// The editor of the PWM product: moves two programs between the product, its slots, and files.
class QuillonControl final : public ProductControl {
  public:
    static constexpr std::size_t SlotCount = 2;

    explicit QuillonControl(const Workplace& place);

    void UpdateReadyState(bool) override {}
    [[nodiscard]] std::vector<History*> Histories() override;
    [[nodiscard]] MenuList* OptionsMenu() override { return &options; }
    [[nodiscard]] std::optional<TwipSize> GetSuggestedClientSize() const override {
        return TwipSize{4455, 4215};
    }

    /// The dialog has opened; it shows beside the main window until it is closed.
    Event<QuillonControllerConfiguration&> ConfigurationShown;

    /// Fetches a slot's program from the product. What the slot's buttons do, as the next one.
    JobOutcome Download(std::size_t index);
    /// Puts a slot's program into the product.
    JobOutcome Upload(std::size_t index);
    /// Puts the receiver's number, counted from 0, into the product. A failure has been told.
    [[nodiscard]] bool WriteOptions(std::uint8_t receiverNumber);

    [[nodiscard]] QuillonSlot& slot(std::size_t index) { return *slots_.at(index); }
    MenuList options;

  private:
    void connect(QuillonSlot& slot);
    static void refresh(QuillonSlot& slot);
    static void showProgress(QuillonSlot& slot, int position, int total);
    template<class Job>
    JobOutcome exchange(QuillonSlot& slot, const char* done, Job job);
    void configure();

    Workplace place_;
    JobButtons jobs_{place_.pointer};
    std::array<std::unique_ptr<QuillonSlot>, SlotCount> slots_;
    Messenger messenger_;
    bool running_ = false; // a transfer
    std::unique_ptr<QuillonControllerConfiguration> configuration_;
    Connections on_;
};

} // namespace corvane
