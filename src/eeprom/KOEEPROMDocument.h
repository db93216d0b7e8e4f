#pragma once

#include "base/BlockSequence.h"
#include "eeprom/BinHexTextBoxConverters.h"
#include "history/History.h"

namespace corvane {

/// A variable in a microcontroller's EEPROM.
struct EEPROMVariable {
    static constexpr int MaxNumber = 65535;

    int Address = 0; ///< 0 to `MaxNumber`.
    int Length = 1;  ///< Bytes, 0 to `MaxNumber`.
    std::string Comments;
    ByteString DataValue;                  ///< Need not be as long as the variable.
    std::string DataType = "Integer (U8)"; ///< Name of a form; empty stands for this one.

    bool operator==(const EEPROMVariable&) const = default;
};

/// Variables in an EEPROM as a document, in the order in which they were added. Only changes write
/// it, and its history is its file.
class KOEEPROMDocument final : public HistoryHost {
  public:
    static constexpr std::string_view TextPrefix = "KOEEPROMText";
    static constexpr std::string_view Address = "Address";
    static constexpr std::string_view Length = "Length";
    static constexpr std::string_view Comments = "Comments";
    static constexpr std::string_view DataType = "Data Type";
    static constexpr std::string_view DataValue = "Data Value";

    explicit KOEEPROMDocument(const History::Surroundings& surroundings);

    Event<int> EntryAdded;   ///< With its index.
    Event<int> EntryRemoved; ///< With the index that it had.
    /// A property of a variable was written.
    Event<int, std::string_view> EntryChanged;

    [[nodiscard]] History& HistoryObject() { return history_; }
    [[nodiscard]] int EntryCount() const { return static_cast<int>(entries_.size()); }
    /// From 1.
    [[nodiscard]] const EEPROMVariable& entry(int index) const;

    /// Numbers are limited; the new variable has the index `insertBefore`.
    void AddField(WriteAccess, int insertBefore, EEPROMVariable variable);
    void RemoveField(WriteAccess, int location);
    /// A property of a variable as text: numbers in decimal, bytes in hexadecimal. A name that is
    /// none gives empty text.
    [[nodiscard]] std::string Data(int index, std::string_view propertyName) const;
    /// The text must be one that `isText` allows; a name that is none changes nothing.
    void setData(WriteAccess, int index, std::string_view propertyName, std::string_view text);
    [[nodiscard]] static bool takesData(int index, std::string_view) { return index >= 1; }
    /// Whether a property may have this text: types and bytes must be some.
    [[nodiscard]] static bool isText(std::string_view propertyName, std::string_view text);

    /// Records a property's new value, be it the old one or not.
    void record(int index, std::string_view propertyName, std::string newValue);
    void recordAdding(int index, EEPROMVariable variable);
    void recordRemoving(int index);

  private:
    [[nodiscard]] EEPROMVariable& writable(int index);

    BlockSequence<EEPROMVariable> entries_;
    History history_;
};

/// Bytes as a file and `Data` hold them.
[[nodiscard]] std::string HexText(const ByteString& bytes);

} // namespace corvane
