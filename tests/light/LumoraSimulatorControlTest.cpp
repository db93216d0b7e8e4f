#define QT_NO_KEYWORDS // among them are words of ours
#include "kolib/images/QtImages.h"
#include "support/LightBench.h"

#include <gmock/gmock.h>

namespace corvane {
namespace {

using testing::ElementsAre;

constexpr int SimulatorTab = 9;

Picture plain(int width, int height, std::uint32_t color) {
    return {width, height,
            std::vector<std::uint32_t>(
                static_cast<std::size_t>(width) * static_cast<std::size_t>(height), color)};
}

class SimulatorControl : public testing::Test, public LightBench {
  protected:
    LumoraSimulatorControl& canvas = control.simulatorControl;

    SimulatorControl() {
        canvas.Resize(601, 400);
        control.TabStrip1.select(SimulatorTab);
    }
    std::string pictureText(const Picture& picture) {
        desk.images.SetImage(picture);
        return desk.images.SaveImage();
    }
    /// A picture file that no program of ours has written.
    std::string bitmapFile(const std::string& name) {
        // 2 by 2 pixels, 24 bits, rows from below: white and red, then black and blue.
        const std::vector<unsigned char> bytes{
            'B', 'M', 70, 0, 0,  0, 0, 0, 0, 0,   54, 0, 0, 0, 40,  0,   0,   0, 2, 0,   0, 0, 2, 0,
            0,   0,   1,  0, 24, 0, 0, 0, 0, 0,   16, 0, 0, 0, 0,   0,   0,   0, 0, 0,   0, 0, 0, 0,
            0,   0,   0,  0, 0,  0, 0, 0, 0, 255, 0,  0, 0, 0, 255, 255, 255, 0, 0, 255, 0, 0};
        return desk.folder.file(name, std::string(bytes.begin(), bytes.end()));
    }
    void drag(int light, int dx, int dy) {
        canvas.pressLight(light, 5, 5);
        canvas.moveLight(light, 5 + dx, 5 + dy);
        canvas.releaseLight(light);
    }
};

/// Counts what is decoded.
class CountedImages final : public QtImages {
  public:
    int decoded = 0;

