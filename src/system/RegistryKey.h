#pragma once

#include "system/SettingsStore.h"

namespace corvane {

/// The root that a key's path starts from.
enum class RegistryRoot { CurrentUser, ClassesRoot };

/// One key of the user's settings, opened by its path below a root; parts of a path are separated
/// by backslashes, and names mean the same in capitals and not. Every operation that needs an open
/// key asserts it, and the setters assert that it is not read-only. A store that can't be read or
/// written is not told.
class RegistryKey {
  public:
    explicit RegistryKey(SettingsStore& store) : store_(&store) {}

    /// Opens the key for writing and makes it if need be; `created` tells whether it is new.
    bool CreateKey(RegistryRoot root, const std::string& subkey, bool& created);
    /// Deletes the key and all below it; works without an open key.
    bool DeleteKey(RegistryRoot root, const std::string& subkey);
    bool DeleteValue(const std::string& name);
    /// False if there is no such key.
    bool OpenKey(RegistryRoot root, const std::string& subkey, bool ReadOnly);
    void CloseKey() { path_.clear(); }

    [[nodiscard]] bool Opened() const { return !path_.empty(); }
    [[nodiscard]] bool ReadOnly() const { return readOnly_; }

    /// 0 if the value is absent or no number.
    [[nodiscard]] std::int32_t Integers(const std::string& name) const;
    void setIntegers(const std::string& name, std::int32_t value);
    /// Empty if the value is absent or no text.
    [[nodiscard]] std::string Strings(const std::string& name) const;
    void setStrings(const std::string& name, const std::string& value);
    /// Empty if the value is absent or no list. A NUL in a text ends it and begins the next one; a
    /// list of one empty text reads back as an empty list.
    [[nodiscard]] std::vector<std::string> StringArrays(const std::string& name) const;
    void setStringArrays(const std::string& name, const std::vector<std::string>& values);

  private:
    template<class Value>
    [[nodiscard]] Value get(const std::string& name) const;
    void set(const std::string& name, SettingValue value);

    SettingsStore* store_;
    std::string path_; // empty when closed
    bool readOnly_ = false;
};

} // namespace corvane
