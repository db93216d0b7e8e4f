#include "system/RegistryKey.h"

#include "base/Assert.h"
#include "base/Text.h"

namespace corvane {

namespace {

std::string fullPath(RegistryRoot root, const std::string& subkey) {
    const char* name =
        root == RegistryRoot::CurrentUser ? "HKEY_CURRENT_USER" : "HKEY_CLASSES_ROOT";
    return subkey.empty() ? name : std::string(name) + "\\" + subkey;
}

} // namespace

bool RegistryKey::CreateKey(RegistryRoot root, const std::string& subkey, bool& created) {
    created = false;
    const std::string path = fullPath(root, subkey);
    if (!store_->read().contains(path)) {
        if (!store_->write([&](SettingKeys& keys) { created = keys.try_emplace(path).second; })) {
            created = false;
            return OpenKey(root, subkey, false); // another program may have made it meanwhile
        }
    }
    path_ = path;
    readOnly_ = false;
    return true;
}

bool RegistryKey::DeleteKey(RegistryRoot root, const std::string& subkey) {
    const std::string path = fullPath(root, subkey);
    const std::string below = LowerCase(path) + "\\";
    bool found = false;
    const bool written = store_->write([&](SettingKeys& keys) {
        found = keys.contains(path);
        std::erase_if(keys, [&](const auto& key) {
            const std::string name = LowerCase(key.first);
            return name == LowerCase(path) || name.starts_with(below);
        });
    });
    return written && found;
}

bool RegistryKey::DeleteValue(const std::string& name) {
    Assert(Opened() && !readOnly_);
    bool found = false;
    const bool written = store_->write(
        [&](SettingKeys& keys) { found = keys.contains(path_) && keys[path_].erase(name) > 0; });
    return written && found;
}

bool RegistryKey::OpenKey(RegistryRoot root, const std::string& subkey, bool ReadOnly) {
    const std::string path = fullPath(root, subkey);
    if (!store_->read().contains(path))
        return false;
    path_ = path;
    readOnly_ = ReadOnly;
    return true;
}

std::int32_t RegistryKey::Integers(const std::string& name) const {
    return get<std::int32_t>(name);
}

void RegistryKey::setIntegers(const std::string& name, std::int32_t value) {
    set(name, value);
}

std::string RegistryKey::Strings(const std::string& name) const {
    return get<std::string>(name);
}

void RegistryKey::setStrings(const std::string& name, const std::string& value) {
    set(name, value);
}

std::vector<std::string> RegistryKey::StringArrays(const std::string& name) const {
    return get<std::vector<std::string>>(name);
}

void RegistryKey::setStringArrays(const std::string& name, const std::vector<std::string>& values) {
    std::vector<std::string> texts;
    for (std::string_view value : values) {
        for (std::size_t end = value.find('\0'); end != std::string_view::npos;
             end = value.find('\0')) {
            texts.emplace_back(value.substr(0, end));
            value.remove_prefix(end + 1);
        }
        texts.emplace_back(value);
    }
    // One empty text and no text at all are the same in the file.
    if (texts.size() == 1 && texts.front().empty())
        texts.clear();
    set(name, std::move(texts));
}

template<class Value>
Value RegistryKey::get(const std::string& name) const {
    Assert(Opened());
    const SettingKeys keys = store_->read();
    const auto key = keys.find(path_);
    if (key == keys.end())
        return {};
    const auto value = key->second.find(name);
    if (value == key->second.end() || !std::holds_alternative<Value>(value->second))
        return {};
    return std::get<Value>(value->second);
}

void RegistryKey::set(const std::string& name, SettingValue value) {
    Assert(Opened() && !readOnly_);
    static_cast<void>(store_->write([&](SettingKeys& keys) { keys[path_][name] = value; }));
}

} // namespace corvane