    bool LoadImage(const std::string& text) override {
        ++decoded;
        return QtImages::LoadImage(text);
    }
};

TEST_F(SimulatorControl, DecodesWhatIsSeenAndOnceWhatIsTheSame) {
    CountedImages images;
    const Workplace& at = desk.place;
    const Workplace place{at.link,  at.device, at.products, at.modes,   at.clock,
                          at.pause, at.debug,  at.debugger, at.dialogs, at.pointer,
                          at.files, images,    at.programs, at.registry};
    LumoraControl own(place, desk.keys);
    std::string file = "Lumora\t302\t302\t0\t2\n";
    for (int i = 0; i < 300; ++i) {
        const std::string picture = pictureText(plain(2 + i, 3, 0xFF0000FFU));
        file +=
            "LumoraText\t" + std::to_string(1 + i % 6) + "\tSim Light Image\t\t" + picture + "\n";
    }
    const std::string last = pictureText(plain(40, 30, 0xFF00FF00U));
    for (const char* light : {"1", "4"})
        file += "LumoraText\t" + std::string(light) + "\tSim Light Image\t\t" + last + "\n";
    const std::string path = desk.folder.file("a.lumora", file);
    ASSERT_TRUE(own.document.HistoryObject().OpenHistory(path));
    EXPECT_EQ(images.decoded, 0); // nobody looks
    own.TabStrip1.select(SimulatorTab);
    EXPECT_EQ(images.decoded, 5); // one of the six lights has the same as another
    EXPECT_EQ(own.simulatorControl.light(4).width, 40);
    EXPECT_EQ(own.simulatorControl.light(6).width, 301);
    own.document.HistoryObject().Undo();
    own.document.HistoryObject().Redo();
    EXPECT_EQ(images.decoded, 5); // another light has it still
    ASSERT_TRUE(own.document.HistoryObject().SaveDirty());
    desk.person.answers = {Answer::No};
    ASSERT_TRUE(own.document.HistoryObject().OpenHistory(path));
    EXPECT_EQ(images.decoded, 10);
}

TEST_F(SimulatorControl, TheLightsStandOnACircleAtFirst) {
    EXPECT_EQ(document.Data(0, "Sim Light Position [All]"),
              "75,130;-75,130;-150,0;-75,-130;75,-130;150,0");
    EXPECT_EQ(document.Data(1, "Sim Light Position"), "75,130");
    EXPECT_EQ(document.Data(0, "Sim Background Color"), "240,240,240");
    EXPECT_EQ(document.Data(1, "Sim Nonsense"), "");
    const auto& light = canvas.light(1);
    EXPECT_EQ(light.width, 25);
    EXPECT_EQ(light.left, 75 + 288);
    EXPECT_EQ(light.top, 130 + 187);
    EXPECT_EQ(light.color, KORgbValue()); // dark
    EXPECT_EQ(canvas.lightAt(light.left, light.top), 1);
    EXPECT_EQ(canvas.lightAt(0, 0), 0);
}

TEST_F(SimulatorControl, ADragIsOneStepAndStaysOnTheCanvas) {
    drag(3, 10, -20);
    EXPECT_EQ(lines(), "LumoraText\t3\tSim Light Position\t-150,0\t-140,-20\n");
    canvas.pressLight(3, 5, 5);
    canvas.moveLight(3, 5, 5);
    canvas.releaseLight(3); // a click moves nothing
    EXPECT_EQ(history.Length(), 1);
    drag(3, -9999, 9999);
    EXPECT_EQ(canvas.light(3).left, 0);
    EXPECT_EQ(canvas.light(3).top, 375);
    EXPECT_EQ(document.Data(3, "Sim Light Position"), "-288,188");
    history.Undo();
    EXPECT_EQ(canvas.light(3).left, -140 + 288);
    canvas.pressLight(2, 0, 0);
    canvas.pressLight(4, 0, 0); // another one at the same time is none
    EXPECT_EQ(canvas.draggedLight(), 2);
    canvas.releaseLight(2);
    canvas.Resize(20, 20); // smaller than a light: its upper limit lies below 0
    EXPECT_EQ(canvas.light(1).left, -5);
}

TEST_F(SimulatorControl, PicturesComeFromFilesAndGoBack) {
    canvas.openMenu(0);
    EXPECT_FALSE(canvas.mnuCanvasResetBackground.Enabled());
    desk.person.files = {bitmapFile("a.bmp"), bitmapFile("b.bmp"), std::nullopt,
                         desk.folder.file("c.bmp", "no picture"), "/nowhere.bmp"};
    canvas.mnuCanvasChangeBackground.choose();
    EXPECT_EQ(desk.person.asked.back().substr(0, 57),
              "Change Picture: All Pictures|*.bmp;*.gif;*.jpg;*.jpeg;*.p");
    EXPECT_EQ(canvas.background().width, 2);
    EXPECT_EQ(canvas.background().left, 299);
    EXPECT_EQ(canvas.background().picture.pixels,
              (std::vector<std::uint32_t>{0xFFFFFFFF, 0xFFFF0000, 0xFF000000, 0xFF0000FF}));
    canvas.mnuCanvasChangeBackground.choose(); // the same picture
    canvas.mnuCanvasChangeBackground.choose(); // canceled
    EXPECT_EQ(history.Length(), 1);
    for (int i = 0; i < 2; ++i) {
        canvas.mnuCanvasChangeBackground.choose();
        EXPECT_EQ(desk.person.takeMessage(), "Error: Could not read the picture file.");
    }
    canvas.takePicture(4, bitmapFile("d.bmp")); // as by dropping it
    EXPECT_EQ(canvas.light(4).width, 2);
    canvas.openMenu(4);
    EXPECT_TRUE(canvas.mnuLightResetPicture.Enabled());
    canvas.mnuLightResetPicture.choose();
    canvas.mnuLightResetPicture.choose();
    EXPECT_EQ(canvas.light(4).width, 25);
    EXPECT_EQ(history.Length(), 3);
    history.Undo();
    EXPECT_EQ(canvas.light(4).width, 2);
    const std::string path = desk.folder.path() / "saved.lumora";
    desk.person.files = {path};
    ASSERT_TRUE(history.SaveHistoryAs());
    ASSERT_TRUE(history.NewHistory());
    EXPECT_TRUE(canvas.background().picture.empty());
    ASSERT_TRUE(history.OpenHistory(path));
    EXPECT_EQ(canvas.background().picture.pixels[1], 0xFFFF0000);
}

TEST_F(SimulatorControl, TheCanvasTakesAColour) {
    desk.person.colors = {std::nullopt, 0xF0F0F0, 0x0000FF};
    for (int i = 0; i < 3; ++i)
        canvas.mnuCanvasSetBackgroundColor.choose();
    EXPECT_EQ(lines(), "LumoraText\t0\tSim Background Color\t240,240,240\t255,0,0\n");
    EXPECT_EQ(canvas.BackColor(), KORgbValue(255, 0, 0));
}

TEST_F(SimulatorControl, APictureIsSeenOnTheUntouchedCanvasAtAnyBrightness) {
    add(1, false, 100, 1);
    setData(document, 1, "Sim Light Image", pictureText(plain(1, 1, 0xFFFFFFFF)));
    const auto shown = [this] { return canvas.light(1).picture.pixels[0] & 0xFF; };
    const unsigned ground = 240;
    control.tripPoint.TripPointValue.type("0"); // dark
    EXPECT_LT(shown(), ground - 100);
    control.tripPoint.TripPointValue.type("80");
    EXPECT_GT(shown(), ground);
    setData(document, 0, "Sim Background Color", "0,0,0"); // on which light is seen anyway
    EXPECT_TRUE(canvas.light(1).lens.empty());
}

TEST_F(SimulatorControl, UnsoundTextsOfADocumentDoNoHarm) {
    const std::string good = pictureText(plain(3, 3, 0xFFFFFFFF));
    for (const std::string& text :
         {std::string("AAAA"), std::string("not base64 !"), good.substr(0, good.size() - 20),
          good + "x", std::string(100000, 'A')}) {
        setData(document, 2, "Sim Light Image", text);
        EXPECT_EQ(canvas.light(2).width, 25) << text.substr(0, 20);
        EXPECT_EQ(document.Data(2, "Sim Light Image"), text); // and nothing is lost
    }
    setData(document, 2, "Sim Light Position", "12");
    EXPECT_EQ(document.Data(2, "Sim Light Position"), "12,0");
    setData(document, 0, "Sim Light Position [All]", "1,2;3,4;;x");
    EXPECT_EQ(document.Data(0, "Sim Light Position [All]"), "1,2;3,4;0,0;0,0;75,-130;150,0");
    setData(document, 0, "Sim Background Color", "999,-5");
    EXPECT_EQ(canvas.BackColor(), KORgbValue(255, 0, 0));
}

TEST_F(SimulatorControl, TheClockRunsOnlyOnItsTabAndStartsAnew) {
    EXPECT_TRUE(canvas.AutoUpdate());
    EXPECT_EQ(canvas.UpdateTimer.Interval(), 25);
    control.TabStrip1.select(1);
    EXPECT_FALSE(canvas.AutoUpdate());
    add(1, false, 100, 0.1);
    add(1, false, 40, 0.1);
    control.TabStrip1.select(SimulatorTab);
    control.tripPoint.TripPointValue.type("80");
    int redraws = 0;
    const Connection onLight = canvas.LightChanged.connect([&](int) { ++redraws; });
    desk.bench.clock.advance(5000);
    canvas.UpdateTimer.Fired.raise(); // begins anew, whatever has passed
    EXPECT_EQ(canvas.light(1).color, KORgbValue(255, 255, 255));
    redraws = 0;
    desk.bench.clock.advance(50);
    canvas.UpdateTimer.Fired.raise();
    EXPECT_EQ(redraws, 0); // steady
    desk.bench.clock.advance(60);
    canvas.UpdateTimer.Fired.raise();
    EXPECT_EQ(canvas.light(1).color, KORgbValue(102, 102, 102));
    EXPECT_EQ(redraws, 1);
    canvas.SlowMotionCheck.toggle();
    EXPECT_EQ(control.simulator.MotionMultiplier(), 0.25);
    canvas.SimulateLossOfSignalCheck.toggle();
    canvas.SimulateHysteresisCheck.toggle();
    EXPECT_TRUE(control.simulator.SimulateLossOfSignal());
    EXPECT_TRUE(control.simulator.SimulateHysteresis());
    canvas.SlowMotionCheck.toggle();
    EXPECT_EQ(control.simulator.MotionMultiplier(), 1);
}

TEST(Images, LightIsAddedToWhatLiesBehind) {
    QtImages images;
    images.SetImage(plain(2, 1, 0xFF404040));
    images.CacheImage("back");
    images.SetImage({3, 1, {0xFFFFFFFF, 0x00FFFFFF, 0x80FFFFFF}});
    images.ColorizeImage(255, 0, 0);
    EXPECT_EQ(images.GetImage().pixels[0], 0xFFFF0000);
    images.MakeTransparentImage("back", 0, 0, 0, 0, 32);
    const Picture lit = images.GetImage();
    EXPECT_EQ(lit.pixels[0], 0xFFFF4040); // full light
    EXPECT_EQ(lit.pixels[1], 0xFF404040); // none
    EXPECT_EQ(lit.pixels[2], 0xFF800020); // half, beside the background
    images.SetImage(plain(1, 1, 0xFFFFFFFF));
    images.ColorizeImage(0, 0, 0);
    images.MakeTransparentImage("back", 1, 0, 9, 9, 9);
    EXPECT_EQ(images.GetImage().pixels[0], 0xFF404040); // a dark light changes nothing
}

TEST(Images, GoThereAndBackAsTextAndRefuseWhatIsTooLarge) {
    QtImages images;
    const Picture picture{2, 1, {0x80102030, 0xFFFFFFFF}};
    images.SetImage(picture);
    const std::string text = images.SaveImage();
    EXPECT_TRUE(images.LoadImage(text));
    EXPECT_EQ(images.GetImage(), picture);
    images.CacheImage("a");
    EXPECT_TRUE(images.LoadImage(""));
    int width = 9;
    int height = 9;
    images.GetImageSizes(width, height);
    EXPECT_EQ(width + height, 0);
    EXPECT_EQ(images.SaveImage(), "");
    images.UncacheImage("a");
    EXPECT_EQ(images.GetImage(), picture);
    images.UncacheImage("unknown");
    EXPECT_TRUE(images.GetImage().empty());
    images.SetImage(plain(4097, 1, 0xFF000000));
    const std::string wide = images.SaveImage();
    EXPECT_FALSE(images.LoadImage(wide));
    EXPECT_TRUE(images.GetImage().empty());
    // A file that a person chooses is made to fit.
    images.SetImage(plain(8192, 6, 0xFF336699));
    const TemporaryFolder folder;
    const auto chosen = images.DecodeFile(folder.file("wide.png", images.SavePng()));
    ASSERT_TRUE(chosen);
    EXPECT_EQ(*chosen, plain(4096, 3, 0xFF336699));
}

} // namespace
} // namespace corvane
