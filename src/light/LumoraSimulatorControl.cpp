#include "light/LumoraSimulatorControl.h"

#include "base/Assert.h"

#include <algorithm>

namespace corvane {

namespace {

using Settings = LumoraSimulatorSettings;

constexpr const char* BackgroundName = "Background";
constexpr int PlainSize = 25;     // pixels of a light without a picture
constexpr int BrightGround = 128; // of 255, on which light is hard to see
constexpr const char* PictureFilter =
    "All Pictures|*.bmp;*.gif;*.jpg;*.jpeg;*.png|PNG Images "
    "(*.png)|*.png|All Picture Files|*.bmp;*.gif;*.jpg;*.jpeg|Bitmaps "
    "(*.bmp)|*.bmp|GIF Images (*.gif)|*.gif|JPEG "
    "Images (*.jpg;*.jpeg)|*.jpg;*.jpeg|All Files (*.*)|*.*";

std::string lightName(int channel) {
    return std::to_string(channel);
}

std::string lensName(int channel) {
    return "Lens " + std::to_string(channel);
}

std::string imageName(int channel) {
    return channel == 0 ? BackgroundName : lightName(channel);
}

/// Half of what is left beside something centred.
int margin(int room, int size) {
    return (room - size) / 2;
}

/// First not below 0, and then not beyond the edge, which may lie below 0 itself.
int limited(int value, int room, int size) {
    return std::min(std::max(value, 0), room - size);
}

std::string imageSetting(int channel) {
    return std::string(channel == 0 ? Settings::BackgroundImageName : Settings::LightImageName);
}

} // namespace

LumoraSimulatorControl::LumoraSimulatorControl(const Surroundings& surroundings)
    : LightChannelButton{Button("1"), Button("2"), Button("3"),
                         Button("4"), Button("5"), Button("6")},
      with_(surroundings) {
    on_(with_.document.SettingChanged,
        [this](std::string_view name, int channel) { settingChanged(name, channel); });
    History& history = with_.document.HistoryObject();
    on_(history.Freezing, [this] { ++frozen_; });
    on_(history.Unfreezing, [this](bool) {
        --frozen_;
        catchUp();
    });
    on_(with_.simulator.BrightnessChanged, [this](int channel) { updateLight(channel); });
    on_(UpdateTimer.Fired, [this] { tick(); });
    on_(SlowMotionCheck.Click,
        [this] { with_.simulator.setMotionMultiplier(SlowMotionCheck.Value() ? 0.25 : 1); });
    on_(SimulateLossOfSignalCheck.Click,
        [this] { with_.simulator.setSimulateLossOfSignal(SimulateLossOfSignalCheck.Value()); });
    on_(SimulateHysteresisCheck.Click,
        [this] { with_.simulator.setSimulateHysteresis(SimulateHysteresisCheck.Value()); });
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel) {
        Button& button = LightChannelButton[place(channel)];
        button.setToolTipText("Choose or reset the picture of this channel's light");
        on_(button.Click, [this, channel] { openMenu(channel); });
    }
    on_(BackgroundOptionsButton.Click, [this] { openMenu(0); });
    on_(mnuCanvasChangeBackground.Click, [this] { choosePicture(0); });
    on_(mnuCanvasResetBackground.Click, [this] { resetPicture(0); });
    on_(mnuCanvasSetBackgroundColor.Click, [this] { chooseColor(); });
    on_(mnuLightChangePicture.Click, [this] { choosePicture(menuChannel_); });
    on_(mnuLightResetPicture.Click, [this] { resetPicture(menuChannel_); });
    SlowMotionCheck.setToolTipText("Play at a quarter of the speed");
    SimulateLossOfSignalCheck.setToolTipText("Play what plays when no transmitter is heard");
    SimulateHysteresisCheck.setToolTipText("Change tracks only beyond the hysteresis");
    BackgroundOptionsButton.setToolTipText("Choose a picture of the model, or a colour");
    refresh();
}

std::size_t LumoraSimulatorControl::place(int Channel) {
    Assert(Channel >= 1 && Channel <= LumoraDocument::ChannelCount);
    return static_cast<std::size_t>(Channel) - 1;
}

void LumoraSimulatorControl::refresh() {
    due_.clear();
    drag_ = 0;
    for (int channel = 0; channel <= LumoraDocument::ChannelCount; ++channel)
        loadImages(channel);
    showBackground();
}

void LumoraSimulatorControl::setButtonFace(KORgbValue color) {
    with_.document.setButtonFace(color);
    refresh();
}

