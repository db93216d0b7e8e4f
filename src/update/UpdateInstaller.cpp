#include "update/UpdateInstaller.h"

namespace corvane {

namespace {
constexpr const char* Mark = "Update";
}

bool UpdateInstaller::takeMark() const {
    const auto present = with_.registry.OpenSettingsForReading();
    if (!present || present->Integers(Mark) != 1)
        return false;
    auto key = with_.registry.OpenSettingsForWriting();
    return key && key->DeleteValue(Mark);
}

bool UpdateInstaller::run() {
    if (!takeMark())
        return false;
    const bool ours = with_.isOurs();
    const bool installed = ours && with_.install();
    std::error_code error;
    std::filesystem::remove(with_.package, error);
    std::filesystem::remove(with_.signature, error);
    if (!ours)
        with_.dialogs.ShowError("The update that was downloaded is damaged, and was not installed."
                                "\r\n\r\nCorvane will offer it again.");
    else if (!installed)
        with_.dialogs.ShowError("The update could not be installed.\r\n\r\nThe version that you "
                                "have goes on working, and Corvane will offer the update again.");
    return installed;
}

} // namespace corvane
