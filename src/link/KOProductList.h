#pragma once

#include "base/KODebug.h"
#include "link/KOBuffer.h"
#include "system/RegistryKey.h"

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// A major and a minor number, 0.0 at first.
class Version {
  public:
    Version() = default;
    Version(int majorVersion, int minorVersion) { Initialize(majorVersion, minorVersion); }

    void Initialize(int majorVersion, int minorVersion) {
        major_ = majorVersion;
        minor_ = minorVersion;
    }
    [[nodiscard]] int Major() const { return major_; }
    [[nodiscard]] int Minor() const { return minor_; }
    [[nodiscard]] bool Equals(const Version& otherVersion) const { return *this == otherVersion; }
    [[nodiscard]] std::string ToString() const {
        return std::to_string(major_) + "." + std::to_string(minor_);
    }

    bool operator==(const Version&) const = default;

  private:
    int major_ = 0;
    int minor_ = 0;
};

/// The class names that screens are made from. What is made for one stands in its row of
/// `shell/ProductTable` and, of the window, of `desktop/Views`.
namespace ControlClass {
inline constexpr const char* Default = "Corvane.DefaultControl";
inline constexpr const char* Programmer = "Corvane.ProgrammerControl";
inline constexpr const char* Lumora = "Corvane.LumoraControl";
inline constexpr const char* Pactor = "Corvane.PactorControl";
inline constexpr const char* EEPROMEditor = "Corvane.EEPROMEditorControl";
inline constexpr const char* Quillon = "Corvane.QuillonControl";
} // namespace ControlClass

/// What the program knows of one product: a row of `KOProductList`.
struct KOProductProfile {
    /// Also the root of the file type's key in the settings, and the type code of its documents.
    std::string Name;
    std::string Class; ///< Class name of the product's control.
    int deviceMajorID = 0;
    int deviceMinorID = 0;
    std::string fileExtension; ///< Without the dot.
    std::string fileDescription;
    bool associateExtension = false; ///< Documents of this extension open the program.

    /// Writes into the settings that documents of this extension open the running program, if they
    /// are meant to. A store that can't be written is not told.
    void RegisterFileAssociations(SettingsStore& store) const;
    /// The same below another key; a prefix that is not empty ends in a backslash.
    void RegisterFileAssociationsCore(SettingsStore& store, RegistryRoot keyHandle,
                                      const std::string& keyPrefix) const;
};

/// The vendor code that this program was linked for, `corvane_ko` or `corvane_rq`.
[[nodiscard]] std::string_view ProgramVendor();

/// The products that a program of one vendor code knows. Pointers that it gives stay good as long
/// as no product is added.
class KOProductList {
  public:
    KOProductList(std::string_view vendorCode, const KODebug& debug);

    [[nodiscard]] int Size() const { return static_cast<int>(rows_.size()); }
    /// The first product of this extension, in capitals or not; nothing if there is none.
    [[nodiscard]] const KOProductProfile* ByExtension(std::string_view Extension) const;
    /// Class name of the control for a file, by its extension; empty for a file of no product.
    [[nodiscard]] std::string ClassOfFile(const std::string& path) const;
    /// The first product whose documents have this type code, or nothing.
    [[nodiscard]] const KOProductProfile* ByTypeCode(std::string_view typeCode) const;
    /// Whether it is an identification record: long enough, and with the right checksum.
    [[nodiscard]] static bool IsRecord(const KOBuffer& buffer);
    /// The product that an identification record names. A record that is too short or has a wrong
    /// checksum gives nothing, is told in the log, and leaves the versions; an unknown product
    /// gives nothing and sets them to 0.0.
    [[nodiscard]] const KOProductProfile* ByIdentificationBuffer(const KOBuffer& buffer,
                                                                 Version& deviceType,
                                                                 Version& firmwareVersion) const;
    /// The product of these device IDs, or nothing.
    [[nodiscard]] const KOProductProfile* ByDeviceType(const Version& deviceType) const;
    /// Rows count from 1 to `Size`.
    [[nodiscard]] const KOProductProfile& ByIndex(int Index) const;
    /// Keeps the row only if the manufacturer is the program's own vendor code.
    void AddProduct(std::string_view ManufacturerID, KOProductProfile profile);

  private:
    std::string vendorCode_;
    const KODebug& debug_;
    std::vector<KOProductProfile> rows_;
};

} // namespace corvane
