#include "light/LumoraSimulatorSettings.h"

#include "base/Assert.h"
#include "base/Numbers.h"

#include <cmath>
#include <vector>

namespace corvane {

namespace {

constexpr double FullCircle = 6.283; // has always been that short
constexpr double Radius = 150;       // pixels

std::vector<std::string_view> split(std::string_view text, char mark) {
    std::vector<std::string_view> parts;
    for (std::size_t end = text.find(mark); end != std::string_view::npos; end = text.find(mark)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

int numberAt(const std::vector<std::string_view>& parts, std::size_t index) {
    return index < parts.size() ? ReadInteger(parts[index]) : 0;
}

std::string text(LumoraSimulatorSettings::Position position) {
    return std::to_string(position.x) + "," + std::to_string(position.y);
}

} // namespace

std::size_t LumoraSimulatorSettings::place(int light) {
    Assert(isLight(light));
    return static_cast<std::size_t>(light) - 1;
}

std::string LumoraSimulatorSettings::Changes(int Channel, std::string_view what) const {
    if (what == BackgroundColorName)
        return std::to_string(backColor_.R) + "," + std::to_string(backColor_.G) + "," +
               std::to_string(backColor_.B);
    if (what == BackgroundImageName)
        return backgroundImage_;
    if (what == LightImageName && isLight(Channel))
        return lightImage(Channel);
    if (what == LightPositionName && isLight(Channel))
        return text(position(Channel));
    if (what == AllPositionsName) {
        std::string all;
        for (const Position& position : positions_)
            all += (all.empty() ? "" : ";") + text(position);
        return all;
    }
    return {};
}

bool LumoraSimulatorSettings::setChanges(int Channel, std::string_view what,
                                         std::string_view value) {
    if (what == BackgroundColorName) {
        const auto parts = split(value, ',');
        const auto part = [&parts](std::size_t index) {
            return std::clamp(numberAt(parts, index), 0, 255);
        };
        backColor_ = {part(0), part(1), part(2)};
    } else if (what == BackgroundImageName) {
        backgroundImage_ = value;
    } else if (what == LightImageName && isLight(Channel)) {
        images_[place(Channel)] = value;
    } else if (what == LightPositionName && isLight(Channel)) {
        const auto parts = split(value, ',');
        positions_[place(Channel)] = {numberAt(parts, 0), numberAt(parts, 1)};
    } else if (what == AllPositionsName) {
        int light = 0;
        for (const std::string_view part : split(value, ';'))
            if (++light <= LightCount)
                setChanges(light, LightPositionName, part);
    } else {
        return false;
    }
    return true;
}

void LumoraSimulatorSettings::ResetToDefaults() {
    backColor_ = buttonFace_;
    backgroundImage_.clear();
    for (int light = 1; light <= LightCount; ++light) {
        images_[place(light)].clear();
        const double angle = light * FullCircle / LightCount;
        positions_[place(light)] = {RoundToInteger(std::cos(angle) * Radius),
                                    RoundToInteger(std::sin(angle) * Radius)};
    }
}

} // namespace corvane
