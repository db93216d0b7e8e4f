#include "kolib/update/UpdateManifest.h"

#include "base/Text.h"
#include "kolib/update/UtcTime.h"
#include "kolib/update/Versions.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace corvane {

namespace {

bool isHash(const std::string& text) {
    constexpr std::size_t digits = 64;
    return text.size() == digits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

bool isPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      std::string_view("._+~-").find(static_cast<char>(c)) !=
                          std::string_view::npos;
           });
}

} // namespace

std::optional<UpdateManifest> UpdateManifest::read(std::string_view json) {
    const QJsonObject object =
        QJsonDocument::fromJson(
            QByteArray::fromRawData(json.data(), static_cast<qsizetype>(json.size())))
            .object();
    const auto text = [&object](const char* name) {
        return object.value(QLatin1String(name)).toString().toStdString();
    };
    const double size = object.value("size").toDouble(0);
    const auto issued = ReadUtc(text("issued"));
    const auto expires = ReadUtc(text("expires"));
    if (!object.value("notes").isString() || !(size >= 1) ||
        !(size <= static_cast<double>(MaxSize)) || !issued || !expires || *issued >= *expires)
        return std::nullopt;
    UpdateManifest manifest{
        text("version"),           text("notes"), text("url"), static_cast<std::int64_t>(size),
        LowerCase(text("sha256")), *issued,       *expires};
    if (static_cast<double>(manifest.size) != size || !isHash(manifest.sha256) ||
        !isPlainName(manifest.name()) || !IsNewer(manifest.version, "0"))
        return std::nullopt;
    return manifest;
}

std::string UpdateManifest::name() const {
    return url.substr(url.rfind('/') + 1);
}

} // namespace corvane
