#include "system/SettingsStore.h"

#include "base/Numbers.h"
#include "base/Text.h"
#include "base/TextLines.h"
#include "system/UserFolders.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace corvane {

namespace {

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// What is no text is left out.
void writeValue(KOIOWriter& writer, const std::string& name, const SettingValue& value) {
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return static_cast<void>(writer.WriteArray("integer", {name, std::to_string(*number)}));
    if (const auto* text = std::get_if<std::string>(&value))
        return static_cast<void>(writer.WriteArray("text", {name, *text}));
    std::vector<std::string> fields{name};
    const auto& texts = std::get<std::vector<std::string>>(value);
    std::copy_if(texts.begin(), texts.end(), std::back_inserter(fields), IsUtf8);
    static_cast<void>(writer.WriteArray("texts", fields));
}

/// The name is the first of the fields.
std::optional<SettingValue> valueOf(const std::string& kind,
                                    const std::vector<std::string>& fields) {
    if (kind == "texts" && !fields.empty())
        return std::vector<std::string>(fields.begin() + 1, fields.end());
    if (fields.size() != 2)
        return std::nullopt;
    if (kind == "integer")
        return ReadInteger(fields[1]);
    if (kind == "text")
        return fields[1];
    return std::nullopt;
}

} // namespace

bool CaselessLess::operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](char left, char right) { return lower(left) < lower(right); });
}

ReadSettings ParseSettings(std::string_view bytes) {
    ReadSettings read;
    SettingValues* key = nullptr;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
        KOIOReader line;
        std::string kind;
        std::vector<std::string> fields;
        if (line.Load(std::string(bytes.substr(0, end))))
            line.ReadArray(kind, fields);
        bytes.remove_prefix(end);
        if (kind == "key") {
            // Values of a key that can't be read belong to no other.
            key = fields.size() == 1 ? &read.keys[fields[0]] : nullptr;
            read.damaged = read.damaged || key == nullptr;
        } else if (std::optional<SettingValue> value = valueOf(kind, fields);
                   value && key != nullptr) {
            (*key)[fields[0]] = std::move(*value);
        } else {
            read.damaged = true;
        }
    }
    return read;
}

std::string WriteSettings(const SettingKeys& keys) {
    std::string bytes;
    KOIOWriter writer(bytes);
    for (const auto& [path, values] : keys) {
        if (!writer.WriteArray("key", {path}))
            continue; // text that is no text can't be kept
        for (const auto& [name, value] : values)
            writeValue(writer, name, value);
    }
    return bytes;
}

SettingsStore::SettingsStore(std::filesystem::path folder, FileDoor& files)
    : folder_(std::move(folder)), files_(files) {}

SettingKeys SettingsStore::read() {
    std::string bytes;
    if (files_.ReadWhole(file().string(), bytes) != FileDoor::ReadResult::Done)
        return {};
    ReadSettings read = ParseSettings(bytes);
    if (read.damaged) {
        // The next thing that is written leaves the damage out.
        std::error_code error;
        std::filesystem::copy_file(file(), folder_ / "settings.damaged",
                                   std::filesystem::copy_options::overwrite_existing, error);
    }
    return std::move(read.keys);
}

Handle SettingsStore::acquire() {
    constexpr std::chrono::milliseconds step{5};
    if (!MakePrivateFolder(folder_))
        return {};
    Handle lock(::open((folder_ / "settings.lock").c_str(),
                       O_CREAT | O_RDWR | O_CLOEXEC | O_NONBLOCK, 0600));
    if (!lock.valid())
        return {};
    std::chrono::milliseconds left = impatient_ ? step : Patience;
    while (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        left -= step;
        impatient_ = left <= left.zero();
        if (impatient_ || (errno != EWOULDBLOCK && errno != EINTR))
            return {};
        std::this_thread::sleep_for(step);
    }
    impatient_ = false;
    return lock;
}

} // namespace corvane
