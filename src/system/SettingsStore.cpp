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

std::vector<std::string> record(const std::string& name, const SettingValue& value) {
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return {"integer", name, std::to_string(*number)};
    if (const auto* text = std::get_if<std::string>(&value))
        return {"text", name, *text};
    std::vector<std::string> record{"texts", name};
    const auto& texts = std::get<std::vector<std::string>>(value);
    std::copy_if(texts.begin(), texts.end(), std::back_inserter(record), IsUtf8);
    return record;
}

std::optional<SettingValue> valueOf(const std::vector<std::string>& record) {
    if (record[0] == "texts" && record.size() >= 2)
        return std::vector<std::string>(record.begin() + 2, record.end());
    if (record.size() != 3)
        return std::nullopt;
    if (record[0] == "integer")
        return ReadInteger(record[2]);
    if (record[0] == "text")
        return record[2];
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
    std::vector<std::string> fields;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
        const std::optional<TextLines> line = TextLines::parse(std::string(bytes.substr(0, end)));
        bytes.remove_prefix(end);
        fields.assign(1, {});
        if (line)
            line->read(0, fields);
        if (fields[0] == "key") {
            // Values of a key that can't be read belong to no other.
            key = fields.size() == 2 ? &read.keys[fields[1]] : nullptr;
            read.damaged = read.damaged || key == nullptr;
        } else if (std::optional<SettingValue> value = valueOf(fields); value && key != nullptr) {
            (*key)[fields[1]] = std::move(*value);
        } else {
            read.damaged = true;
        }
    }
    return read;
}

std::string WriteSettings(const SettingKeys& keys) {
    std::string bytes;
    for (const auto& [path, values] : keys) {
        if (!TextLines::append(bytes, {"key", path}))
            continue; // text that is no text can't be kept
        for (const auto& [name, value] : values)
            static_cast<void>(TextLines::append(bytes, record(name, value)));
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
