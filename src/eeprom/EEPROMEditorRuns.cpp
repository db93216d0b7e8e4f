// What the EEPROM editor does with the product on the link.
#include "eeprom/EEPROMEditorControl.h"
#include "eeprom/GenericEEPROMProgrammer.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr const char* ControlClass = "Corvane.EEPROMEditorControl";
constexpr const char* FriendlyName = "microcontroller";
constexpr int AddressSpace = 65536; // bytes; what lies behind would come round to its beginning
constexpr int LongestPiece = GenericEEPROMProgrammer::MaxRead;

} // namespace

void EEPROMEditorControl::ProcessPacket(const KOPacket& packet) {
    if (programmer_ != nullptr)
        programmer_->ProcessPacket(packet);
}

template<class Job>
void EEPROMEditorControl::run(const std::string& doing, const std::string& done,
                              const char* allDone, const char* allFailed, Job job) {
    if (programmer_ != nullptr)
        return;
    const BusyScope busy(place_.pointer);
    GenericEEPROMProgrammer programmer(place_);
    programmer_ = &programmer;
    if (programmer.Connect(ControlClass, FriendlyName, true)) {
        bool failed = false;
        const std::string count = "/" + std::to_string(EntryCount());
        for (int index = 1; index <= EntryCount(); ++index) {
            place_.pointer.set(true); // a message may have taken it away
            const std::string progress = std::to_string(index) + count;
            // With the link gone nobody needs to hear of each variable in a box of its own.
            if ((!failed || place_.link.ready()) && job(programmer, index)) {
                status_.report(done + " " + progress + ".");
            } else {
                failed = true;
                status_.error("Error " + doing + " " + progress + "!");
            }
            place_.pause.pause(); // shows it
        }
        if (failed)
            status_.error(allFailed);
        else
            status_.report(allDone);
    }
    programmer.Disconnect(false);
    programmer_ = nullptr;
}

void EEPROMEditorControl::readSettings() {
    run("reading", "Read", ReadReport, "Reading failed!",
        [this](GenericEEPROMProgrammer& reader, int index) { return readVariable(reader, index); });
}

bool EEPROMEditorControl::readVariable(GenericEEPROMProgrammer& reader, int index) {
    const EEPROMVariable& variable = document.entry(index);
    const int length = variable.Length;
    ByteString bytes;
    for (int done = 0; done < length; done += LongestPiece) {
        const int pieceLength = std::min(length - done, LongestPiece);
        KOBuffer piece;
        if (variable.Address + done + pieceLength > AddressSpace ||
            !reader.ReadEEPROM(variable.Address + done, pieceLength, piece))
            return false;
        bytes.insert(bytes.end(), piece.bytes().begin(), piece.bytes().end());
    }
    if (bytes != variable.DataValue)
        document.record(index, KOEEPROMDocument::DataValue, HexText(bytes));
    return true;
}

void EEPROMEditorControl::program() {
    run("programming", "Programmed", ProgrammedReport, "Programming failed!",
        [this](GenericEEPROMProgrammer& writer, int index) {
            return programVariable(writer, index);
        });
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
    place_.pointer.set(false);
    const Answer answer = place_.dialogs.Message(
        {"Wrong Length",
         NameOf(index) + "\r\n" + std::to_string(buffer.Length()) + " bytes supplied in a " +
             std::to_string(length) + " byte field.\r\n\r\n" + question,
         MessageBox::Icon::None, MessageBox::Buttons::YesNo});
    place_.pointer.set(true);
    if (answer == Answer::Yes)
        buffer.SetLength(length, 0);
}

} // namespace corvane
