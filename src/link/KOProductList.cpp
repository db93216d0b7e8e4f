#include "link/KOProductList.h"

#include "base/Assert.h"
#include "base/Text.h"
#include "system/File.h"
#include "system/Programs.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr int RecordLength = 5;
constexpr int ChecksumByte = 5;

std::string recordInWords(const KOBuffer& record) {
    const auto number = [&record](int index) { return std::to_string(record.Data(index)); };
    return number(ChecksumByte) + " (device " + number(1) + "," + number(2) + " version " +
           number(3) + "." + number(4) + ")";
}

} // namespace

void KOProductProfile::RegisterFileAssociations(SettingsStore& store) const {
    RegisterFileAssociationsCore(store, RegistryRoot::CurrentUser, "Software\\Classes\\");
}

void KOProductProfile::RegisterFileAssociationsCore(SettingsStore& store, RegistryRoot keyHandle,
                                                    const std::string& keyPrefix) const {
    if (!associateExtension)
        return;
    const auto setDefault = [&](const std::string& path, const std::string& value) {
        RegistryKey key(store);
        bool created = false;
        if (!key.CreateKey(keyHandle, keyPrefix + path, created))
            return false;
        key.setStrings({}, value);
        return true;
    };
    const std::string type = "Corvane." + Name;
    if (setDefault("." + fileExtension, type) && setDefault(type, fileDescription))
        setDefault(type + "\\shell\\open\\command", "\"" + KOIOExecutablePath() + "\" \"%1\"");
}

KOProductList::KOProductList(std::string_view vendorCode, const KODebug& debug)
    : vendorCode_(vendorCode), debug_(debug) {
    using namespace ControlClass;
    // The first row of an extension stands for all of it.
    AddProduct("KO", {"Lumora", Lumora, 1, 1, "lumora", "Lumora File", true});
    AddProduct("KO", {"Lumora", Lumora, 1, 2, "lumora", "Lumora File", false});
    AddProduct("KO", {"Pactor", Pactor, 2, 1, "relay", "Relay Settings File", true});
    AddProduct("KO", {"Pactor", Pactor, 3, 1, "relay", "Relay Settings File", true});
    AddProduct("KO", {"KOEEPROM", EEPROMEditor, 255, 1, "ko_eeprom", "EEPROM Editor File", false});
    AddProduct("RQ", {"Quillon", Quillon, 100, 1, "Quillon", "Quillon File", true});
    Assert(Size() > 0, "No product of the vendor code " + vendorCode_ + ".");
}

const KOProductProfile* KOProductList::ByExtension(std::string_view Extension) const {
    const std::string wanted = LowerCase(Extension);
    const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const KOProductProfile& profile) {
        return LowerCase(profile.fileExtension) == wanted;
    });
    return row == rows_.end() ? nullptr : &*row;
}

std::string KOProductList::ClassOfFile(const std::string& path) const {
    const KOProductProfile* product = ByExtension(KOIOExtension(path));
    return product == nullptr ? std::string() : product->Class;
}

const KOProductProfile* KOProductList::ByTypeCode(std::string_view typeCode) const {
    const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const KOProductProfile& profile) {
        return profile.Name == typeCode;
    });
    return row == rows_.end() ? nullptr : &*row;
}

bool KOProductList::IsRecord(const KOBuffer& buffer) {
    if (buffer.Length() < RecordLength)
        return false;
    const int sum = buffer.Data(1) + buffer.Data(2) + buffer.Data(3) + buffer.Data(4);
    return sum % 256 == buffer.Data(ChecksumByte);
}

const KOProductProfile* KOProductList::ByIdentificationBuffer(const KOBuffer& buffer,
                                                              Version& deviceType,
                                                              Version& firmwareVersion) const {
    if (buffer.Length() < RecordLength) {
        debug_.DebugWriteLine("Product record too short (length " +
                              std::to_string(buffer.Length()) + ").");
        return nullptr;
    }
    if (!IsRecord(buffer)) {
        debug_.DebugWriteLine("Bad product checksum " + recordInWords(buffer));
        return nullptr;
    }
    deviceType = {};
    firmwareVersion = {};
    const Version found(buffer.Data(1), buffer.Data(2));
    const KOProductProfile* result = ByDeviceType(found);
    if (result != nullptr) {
        deviceType = found;
        firmwareVersion = Version(buffer.Data(3), buffer.Data(4));
    }
    return result;
}

const KOProductProfile* KOProductList::ByDeviceType(const Version& deviceType) const {
    const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const KOProductProfile& profile) {
        return deviceType.Equals(Version(profile.deviceMajorID, profile.deviceMinorID));
    });
    return row == rows_.end() ? nullptr : &*row;
}

const KOProductProfile& KOProductList::ByIndex(int Index) const {
    Assert(Index >= 1 && Index <= Size());
    return rows_[static_cast<std::size_t>(Index) - 1];
}

void KOProductList::AddProduct(std::string_view ManufacturerID, KOProductProfile profile) {
    if (ManufacturerID == vendorCode_)
        rows_.push_back(std::move(profile));
}

} // namespace corvane