/// What nobody sees is not worked out, and in a burst of changes only the last one counts: a file
/// may hold hundreds of large pictures.
void LumoraSimulatorControl::settingChanged(std::string_view name, int channel) {
    if (!name.starts_with(LumoraDocument::SimulatorStart))
        return;
    due_.emplace(name, channel);
    catchUp();
}

void LumoraSimulatorControl::setShown(bool shown) {
    shown_ = shown;
    catchUp();
}

void LumoraSimulatorControl::catchUp() {
    if (frozen_ > 0 || !shown_)
        return;
    for (const auto& [name, channel] : std::exchange(due_, {}))
        show(name, channel);
}

void LumoraSimulatorControl::show(std::string_view name, int channel) {
    if (name == Settings::BackgroundColorName) {
        showBackground();
    } else if (name == Settings::BackgroundImageName) {
        loadImages(0);
        showBackground();
    } else if (name == Settings::LightImageName) {
        loadImages(channel);
        makeLens(channel);
        updateLight(channel);
        positionLight(channel);
    } else if (name == Settings::LightPositionName) {
        positionLight(channel);
    } else if (name == Settings::AllPositionsName) {
        for (int light = 1; light <= LumoraDocument::ChannelCount; ++light)
            positionLight(light);
    }
}

/// Decodes a picture of the document once, so that a frame only copies it, and one that several
/// lights have once for all.
void LumoraSimulatorControl::loadImages(int Channel) {
    const auto own = static_cast<std::size_t>(Channel);
    const std::string& text =
        Channel == 0 ? settings().backgroundImage() : settings().lightImage(Channel);
    const auto same = std::find(decoded_.begin(), decoded_.end(), text);
    if (same == decoded_.begin() + Channel && !text.empty())
        return;
    if (text.empty())
        with_.images.ResetImage();
    else if (same != decoded_.end())
        with_.images.UncacheImage(imageName(static_cast<int>(same - decoded_.begin())));
    else
        with_.images.LoadImage(text);
    with_.images.CacheImage(imageName(Channel));
    decoded_[own] = text;
}

// The canvas

void LumoraSimulatorControl::Resize(int width, int height) {
    if (width == width_ && height == height_)
        return;
    width_ = width;
    height_ = height;
    showBackground();
}

void LumoraSimulatorControl::showBackground() {
    with_.images.UncacheImage(BackgroundName);
    background_.picture = with_.images.GetImage();
    background_.width = background_.picture.width;
    background_.height = background_.picture.height;
    // Without a limit: a large one is centred and cut.
    background_.left = margin(width_, background_.width);
    background_.top = margin(height_, background_.height);
    background_.color = BackColor();
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel)
        makeLens(channel);
    updateAllLights();
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel)
        positionLight(channel);
    CanvasChanged.raise();
}

void LumoraSimulatorControl::positionLight(int Channel) {
    const Settings::Position position = settings().position(Channel);
    const Patch& patch = light(Channel);
    placeLight(Channel, position.x + margin(width_, patch.width),
               position.y + margin(height_, patch.height));
}

void LumoraSimulatorControl::placeLight(int Channel, int left, int top) {
    Patch& patch = lights_[place(Channel)];
    patch.left = limited(left, width_, patch.width);
    patch.top = limited(top, height_, patch.height);
    updateLight(Channel);
}

void LumoraSimulatorControl::updateLight(int Channel) {
    Patch& patch = lights_[place(Channel)];
    KOImages& images = with_.images;
    patch.color = with_.simulator.Colorization(Channel);
    images.UncacheImage(lightName(Channel));
    images.GetImageSizes(patch.width, patch.height);
    if (patch.width == 0 || patch.height == 0) {
        patch.width = patch.height = PlainSize;
        patch.picture = {};
    } else {
        const KORgbValue ground = BackColor();
        images.ColorizeImage(patch.color.R, patch.color.G, patch.color.B);
        if (patch.lens.empty())
            images.MakeTransparentImage(BackgroundName, patch.left - background_.left,
                                        patch.top - background_.top, ground.R, ground.G, ground.B);
        else
            images.MakeTransparentImage(lensName(Channel), 0, 0, ground.R, ground.G, ground.B);
        patch.picture = images.GetImage();
    }
    LightChanged.raise(Channel);
}

/// Light can't be seen on a bright canvas, but on the dark lens of an unlit lamp it can.
void LumoraSimulatorControl::makeLens(int Channel) {
    Patch& patch = lights_[place(Channel)];
    const KORgbValue ground = BackColor();
    patch.lens = {};
    if (!background_.picture.empty() || std::max({ground.R, ground.G, ground.B}) < BrightGround)
        return;
    KOImages& images = with_.images;
    images.UncacheImage(lightName(Channel));
    images.MakeLensImage(ground.R, ground.G, ground.B);
    images.CacheImage(lensName(Channel));
    patch.lens = images.GetImage();
}

