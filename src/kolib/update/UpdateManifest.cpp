#include "kolib/update/UpdateManifest.h"

#include "base/NumberWithin.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <vector>

namespace corvane {

namespace {

std::optional<std::vector<int>> numbersOf(std::string_view version) {
    constexpr int highest = 1000000;
    constexpr std::size_t most = 4;
    std::vector<int> numbers;
    for (bool more = true; more;) {
        const std::size_t point = version.find('.');
        more = point != std::string_view::npos;
        const auto number = NumberWithin<int>(version.substr(0, point), 0, highest);
        if (!number || numbers.size() == most)
            return std::nullopt;
        numbers.push_back(*number);
        version.remove_prefix(more ? point + 1 : version.size());
    }
    while (numbers.size() < most)
        numbers.push_back(0);
    return numbers;
}

} // namespace

std::optional<UpdateManifest> UpdateManifest::read(std::string_view json) {
    const QJsonDocument document = QJsonDocument::fromJson(
        QByteArray::fromRawData(json.data(), static_cast<qsizetype>(json.size())));
    const QJsonObject object = document.object();
    const QJsonValue version = object.value("version");
    const QJsonValue notes = object.value("notes");
    const QJsonValue url = object.value("url");
    const double size = object.value("size").toDouble(0);
    if (!version.isString() || !notes.isString() || !url.isString() || !(size >= 1) ||
        !(size <= static_cast<double>(MaxSize)))
        return std::nullopt;
    UpdateManifest manifest{version.toString().toStdString(), notes.toString().toStdString(),
                            url.toString().toStdString(), static_cast<std::int64_t>(size)};
    if (static_cast<double>(manifest.size) != size || !numbersOf(manifest.version))
        return std::nullopt;
    return manifest;
}

std::optional<bool> IsNewer(std::string_view version, std::string_view than) {
    const auto a = numbersOf(version);
    const auto b = numbersOf(than);
    if (!a || !b)
        return std::nullopt;
    return *a > *b;
}

} // namespace corvane
