#include "light/LumoraProgrammer.h"

#include "base/KOMath.h"

#include <cstdlib>

namespace corvane {

namespace {

constexpr int SetChannel = 148;
constexpr int SetReplyChannel = 20;
constexpr int ReplyLength = 3;
constexpr std::int32_t ReplyWithin = 750; // ms
constexpr int RetryBudget = 200;
constexpr int WrongReplyWeight = 1;
constexpr int SilenceWeight = 50;
constexpr int NewerBufferSize = 64; // bytes, of the newer controller

using Reason = JobOutcome::Reason;
constexpr const char* Failed = "Programming failed.";
constexpr const char* OnlyAPart = " The controller has only a part of the program until then.";
constexpr const char* Nonsense = "The controller gave an answer that does not fit. Program again.";
constexpr const char* NotWritten =
    "What is in the controller is not this program. Check its cable and its power, then program "
    "again.";

} // namespace

JobOutcome LumoraProgrammer::run() {
    BeginProgramming();
    while (!over_) {
        with_.link.Update();
        if (!over_)
            Update();
        if (!over_)
            with_.pause.pause();
    }
    return outcome_;
}

void LumoraProgrammer::BeginProgramming() {
    JobOutcome reached = ReachProduct(with_, ControlClass::Lumora, false);
    if (!reached.done()) {
        reached.text = "Unable to connect to the Lumora.";
        end(std::move(reached)); // it may have got hold of another product
        return ConnectionFailed.raise();
    }
    const Version controller = with_.link.Product().deviceType;
    const bool older = controller.Equals(Version(1, 1));
    if (!older && !controller.Equals(Version(1, 2))) {
        end({Reason::OtherProduct, "Unable to connect to the Lumora.",
             "The controller is of type " + controller.ToString() +
                 ", which this program can't program. Look for a newer version of the program."});
        return ConnectionFailed.raise();
    }
    Connected.raise();
    if (const int channel = LumoraEncoding::channelWithUnknownFunction(document_); channel != 0) {
        with_.pointer.set(false);
        with_.dialogs.ShowError("Channel " + std::to_string(channel) +
                                " has a segment with a function that the controller does not "
                                "know.\r\n\r\nChoose another function for it, then program again.");
        end({Reason::Unfit, Failed, {}, true});
        return ProgrammingFailed.raise();
    }
    if (older)
        programTransfers();
    else
        programImage();
}

// The older controller

void LumoraProgrammer::programTransfers() {
    LumoraTransferCompiler compiler(document_, with_.dialogs);
    const LumoraCompiled compiled = compiler.compile();
    if (endsHere(compiled))
        return;
    queue_.assign(compiler.transfers().begin(), compiler.transfers().end());
    transferTotal_ = static_cast<int>(queue_.size());
    retryCount_ = 0;
    ProgrammingStarted.raise(compiled.segments, LumoraDocument::BlockLimit);
    DebugPrint.raise("Starting...\r\n");
    SendNextTransfer();
}

bool LumoraProgrammer::endsHere(const LumoraCompiled& compiled) {
    if (compiled.outcome == LumoraCompiled::Outcome::Canceled)
        CancelProgramming();
    else if (compiled.outcome == LumoraCompiled::Outcome::TooLarge)
        FailForCodeSpace(compiled.segments);
    return compiled.outcome != LumoraCompiled::Outcome::Done;
}

void LumoraProgrammer::SendNextTransfer() {
    if (queue_.empty())
        return FinishProgramming();
    const LumoraTransfer& transfer = queue_.front();
    KOPacket packet = with_.link.makePacket();
    packet.setChannel(SetChannel);
    packet.buffer().Append(transfer.kind);
    packet.buffer().AppendBuffer(transfer.data);
    if (packet.Send())
        sentAt_ = with_.clock.now();
    else
        FailProgramming(NoReplyCure(with_.link));
}

void LumoraProgrammer::ProcessPacket(const KOPacket& packet) {
    if (packet.Channel() != SetReplyChannel || queue_.empty())
        return;
    const KOBuffer& reply = packet.buffer();
    if (reply.Length() < ReplyLength)
        return FailProgramming(Nonsense);
    const LumoraTransfer& transfer = queue_.front();
    if (reply.Data(1) != transfer.kind) {
        DebugPrint.raise("FAILURE! Wrong kind.\r\n");
        return FailProgramming(Nonsense);
    }
    if (reply.Data(3) != transfer.checksum()) {
        DebugPrint.raise("FAILURE! Invalid data: expected " + std::to_string(transfer.checksum()) +
                         ", not " + std::to_string(reply.Data(3)) + ".\r\n");
        return RetryTransfer(WrongReplyWeight, Nonsense);
    }
    if (reply.Data(2) == 0) {
        DebugPrint.raise("ERROR! Explicit failure to set.\r\n");
        return RetryTransfer(WrongReplyWeight, Nonsense);
    }
    retryCount_ = 0;
    queue_.pop_front();
    ProgressChanged.raise();
    SendNextTransfer();
}

void LumoraProgrammer::Update() {
    if (queue_.empty() || Elapsed(with_.clock.now(), sentAt_) <= ReplyWithin)
        return;
    DebugPrint.raise("ERROR! No response!\r\n");
    RetryTransfer(SilenceWeight, NoReplyCure(with_.link));
}

void LumoraProgrammer::RetryTransfer(int weight, const std::string& cure) {
    retryCount_ += weight;
    if (retryCount_ >= RetryBudget) {
        DebugPrint.raise("FAILURE! Too many retries. Giving up.\r\n");
        return FailProgramming(cure);
    }
    const LumoraTransfer& transfer = queue_.front();
    DebugPrint.raise("FAILURE! Retrying...");
    DebugPrint.raise("Kind " + std::to_string(transfer.kind) + " (");
    DebugPrint.raise(transfer.data.ToString());
    DebugPrint.raise(").\r\n");
    SendNextTransfer();
}

// The newer controller

void LumoraProgrammer::programImage() {
    LumoraImageCompiler compiler(document_);
    const LumoraCompiled compiled = compiler.compile();
    if (endsHere(compiled))
        return;
    EepWriter_ = std::make_unique<GenericEEPROMProgrammer>(with_);
    EepWriter_->setUCBufferSize(NewerBufferSize);
    onReading_ = EepWriter_->Reading.connect([this](int soFar, int total) {
        readPosition_ = soFar;
        readTotal_ = total;
        ProgressChanged.raise();
    });
    onWriting_ = EepWriter_->Writing.connect([this](int soFar, int total) {
        writePosition_ = soFar;
        writeTotal_ = total;
        ProgressChanged.raise();
    });
    ProgrammingStarted.raise(compiled.segments, LumoraDocument::BlockLimit);
    readTotal_ = writeTotal_ = compiler.image().Length();
    const bool done = EepWriter_->WriteEEPROM(0, compiler.image());
    over_ = true;
    outcome_ = done ? JobOutcome{Reason::Done, Complete, {}}
                    : JobOutcome{Reason::Failed, Failed, NotWritten};
    (done ? ProgrammingComplete : ProgrammingFailed).raise();
    // With a power cycle, so that the controller begins anew with what it holds now.
    EepWriter_->Disconnect(true);
}

// Ends

void LumoraProgrammer::end(JobOutcome outcome, bool pleaseReset) {
    queue_.clear();
    with_.link.DisconnectAndBlock(pleaseReset);
    over_ = true;
    outcome_ = std::move(outcome);
}

void LumoraProgrammer::FailProgramming(const std::string& cure) {
    end({Reason::Failed, Failed, cure + OnlyAPart});
    ProgrammingFailed.raise();
}

void LumoraProgrammer::CancelProgramming() {
    end({Reason::Canceled, "Programming canceled.", {}});
    ProgrammingCanceled.raise();
}

void LumoraProgrammer::FailForCodeSpace(int blocksUsed) {
    end({Reason::Unfit,
         "The Lumora controller can only hold " + std::to_string(LumoraDocument::BlockLimit) +
             " segments.",
         "The program needs " + std::to_string(blocksUsed) + "."});
    ProgrammingFailedDueToCodeSpace.raise(blocksUsed, LumoraDocument::BlockLimit);
}

void LumoraProgrammer::FinishProgramming() {
    end({Reason::Done, Complete, {}}, true);
    ProgrammingComplete.raise();
}

int LumoraProgrammer::Progress() const {
    const auto limited = [](double part) { return std::clamp(RoundToInteger(part), 0, 100); };
    if (EepWriter_ != nullptr) {
        const int total = readTotal_ + writeTotal_;
        return total < 1 ? 0 : limited((readPosition_ + writePosition_) * 100.0 / total);
    }
    if (transferTotal_ < 1)
        return 100;
    return limited(100 - static_cast<double>(queue_.size()) / transferTotal_ * 100);
}

} // namespace corvane
