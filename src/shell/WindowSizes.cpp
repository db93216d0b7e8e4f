#include "shell/WindowSizes.h"

#include "system/RegistryKey.h"

namespace corvane {

std::optional<TwipSize> WindowSizes::of(const std::string& controlClass) const {
    RegistryKey key(store_);
    if (!key.OpenKey(RegistryRoot::CurrentUser, controlClass, true))
        return std::nullopt;
    const TwipSize size{key.Integers("Width"), key.Integers("Height")};
    return size.width >= 1 && size.height >= 1 ? std::optional(size) : std::nullopt;
}

void WindowSizes::keep(const std::string& controlClass, TwipSize size) {
    if (of(controlClass) == size)
        return;
    RegistryKey key(store_);
    bool created = false;
    if (!key.CreateKey(RegistryRoot::CurrentUser, controlClass, created))
        return;
    key.setIntegers("Width", size.width);
    key.setIntegers("Height", size.height);
}

} // namespace corvane
