// What the EEPROM editor does with the product on the link.
#include "base/Raised.h"
#include "eeprom/EEPROMEditorControl.h"
#include "eeprom/GenericEEPROMProgrammer.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr const char* FriendlyName = "microcontroller";
constexpr int AddressSpace = 65536; // bytes; what lies behind would come round to its beginning
constexpr int LongestPiece = GenericEEPROMProgrammer::MaxRead;

/// Asks within a run, under the usual pointer.
Answer askWithin(const Workplace& place, const MessageBox& question) {
    struct Busy {
        BusyPointer& pointer;
        ~Busy() { pointer.set(true); }
    };
    const Busy again{place.pointer};
    place.pointer.set(false);
    return place.dialogs.Message(question);
}

} // namespace

struct EEPROMEditorControl::RunWords {
    const char* doing;
    const char* done;
    const char* allDone;
    const char* allFailed;
};

template<class Job>
JobOutcome EEPROMEditorControl::run(const RunWords& words, bool writes, Job job) {
    if (running_)
        return AnotherJobRuns();
    const Raised running(running_);
    const BusyScope busy(place_.pointer);
    GenericEEPROMProgrammer programmer(place_);
    JobOutcome outcome;
    if (!programmer.Connect(ControlClass::EEPROMEditor, FriendlyName, true))
        outcome = programmer.outcome();
    else if (writes)
        outcome = mayWrite();
    if (outcome.done()) {
        const std::string count = "/" + std::to_string(EntryCount());
        for (int index = 1; index <= EntryCount(); ++index) {
            place_.pointer.set(true); // a message may have taken it away
            const std::string progress = std::to_string(index) + count;
            programmer.setVariable(CommentOf(index));
            // With the link gone nobody needs to hear of each variable in a box of its own.
            if ((outcome.done() || place_.link.ready()) && job(programmer, index)) {
                status_.report(std::string(words.done) + " " + progress + ".");
            } else {
                outcome.reason = JobOutcome::Reason::Failed;
                status_.error(std::string("Error ") + words.doing + " " + progress + "!");
                programmer.AwaitLateReply(); // it would be taken for the next variable's
            }
            place_.pause.pause(); // shows it
        }
        outcome.text = outcome.done() ? words.allDone : words.allFailed;
        if (outcome.done())
            status_.report(outcome.text);
        else
            status_.error(outcome.text);
    }
    programmer.Disconnect(false);
    return outcome;
}

JobOutcome EEPROMEditorControl::mayWrite() {
    const AttachedProduct& product = place_.link.Product();
    if (product.profile == nullptr || product.isOf(ControlClass::EEPROMEditor))
        return {};
    const std::string name = product.name();
    const Answer answer = askWithin(
        place_, {"Another Product",
                 "The product behind the link is a " + name +
                     ". Variables would overwrite what it needs to work.\r\n\r\nProgram anyway?",
                 MessageBox::Icon::Warning, MessageBox::Buttons::YesNo});
    if (answer == Answer::Yes)
        return {};
    const JobOutcome outcome{
        JobOutcome::Reason::Canceled, "Nothing was written into the " + name + ".", {}};
    status_.error(outcome.text);
    return outcome;
}

JobOutcome EEPROMEditorControl::ReadSettings() {
    return run(
        {"reading", "Read", "Read.", "Reading failed!"}, false,
        [this](GenericEEPROMProgrammer& reader, int index) { return readVariable(reader, index); });
}

JobOutcome EEPROMEditorControl::Program() {
    return run({"programming", "Programmed", "Programmed.", "Programming failed!"}, true,
               [this](GenericEEPROMProgrammer& writer, int index) {
                   return programVariable(writer, index);
               });
}

bool EEPROMEditorControl::readVariable(GenericEEPROMProgrammer& reader, int index) {
    const EEPROMVariable& variable = document.entry(index);
    const int length = variable.Length;
    ByteString bytes;
    for (int done = 0; done < length; done += LongestPiece) {
        const int pieceLength = std::min(length - done, LongestPiece);
        KOBuffer piece;
        if (variable.Address + done + pieceLength > AddressSpace ||
            !reader.ReadExactly(variable.Address + done, pieceLength, piece))
            return false;
        bytes.insert(bytes.end(), piece.bytes().begin(), piece.bytes().end());
    }
    if (bytes != variable.DataValue)
        document.record(index, KOEEPROMDocument::DataValue, HexText(bytes));
    return true;
}

bool EEPROMEditorControl::programVariable(GenericEEPROMProgrammer& writer, int index) {
    const EEPROMVariable& variable = document.entry(index);
    KOBuffer buffer;
    for (const std::uint8_t byte : variable.DataValue)
        buffer.Append(byte);
    fitLength(buffer, index);
    if (variable.Address + buffer.Length() > AddressSpace)
        return false;
    if (buffer.Length() == 0)
        return true;
    int done = 0;
    const std::vector<KOBuffer> pieces = buffer.Split(LongestPiece);
    return std::all_of(pieces.begin(), pieces.end(), [&](const KOBuffer& piece) {
        const int offset = std::exchange(done, done + piece.Length());
        return writer.WriteEEPROM(variable.Address + offset, piece);
    });
}

void EEPROMEditorControl::fitLength(KOBuffer& buffer, int index) {
    const int length = document.entry(index).Length;
    if (buffer.Length() == length)
        return;
    const char* question =
        buffer.Length() < length ? "Pad the end with zeros?" : "Remove bytes from the end?";
    const Answer answer =
        askWithin(place_, {"Wrong Length",
                           NameOf(index) + ":\r\n" + std::to_string(buffer.Length()) +
                               " bytes supplied in a " + std::to_string(length) +
                               " byte field.\r\n\r\n" + question,
                           MessageBox::Icon::None, MessageBox::Buttons::YesNo});
    if (answer == Answer::Yes)
        buffer.SetLength(length, 0);
}

} // namespace corvane
