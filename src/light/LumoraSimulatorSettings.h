#pragma once

#include "base/KORgbValue.h"

#include <array>
#include <string>
#include <string_view>

namespace corvane {

/// What a light document says of the simulator's picture: the canvas's colour, the pictures as
/// text, and where the lights stand, in pixels from where they would be centred.
class LumoraSimulatorSettings {
  public:
    static constexpr int LightCount = 6;
    struct Position {
        int x = 0;
        int y = 0;
        bool operator==(const Position&) const = default;
    };
    static constexpr std::string_view BackgroundColorName = "Sim Background Color";
    static constexpr std::string_view BackgroundImageName = "Sim Background Image";
    static constexpr std::string_view LightImageName = "Sim Light Image";
    static constexpr std::string_view LightPositionName = "Sim Light Position";
    static constexpr std::string_view AllPositionsName = "Sim Light Position [All]";

    LumoraSimulatorSettings() { ResetToDefaults(); }

    /// A value by its name as text; empty for a name that is none.
    [[nodiscard]] std::string Changes(int Channel, std::string_view what) const;
    /// False for a name that is none.
    bool setChanges(int Channel, std::string_view what, std::string_view text);
    void ResetToDefaults();
    /// The colour of the canvas where a document sets none: that of the desktop's buttons.
    void setButtonFace(KORgbValue color) { buttonFace_ = color; }

    [[nodiscard]] KORgbValue backColor() const { return backColor_; }
    [[nodiscard]] const std::string& backgroundImage() const { return backgroundImage_; }
    /// Lights count from 1.
    [[nodiscard]] const std::string& lightImage(int light) const { return images_[place(light)]; }
    [[nodiscard]] Position position(int light) const { return positions_[place(light)]; }

  private:
    [[nodiscard]] static std::size_t place(int light);
    static bool isLight(int channel) { return channel >= 1 && channel <= LightCount; }

    KORgbValue buttonFace_{240, 240, 240};
    KORgbValue backColor_;
    std::string backgroundImage_;
    std::array<std::string, LightCount> images_;
    std::array<Position, LightCount> positions_;
};

} // namespace corvane
