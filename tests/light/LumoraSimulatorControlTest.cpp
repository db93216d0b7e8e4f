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
    History& ownHistory = own.document.HistoryObject();
    std::string file = "Lumora\t302\t302\t0\t2\n";
    const auto addPicture = [&](int light, int width) {
        file += "LumoraText\t" + std::to_string(light) + "\tSim Light Image\t\t" +
                pictureText(plain(width, 3, 0xFF0000FFU)) + "\n";
    };
    for (int i = 0; i < 300; ++i)
        addPicture(1 + i % 6, 2 + i);
    addPicture(1, 400);
    addPicture(4, 400);
    const std::string path = desk.folder.file("a.lumora", file);
    ASSERT_TRUE(ownHistory.OpenHistory(path));
    EXPECT_EQ(images.decoded, 0); // nobody looks
    own.TabStrip1.select(SimulatorTab);
    EXPECT_EQ(images.decoded, 5); // one of the six lights has the same as another
    EXPECT_EQ(own.simulatorControl.light(4).width, 400);
    EXPECT_EQ(own.simulatorControl.light(6).width, 301);
    ownHistory.Undo();
    ownHistory.Redo();
    EXPECT_EQ(images.decoded, 5); // another light has it still
    desk.person.answers = {Answer::No};
    ASSERT_TRUE(ownHistory.OpenHistory(path));
    EXPECT_EQ(images.decoded, 10);
}

TEST_F(SimulatorControl, TheLightsStandOnACircleAtFirst) {
    EXPECT_EQ(document.Data(0, "Sim Light Position [All]"),
              "75,130;-75,130;-150,0;-75,-130;75,-130;150,0");
    EXPECT_EQ(document.Data(1, "Sim Light Position"), "75,130");
    EXPECT_EQ(document.Data(0, "Sim Background Color"), "240,240,240");
    const auto& light = canvas.light(1);
    EXPECT_EQ(light.left, 75 + 288);
    EXPECT_EQ(light.top, 130 + 187);
    EXPECT_EQ(light.color, KORgbValue()); // dark
    EXPECT_EQ(canvas.lightAt(light.left, light.top), 1);
    EXPECT_EQ(canvas.lightAt(0, 0), 0);
}

TEST_F(SimulatorControl, ADragIsOneStepAndStaysOnTheCanvas) {
    drag(3, 10, -20);
    EXPECT_EQ(lines(), "LumoraText\t3\tSim Light Position\t-150,0\t-140,-20\n");
    drag(3, 0, 0); // a click moves nothing
    EXPECT_EQ(history.Length(), 1);
    drag(3, -9999, 9999);
    EXPECT_EQ(document.Data(3, "Sim Light Position"), "-288,188");
    EXPECT_EQ(canvas.light(3).left, 0);
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
    // The second holds the same picture, and the others none.
    desk.person.files = {bitmapFile("a.bmp"), bitmapFile("b.bmp"), std::nullopt,
                         desk.folder.file("c.bmp", "no picture"), "/nowhere.bmp"};
    for (int i = 0; i < 5; ++i)
        canvas.mnuCanvasChangeBackground.choose();
    EXPECT_TRUE(desk.person.asked.back().starts_with(
        "Change Picture: All Pictures|*.bmp;*.gif;*.jpg;*.jpeg;*.p"));
    EXPECT_EQ(desk.person.messages.size(), 2U);
    EXPECT_EQ(desk.person.takeMessage(), "Error: Could not read the picture file.");
    EXPECT_EQ(history.Length(), 1);
    EXPECT_EQ(canvas.background().left, 299);
    EXPECT_EQ(canvas.background().picture.pixels,
              (std::vector<std::uint32_t>{0xFFFFFFFF, 0xFFFF0000, 0xFF000000, 0xFF0000FF}));
    canvas.takePicture(4, bitmapFile("d.bmp")); // as by dropping it
    EXPECT_EQ(canvas.light(4).width, 2);
    canvas.openMenu(4);
    EXPECT_TRUE(canvas.mnuLightResetPicture.Enabled());
    canvas.mnuLightResetPicture.choose();
    canvas.mnuLightResetPicture.choose();
    EXPECT_EQ(canvas.light(4).width, 25);
    EXPECT_EQ(history.Length(), 3);
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
    control.TabStrip1.select(1);
    EXPECT_FALSE(canvas.AutoUpdate());
    add(1, false, 100, 0.1);
    add(1, false, 40, 0.1);
    control.TabStrip1.select(SimulatorTab);
    control.tripPoint.TripPointValue.type("80");
    int redraws = 0;
    const Connection onLight = canvas.LightChanged.connect([&](int) { ++redraws; });
    const auto colorAfter = [&](std::uint64_t milliseconds) {
        redraws = 0;
        desk.bench.clock.advance(milliseconds);
        canvas.UpdateTimer.Fired.raise();
        return canvas.light(1).color;
    };
    EXPECT_EQ(colorAfter(5000), KORgbValue(255, 255, 255)); // begins anew, whatever has passed
    colorAfter(50);
    EXPECT_EQ(redraws, 0); // steady
    EXPECT_EQ(colorAfter(60), KORgbValue(102, 102, 102));
    EXPECT_EQ(redraws, 1);
    for (const double factor : {0.25, 1.0}) {
        canvas.SlowMotionCheck.toggle();
        EXPECT_EQ(control.simulator.MotionMultiplier(), factor);
    }
    canvas.SimulateLossOfSignalCheck.toggle();
    canvas.SimulateHysteresisCheck.toggle();
    EXPECT_TRUE(control.simulator.SimulateLossOfSignal());
    EXPECT_TRUE(control.simulator.SimulateHysteresis());
}

TEST(Images, LightIsAddedToWhatLiesBehind) {
    QtImages images;
    images.SetImage(plain(2, 1, 0xFF404040));
    images.CacheImage("back");
    images.SetImage({3, 1, {0xFFFFFFFF, 0x00FFFFFF, 0x80FFFFFF}});
    images.ColorizeImage(255, 0, 0);
    images.MakeTransparentImage("back", 0, 0, 0, 0, 32);
    // Full light, none, and half of it beside the background.
    EXPECT_THAT(images.GetImage().pixels, ElementsAre(0xFFFF4040, 0xFF404040, 0xFF800020));
    images.SetImage(plain(1, 1, 0xFFFFFFFF));
    images.ColorizeImage(0, 0, 0);
    images.MakeTransparentImage("back", 1, 0, 9, 9, 9);
    EXPECT_THAT(images.GetImage().pixels, ElementsAre(0xFF404040)); // a dark light changes nothing
}

TEST(Images, GoThereAndBackAsTextAndRefuseWhatIsTooLarge) {
    QtImages images;
    const Picture picture{2, 1, {0x80102030, 0xFFFFFFFF}};
    images.SetImage(picture);
    EXPECT_TRUE(images.LoadImage(images.SaveImage()));
    EXPECT_EQ(images.GetImage(), picture);
    EXPECT_TRUE(images.LoadImage(""));
    EXPECT_EQ(images.SaveImage(), "");
    images.SetImage(plain(4097, 1, 0xFF000000));
    EXPECT_FALSE(images.LoadImage(images.SaveImage()));
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
