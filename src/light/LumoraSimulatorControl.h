#pragma once

#include "controls/Inputs.h"
#include "controls/Menu.h"
#include "kolib/KOImages.h"
#include "light/LumoraOptions.h"
#include "light/LumoraSimulator.h"

#include <set>

namespace corvane {

/// The picture on the "Simulator" tab: a background, and a light for each channel that can be
/// dragged into place and shows what the simulator plays. Everything that a person does here is
/// recorded through the options. Lights count from 1; sizes and places are pixels from the canvas's
/// corner.
class LumoraSimulatorControl {
  public:
    struct Surroundings {
        LumoraDocument& document;
        LumoraSimulator& simulator;
        LumoraOptions& options; ///< Records the changes.
        KOImages& images;
        Dialogs& dialogs;
    };
    /// Where something stands on the canvas and what it shows; no picture means one colour. A light
    /// with a picture on a bright canvas has a lens too, which is dark where the picture is.
    struct Patch {
        int left = 0;
        int top = 0;
        int width = 0;
        int height = 0;
        Picture picture;
        Picture lens;
        KORgbValue color;
    };

    explicit LumoraSimulatorControl(const Surroundings& surroundings);
    LumoraSimulatorControl(const LumoraSimulatorControl&) = delete;
    LumoraSimulatorControl& operator=(const LumoraSimulatorControl&) = delete;

    Event<int> LightChanged; ///< Shows something else, perhaps elsewhere.
    Event<> CanvasChanged;   ///< Colour, background, or everything.

    [[nodiscard]] KORgbValue BackColor() const { return settings().backColor(); }
    [[nodiscard]] const Patch& background() const { return background_; }
    [[nodiscard]] const Patch& light(int Channel) const { return lights_[place(Channel)]; }
    /// The topmost light at a point; 0 for none.
    [[nodiscard]] int lightAt(int x, int y) const;

    void Resize(int width, int height);
    [[nodiscard]] int CanvasHeight() const { return height_; }
    /// Whether the picture is seen. What is not seen is not worked out.
    void setShown(bool shown);
    /// Whether the clock runs. When it begins to, all tracks begin anew.
    [[nodiscard]] bool AutoUpdate() const { return UpdateTimer.Enabled(); }
    void setAutoUpdate(bool run);
    /// The desktop's colour for buttons, which an untouched canvas has.
    void setButtonFace(KORgbValue color);
    /// Takes everything from the document.
    void refresh();
    void redrawLight(int Channel) { updateLight(Channel); }

    // Dragging, by the pointer's place within the light.
    void pressLight(int Channel, int x, int y);
    void moveLight(int Channel, int x, int y);
    void releaseLight(int Channel);
    /// Puts back the light that is being dragged.
    void cancelDrag();
    [[nodiscard]] int draggedLight() const { return drag_; }

    /// A picture file for a light, or with 0 for the background.
    void takePicture(int Channel, const std::string& path);

    Timer UpdateTimer{25};
    CheckBox SlowMotionCheck{"Slow Motion"};
    CheckBox SimulateLossOfSignalCheck{"Simulate Loss of Signal"};
    CheckBox SimulateHysteresisCheck{"Simulate Hysteresis"};
    Frame OptionsFrame;
    std::array<Button, LumoraDocument::ChannelCount> LightChannelButton;
    Button BackgroundOptionsButton{"Background Options"};

    MenuItem mnuCanvasChangeBackground{"Change &Background..."};
    MenuItem mnuCanvasResetBackground{"&Reset Background"};
    MenuItem mnuCanvasSeparator1{MenuItem::Separator};
    MenuItem mnuCanvasSetBackgroundColor{"Set Background &Color..."};
    MenuItem mnuLightChangePicture{"Change &Picture..."};
    MenuItem mnuLightResetPicture{"&Reset Picture"};
    /// A menu is to pop up: for a light, or with 0 for the canvas. It is ready when this is raised.
    Event<int> MenuWanted;
    void openMenu(int Channel);
    [[nodiscard]] std::vector<MenuPlace> menuLayout(int Channel);

  private:
    [[nodiscard]] static std::size_t place(int Channel);
    [[nodiscard]] const LumoraSimulatorSettings& settings() const {
        return with_.document.simulator();
    }
    void settingChanged(std::string_view name, int channel);
    void show(std::string_view name, int channel);
    void catchUp();
    void loadImages(int Channel);
    void showBackground();
    void positionLight(int Channel);
    void updateLight(int Channel);
    void makeLens(int Channel);
    void updateAllLights();
    void placeLight(int Channel, int left, int top);
    void choosePicture(int Channel);
    void resetPicture(int Channel);
    void chooseColor();
    void tick();

    Surroundings with_;
    bool shown_ = false;
    int frozen_ = 0;
    std::set<std::pair<std::string, int>> due_; // settings that changed and were not shown
    std::array<std::string, LumoraDocument::ChannelCount + 1> decoded_; // texts of the images
    int width_ = 0;
    int height_ = 0;
    Patch background_;
    std::array<Patch, LumoraDocument::ChannelCount> lights_;
    int drag_ = 0;
    int grabX_ = 0;
    int grabY_ = 0;
    bool moved_ = false;
    int menuChannel_ = 0;
    bool restart_ = false;
    Connections on_;
};

} // namespace corvane
