#include "pwm/QuillonTransfer.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr const char* ControlClass = "Corvane.QuillonControl";

// Channels of the requests; that of the reply is the same without the top bit.
constexpr int AskLength = 178;
constexpr int AskBlocks = 179;
constexpr int BeginUpload = 180;
constexpr int StoreBlocks = 181;
constexpr int EndUpload = 182;
constexpr int AskOptions = 183;
constexpr int SetOptions = 184;
constexpr int TopBit = 128;

constexpr std::int32_t ReplyWithin = 1000; // ms
constexpr int DownloadPiece = 128;         // blocks
constexpr int UploadPiece = 32;

KOBuffer request(std::initializer_list<int> bytes) {
    KOBuffer data;
    for (const int byte : bytes)
        data.Append(static_cast<std::uint8_t>(byte));
    return data;
}

/// A number of two bytes, low byte first; nothing if they are not there.
std::optional<int> word(const KOBuffer& buffer, int index) {
    if (buffer.Length() < index + 1)
        return std::nullopt;
    return buffer.Data(index) + 256 * buffer.Data(index + 1);
}

} // namespace

QuillonTransfer::QuillonTransfer(const Workplace& place)
    : with_(place), onPacket_(place.link.PacketReceived.connect([this](const KOPacket& packet) {
          ProcessPacket(packet);
      })) {}

QuillonTransfer::~QuillonTransfer() {
    with_.link.DisconnectAndBlock(false); // also from a product of another kind
    with_.pointer.set(false);
}

bool QuillonTransfer::Connect() {
    with_.pointer.set(true);
    if (!with_.link.IsConnected())
        return fail(NoLinkOpen(with_.link));
    JobOutcome reached = ReachProduct(with_, ControlClass, false);
    reached.text = "Unable to connect to the Quillon.";
    return reached.done() || fail(std::move(reached));
}

bool QuillonTransfer::fail(JobOutcome outcome) {
    failure_ = std::move(outcome);
    failure_.told = true;
    with_.pointer.set(false);
    with_.dialogs.ShowError(failure_.inWords());
    return false;
}

bool QuillonTransfer::Download(int slot) {
    with_.pointer.set(true);
    currentSlot_ = slot;
    allZero_ = true;
    transferPosition_ = 0;
    transferLength_ = 0;
    if (!ask(AskLength, request({slot}), "Download timed out while getting length."))
        return false;
    for (int offset = 0; offset < transferLength_; offset += DownloadPiece) {
        transferPosition_ = offset;
        transferCount_ = std::min(DownloadPiece, transferLength_ - offset);
        if (!ask(AskBlocks, request({slot, offset % 256, offset / 256, transferCount_}),
                 "Download timed out."))
            break;
        Progress.raise(offset, transferLength_);
    }
    return !allZero_;
}

bool QuillonTransfer::Upload(int slot, const KOBuffer& blocks) {
    currentSlot_ = slot;
    const int length = blocks.Length();
    if (!ask(BeginUpload, request({slot, length % 256, length / 256}),
             "Upload timed out while starting."))
        return false;
    for (int offset = 0; offset < length; offset += UploadPiece) {
        KOBuffer data = request({slot, offset % 256, offset / 256});
        data.AppendBuffer(blocks, offset + 1, std::min(offset + UploadPiece, length));
        if (!ask(StoreBlocks, data, "Upload timed out."))
            return false;
        Progress.raise(offset, length);
    }
    return ask(EndUpload, request({slot}), "Upload timed out during completion.");
}

std::optional<std::uint8_t> QuillonTransfer::ReadOptions() {
    if (!ask(AskOptions, {}, "Couldn't read controller settings."))
        return std::nullopt;
    return receiverNumber_;
}

bool QuillonTransfer::WriteOptions(std::uint8_t receiverNumber) {
    return ask(SetOptions, request({receiverNumber}), "Couldn't write controller settings.");
}

bool QuillonTransfer::ask(int channel, const KOBuffer& data, const char* failure) {
    return exchange(channel, data) ||
           fail({JobOutcome::Reason::Failed, failure, NoReplyCure(with_.link)});
}

bool QuillonTransfer::exchange(int channel, const KOBuffer& data) {
    KOPacket packet = with_.link.makePacket();
    packet.setChannel(channel);
    packet.buffer().AppendBuffer(data);
    static_cast<void>(packet.Send()); // one that is not accepted is not answered
    const std::uint32_t start = with_.clock.now();
    asked_ = channel;
    while (asked_ != 0 && with_.link.ready() && Elapsed(with_.clock.now(), start) < ReplyWithin) {
        with_.link.Update();
        if (asked_ != 0)
            with_.pause.pause();
    }
    return std::exchange(asked_, 0) == 0;
}

void QuillonTransfer::ProcessPacket(const KOPacket& packet) {
    const KOBuffer& reply = packet.buffer();
    switch (packet.Channel() + TopBit) {
    case AskLength:
        return takeLength(reply);
    case AskBlocks:
        return takeBlocks(reply);
    case AskOptions:
        if (asked_ != AskOptions || reply.Length() < 1)
            return;
        receiverNumber_ = reply.Data(1);
        [[fallthrough]];
    case BeginUpload:
    case StoreBlocks:
    case EndUpload:
    case SetOptions:
        asked_ = 0;
        return;
    default:
        return;
    }
}

void QuillonTransfer::takeLength(const KOBuffer& reply) {
    if (asked_ != AskLength)
        return;
    const auto slot = reply.Length() < 1 ? std::nullopt : std::optional<int>(reply.Data(1));
    if (!isExpected("50 DD1 ", slot, currentSlot_))
        return;
    const std::optional<int> length = word(reply, 2);
    if (!length) {
        with_.debug.DebugWriteLine("50 DD3 " + std::to_string(reply.Length()) + " 3");
        return;
    }
    transferLength_ = *length;
    asked_ = 0;
}

void QuillonTransfer::takeBlocks(const KOBuffer& reply) {
    constexpr int header = 3;
    if (asked_ != AskBlocks)
        return;
    const auto slot = reply.Length() < 1 ? std::nullopt : std::optional<int>(reply.Data(1));
    if (!isExpected("51 DD1 ", slot, currentSlot_) ||
        !isExpected("51 DD2 ", word(reply, 2), transferPosition_))
        return;
    const int blocks = reply.Length() - header;
    if (blocks < transferCount_) {
        with_.debug.DebugWriteLine("51 DD3 " + std::to_string(blocks) + " " +
                                   std::to_string(transferCount_));
        return;
    }
    for (int i = 1; i <= transferCount_; ++i) {
        const std::uint8_t value = reply.Data(header + i);
        allZero_ = allZero_ && value == 0;
        BlockReceived.raise(value);
    }
    asked_ = 0;
}

bool QuillonTransfer::isExpected(const char* fault, std::optional<int> received, int expected) {
    if (received == expected)
        return true;
    with_.debug.DebugWriteLine(fault + (received ? std::to_string(*received) : "nothing") + " " +
                               std::to_string(expected));
    return false;
}

} // namespace corvane
