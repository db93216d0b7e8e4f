#pragma once

#include "base/FileDoor.h"
#include "base/Handle.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace corvane {

/// Orders texts without regard to the case of ASCII letters.
struct CaselessLess {
    using is_transparent = void;
    [[nodiscard]] bool operator()(std::string_view a, std::string_view b) const;
};

using SettingValue = std::variant<std::int32_t, std::string, std::vector<std::string>>;
using SettingValues = std::map<std::string, SettingValue, CaselessLess>;
/// Values by the path of their key, parts joined by backslashes. A key may be empty of values.
using SettingKeys = std::map<std::string, SettingValues, CaselessLess>;

struct ReadSettings {
    SettingKeys keys;
    bool damaged = false; ///< Something in it is no value, and was left out.
};

/// Reads the text of a store. What is damaged or odd costs that value only.
[[nodiscard]] ReadSettings ParseSettings(std::string_view bytes);
/// Text that is no text is left out.
[[nodiscard]] std::string WriteSettings(const SettingKeys& keys);

/// The user's settings in one file, which several running programs may share. Each reading sees
/// the file as it is then; each change is made under a lock and replaces the file whole. Of a
/// damaged file a copy is kept under another name, and what can be read counts.
/// A lock that another program does not let go makes a change fail, and costs no more than the
/// patience: what is asked for next does not wait again, until the lock could be had.
class SettingsStore {
  public:
    /// The folder is made when something is first written.
    SettingsStore(std::filesystem::path folder, FileDoor& files);

    std::chrono::milliseconds Patience{500};

    [[nodiscard]] SettingKeys read();
    /// Lets `change` work on the current settings and writes them if they differ then. False if
    /// that failed.
    template<class Change>
    [[nodiscard]] bool write(Change change) {
        const Handle lock = acquire();
        if (!lock.valid())
            return false;
        const SettingKeys before = read();
        SettingKeys keys = before;
        change(keys);
        return keys == before || files_.ReplaceWhole(file().string(), WriteSettings(keys));
    }

    [[nodiscard]] std::filesystem::path file() const { return folder_ / "settings"; }

  private:
    [[nodiscard]] Handle acquire();

    std::filesystem::path folder_;
    FileDoor& files_;
    bool impatient_ = false;
};

} // namespace corvane
