#include "pwm/QuillonControl.h"

#include "base/Numbers.h"
#include "base/Raised.h"
#include "pwm/QuillonTransfer.h"

namespace corvane {

namespace {

constexpr const char* ConfigureItem = "Configure &Controller...";

} // namespace

QuillonControl::QuillonControl(const Workplace& place) : place_(place) {
    place.link.setMaintainConnection(false);
    options.Initialize(messenger_);
    options.Add(ConfigureItem);
    on_(messenger_.MessageReceived,
        [this](std::string_view message, const void*, const MessageValue& value) {
            if (message == "MenuItemSelected" && value == MessageValue(std::string(ConfigureItem)))
                configure();
        });
    for (std::size_t index = 0; index < SlotCount; ++index) {
        slots_[index] = std::make_unique<QuillonSlot>(
            static_cast<int>(index),
            History::Surroundings{place.dialogs, place.pointer, place.files, place.journals});
        connect(*slots_[index]);
        refresh(*slots_[index]);
    }
}

void QuillonControl::connect(QuillonSlot& slot) {
    slot.DownloadButton.setToolTipText("Fetch this program from the product on the link");
    slot.UploadButton.setToolTipText("Put this program into the product on the link");
    slot.OpenButton.setToolTipText("Load a file into this program");
    slot.SaveButton.setToolTipText("Save this program as a file");
    slot.ProgramInfo.setToolTipText("How long the program lasts, at 50 blocks a second");
    History& history = slot.program.HistoryObject();
    on_(history.SaveStateChanged, [&slot] { refresh(slot); });
    const auto index = static_cast<std::size_t>(slot.index);
    jobs_.add(slot.DownloadButton, [this, index] { Download(index); });
    jobs_.add(slot.UploadButton, [this, index] { Upload(index); });
    on_(slot.OpenButton.Click, [&slot, &history] {
        if (history.OpenHistory({}))
            refresh(slot);
    });
    on_(slot.SaveButton.Click, [&slot, &history] {
        if (history.SaveHistoryAs())
            refresh(slot);
    });
}

void QuillonControl::refresh(QuillonSlot& slot) {
    slot.ProgramFrame.setCaption(
        slot.program.HistoryObject().GetCaption("Program " + std::to_string(slot.index + 1), true));
    slot.ProgramInfo.setCaption(WriteFixed(slot.program.seconds(), 2) + " seconds");
}

void QuillonControl::showProgress(QuillonSlot& slot, int position, int total) {
    const bool under = position != 0 && position != total && total != 0;
    const int percent = under ? static_cast<int>(100.0 * position / total + 0.5) : 0;
    slot.ProgramProgress.setCaption(under ? std::to_string(percent) + "%" : "");
}

std::vector<History*> QuillonControl::Histories() {
    std::vector<History*> all;
    for (const auto& slot : slots_)
        all.push_back(&slot->program.HistoryObject());
    return all;
}

template<class Job>
JobOutcome QuillonControl::exchange(QuillonSlot& slot, const char* done, Job job) {
    if (running_)
        return AnotherJobRuns();
    const Raised running(running_);
    QuillonTransfer transfer(place_);
    if (transfer.Connect()) {
        const Connection onProgress = transfer.Progress.connect(
            [&slot](int position, int total) { showProgress(slot, position, total); });
        job(transfer);
        showProgress(slot, 0, 0);
    }
    JobOutcome outcome = transfer.outcome();
    if (outcome.done())
        outcome.text = done;
    return outcome;
}

JobOutcome QuillonControl::Download(std::size_t index) {
    QuillonSlot& from = slot(index);
    return exchange(from, "Downloaded.", [&from](QuillonTransfer& transfer) {
        History& history = from.program.HistoryObject();
        // What is there may stay; the blocks that come then stand behind it.
        static_cast<void>(history.NewHistory());
        const Connection onBlock = transfer.BlockReceived.connect(
            [&from](std::uint8_t value) { static_cast<void>(from.program.append(value)); });
        if (!transfer.Download(from.index))
            static_cast<void>(history.NewHistory()); // nothing but zeros is no program
    });
}

JobOutcome QuillonControl::Upload(std::size_t index) {
    QuillonSlot& to = slot(index);
    return exchange(to, "Uploaded.", [&to](QuillonTransfer& transfer) {
        static_cast<void>(transfer.Upload(to.index, to.program.blocks())); // tells it
    });
}

void QuillonControl::configure() {
    const JobScope job(place_.pointer);
    if (running_)
        return;
    std::optional<std::uint8_t> receiverNumber;
    {
        const Raised running(running_);
        QuillonTransfer transfer(place_);
        if (transfer.Connect())
            receiverNumber = transfer.ReadOptions();
    }
    if (!receiverNumber)
        return;
    if (configuration_ != nullptr)
        configuration_->Close(); // that of an earlier reading
    configuration_ = std::make_unique<QuillonControllerConfiguration>();
    configuration_->Initialize(*this, *receiverNumber);
    ConfigurationShown.raise(*configuration_);
}

bool QuillonControl::WriteOptions(std::uint8_t receiverNumber) {
    const JobScope job(place_.pointer);
    if (running_)
        return false;
    const Raised running(running_);
    QuillonTransfer transfer(place_);
    return transfer.Connect() && transfer.WriteOptions(receiverNumber);
}

} // namespace corvane