void LumoraSimulatorControl::updateAllLights() {
    for (int channel = 1; channel <= LumoraDocument::ChannelCount; ++channel)
        updateLight(channel);
}

int LumoraSimulatorControl::lightAt(int x, int y) const {
    for (int channel = LumoraDocument::ChannelCount; channel >= 1; --channel) {
        const Patch& patch = light(channel);
        if (x >= patch.left && x < patch.left + patch.width && y >= patch.top &&
            y < patch.top + patch.height)
            return channel;
    }
    return 0;
}

// Time

void LumoraSimulatorControl::setAutoUpdate(bool run) {
    if (run && !AutoUpdate())
        restart_ = true;
    UpdateTimer.setEnabled(run);
}

void LumoraSimulatorControl::tick() {
    if (std::exchange(restart_, false))
        with_.simulator.Reset();
    with_.simulator.Update();
}

// Dragging

void LumoraSimulatorControl::pressLight(int Channel, int x, int y) {
    if (drag_ != 0 || Channel == 0)
        return;
    drag_ = Channel;
    grabX_ = x;
    grabY_ = y;
    moved_ = false;
}

void LumoraSimulatorControl::moveLight(int Channel, int x, int y) {
    if (Channel == 0 || drag_ != Channel || (x == grabX_ && y == grabY_))
        return;
    moved_ = true;
    placeLight(Channel, light(Channel).left + x - grabX_, light(Channel).top + y - grabY_);
}

void LumoraSimulatorControl::releaseLight(int Channel) {
    if (Channel == 0 || drag_ != Channel)
        return;
    drag_ = 0;
    if (!std::exchange(moved_, false))
        return;
    const Patch& patch = light(Channel);
    const int x = patch.left - margin(width_, patch.width);
    const int y = patch.top - margin(height_, patch.height);
    with_.options.record(Channel, std::string(Settings::LightPositionName),
                         std::to_string(x) + "," + std::to_string(y));
}

void LumoraSimulatorControl::cancelDrag() {
    if (const int dragged = std::exchange(drag_, 0); dragged != 0)
        positionLight(dragged);
}

// Menus

void LumoraSimulatorControl::openMenu(int Channel) {
    menuChannel_ = Channel;
    const bool has = Channel == 0 ? !settings().backgroundImage().empty()
                                  : !settings().lightImage(Channel).empty();
    (Channel == 0 ? mnuCanvasResetBackground : mnuLightResetPicture)
        .setEnabled(has, "There is no picture to reset.");
    MenuWanted.raise(Channel);
}

std::vector<MenuPlace> LumoraSimulatorControl::menuLayout(int Channel) {
    if (Channel != 0)
        return {{&mnuLightChangePicture, {}, nullptr}, {&mnuLightResetPicture, {}, nullptr}};
    return {{&mnuCanvasChangeBackground, {}, nullptr},
            {&mnuCanvasResetBackground, {}, nullptr},
            {&mnuCanvasSeparator1, {}, nullptr},
            {&mnuCanvasSetBackgroundColor, {}, nullptr}};
}

void LumoraSimulatorControl::choosePicture(int Channel) {
    if (const auto path = with_.dialogs.OpenFile(PictureFilter, "Change Picture"))
        takePicture(Channel, *path);
}

void LumoraSimulatorControl::takePicture(int Channel, const std::string& path) {
    const std::optional<Picture> picture = with_.images.DecodeFile(path);
    if (!picture) {
        with_.dialogs.ShowError("Could not read the picture file.");
        return;
    }
    with_.images.SetImage(*picture);
    const std::string text = with_.images.SaveImage();
    with_.options.record(Channel, imageSetting(Channel), text);
}

void LumoraSimulatorControl::resetPicture(int Channel) {
    with_.options.record(Channel, imageSetting(Channel), {});
}

void LumoraSimulatorControl::chooseColor() {
    const std::optional<int> chosen =
        with_.dialogs.PickColor(BackColor().Value(), "Set Background Color");
    if (!chosen)
        return;
    const KORgbValue color = KORgbValue::FromColor(*chosen);
    with_.options.record(0, std::string(Settings::BackgroundColorName),
                         std::to_string(color.R) + "," + std::to_string(color.G) + "," +
                             std::to_string(color.B));
}

} // namespace corvane
