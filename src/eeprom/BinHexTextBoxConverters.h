#pragma once

#include "eeprom/CodePage1252.h"

#include <array>
#include <memory>

namespace corvane {

/// A form in which a string of bytes is shown and typed. Empty text is valid in every form and
/// gives no bytes.
class IBinHexTextBoxConverter {
  public:
    virtual ~IBinHexTextBoxConverter() = default;
    [[nodiscard]] virtual std::string FromBytes(const ByteString& bytes) const = 0;
    /// The text must be valid.
    [[nodiscard]] virtual ByteString ToBytes(std::string_view text) const = 0;
    [[nodiscard]] virtual bool IsValid(std::string_view text) const = 0;
    [[nodiscard]] virtual std::string Name() const = 0;
};

/// A character a byte.
class BinHexTextBoxASCIIConverter final : public IBinHexTextBoxConverter {
  public:
    [[nodiscard]] std::string FromBytes(const ByteString& bytes) const override;
    [[nodiscard]] ByteString ToBytes(std::string_view text) const override;
    [[nodiscard]] bool IsValid(std::string_view text) const override;
    [[nodiscard]] std::string Name() const override { return "ANSI"; }
};

/// Eight digits a byte; a single byte without its leading zeros.
class BinHexTextBoxBinaryConverter final : public IBinHexTextBoxConverter {
  public:
    [[nodiscard]] std::string FromBytes(const ByteString& bytes) const override;
    [[nodiscard]] ByteString ToBytes(std::string_view text) const override;
    [[nodiscard]] bool IsValid(std::string_view text) const override;
    [[nodiscard]] std::string Name() const override { return "Binary"; }
};

/// Two digits a byte.
class BinHexTextBoxHexConverter final : public IBinHexTextBoxConverter {
  public:
    [[nodiscard]] std::string FromBytes(const ByteString& bytes) const override;
    [[nodiscard]] ByteString ToBytes(std::string_view text) const override;
    [[nodiscard]] bool IsValid(std::string_view text) const override;
    [[nodiscard]] std::string Name() const override { return "Hex"; }
};

/// Decimal numbers up to 255 with blanks between them.
class BinHexTextBoxUInt8Converter final : public IBinHexTextBoxConverter {
  public:
    [[nodiscard]] std::string FromBytes(const ByteString& bytes) const override;
    [[nodiscard]] ByteString ToBytes(std::string_view text) const override;
    [[nodiscard]] bool IsValid(std::string_view text) const override;
    [[nodiscard]] std::string Name() const override { return "Integer (U8)"; }
};

/// The forms in the order in which they are offered.
[[nodiscard]] const std::array<std::unique_ptr<const IBinHexTextBoxConverter>, 4>& Converters();
/// The form with exactly this name, or nothing. Empty text means "Integer (U8)".
[[nodiscard]] const IBinHexTextBoxConverter* FindConverter(std::string_view name);

} // namespace corvane
