// Documents of a size that nobody makes by hand, in the real window: opened, zoomed, scrolled,
// undone and saved in a time that grows little faster than they do, and in so much memory.
#include "support/HeavyDocuments.h"

#include "pwm/QuillonControl.h"
#include "support/Effort.h"
#include "support/Instrumented.h"
#include "support/ProductWindow.h"

#include <QTabBar>
#include <QWheelEvent>

#include <ctime>
#include <random>
#include <sys/resource.h>

namespace corvane {
namespace {

/// The address space may grow by so much and no more as long as this lives.
class MemoryBound {
  public:
    explicit MemoryBound(rlim_t bytes) {
        ::getrlimit(RLIMIT_AS, &before_);
        std::ifstream sizes("/proc/self/statm");
        rlim_t pages = 0;
        sizes >> pages;
        const rlimit bound{pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + bytes,
                           before_.rlim_max};
        if (!Instrumented) // whose shadow takes terabytes
            ::setrlimit(RLIMIT_AS, &bound);
    }
    ~MemoryBound() { ::setrlimit(RLIMIT_AS, &before_); }
    MemoryBound(const MemoryBound&) = delete;
    MemoryBound& operator=(const MemoryBound&) = delete;

  private:
    rlimit before_{};
};

/// Seconds that this program has computed.
double secondsComputed() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

class HeavyDocumentsIn : public ProductWindow {
  protected:
    explicit HeavyDocumentsIn(std::string_view vendor = "KO") : ProductWindow(vendor) {}

    /// For a document ten times as large.
    static constexpr double MostRatio = 20; // aim: below 12; something quadratic takes 100
    static constexpr rlim_t MostMemory = 700UL * 1024 * 1024; // bytes

    template<class Make>
    void expectLinear(Make make, int size) {
        size /= Instrumented ? 8 : 1;
        const HeavyDocument little = make(size / 10);
        const HeavyDocument much = make(size);
        openEmpty(much.extension, much.type);
        workOn(little); // once for what is only made once
        const double small = workOn(little);
        const MemoryBound bound(MostMemory);
        const double large = workOn(much);
        RecordProperty(much.name, std::to_string(large / small));
        std::printf("%s: %.2f s for %d, %.1f times that of a tenth\n", much.name.c_str(), large,
                    size, large / small);
        EXPECT_LT(large, MostRatio * std::max(small, 0.02)) << much.name;
    }

    static void chooses(const std::string& path) {
        whenShown<QFileDialog>([path](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path));
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
    }

  private:
    /// What a person does with it. How long that took.
    double workOn(const HeavyDocument& document) {
        const std::string name = std::to_string(document.lines.size()) + "." + document.extension;
        const std::string content = document.file();
        const std::string path = desk.folder.file(name, content);
        const double start = secondsComputed();
        QTimer agreeing; // to look at the channel where something is undone
        QObject::connect(&agreeing, &QTimer::timeout, [] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr || !box->isVisible())
                return;
            EXPECT_EQ(box->windowTitle(), "Switch Channels") << box->text().toStdString();
            QTest::keyClick(box, Qt::Key_Return);
        });
        agreeing.start(5);
        chooses(path);
        command(Qt::Key_O);
        History& history = *form.HistoryObject();
        const auto length =
            static_cast<int>(std::count(document.lines.begin(), document.lines.end(), '\n'));
        EXPECT_EQ(history.savePath(), path);
        EXPECT_EQ(history.position(), length);
        for (const char* zoom : {"Zoom to Fit", "Zoom In", "Zoom Out", "Zoom to Fit"})
            for (QPushButton* button : window.view()->findChildren<QPushButton*>())
                if (button->text() == zoom && button->isVisible())
                    Hands::click(*button);
        for (QTabBar* tabs : window.view()->findChildren<QTabBar*>())
            for (const int tab : {tabs->count() - 1, 0})
                Hands::clickTab(*tabs, tab);
        for (int i = 0; i < 10; ++i)
            turnWheel(i < 7 ? -120 : 120);
        for (int i = 0; i < 3; ++i)
            command(Qt::Key_Z);
        EXPECT_EQ(history.position(), length - 3);
        for (int i = 0; i < 3; ++i)
            command(Qt::Key_Y);
        EXPECT_EQ(history.position(), length);
        EXPECT_TRUE(history.SaveDirty());
        command(Qt::Key_S);
        EXPECT_FALSE(history.SaveDirty());
        EXPECT_TRUE(desk.folder.content(name) == content);
        return secondsComputed() - start;
    }
    void command(Qt::Key which) {
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        Hands::key(which, Qt::ControlModifier);
        QApplication::processEvents();
    }
    void turnWheel(int delta) {
        const QPoint middle = window.view()->rect().center();
        QWidget* under = window.view()->childAt(middle);
        under = under == nullptr ? window.view() : under;
        QWheelEvent wheel(QPointF(under->mapFrom(window.view(), middle)),
                          window.view()->mapToGlobal(QPointF(middle)), {}, {0, delta}, {},
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(under, &wheel);
        QApplication::processEvents();
    }
};

class HeavyDocumentsTest : public HeavyDocumentsIn {};

TEST_F(HeavyDocumentsTest, SegmentsInFrontOfSegments) {
    expectLinear(HeavyDocuments::segmentsInFront, 60000);
}

TEST_F(HeavyDocumentsTest, SegmentsThatComeAtOnce) {
    expectLinear(HeavyDocuments::segmentsAtOnce, 60000);
}

TEST_F(HeavyDocumentsTest, ValuesOfManySegments) {
    expectLinear(HeavyDocuments::values, 20000);
}

TEST_F(HeavyDocumentsTest, Pictures) {
    std::mt19937 random(1);
    expectLinear(
        [&](int count) {
            std::vector<std::string> texts;
            for (int i = 0; i < count; ++i) {
                Picture picture{96, 96, std::vector<std::uint32_t>(96UL * 96)};
                for (std::uint32_t& pixel : picture.pixels)
                    pixel = static_cast<std::uint32_t>(random()) | 0xFF000000U;
                desk.images.SetImage(picture);
                texts.push_back(desk.images.SaveImage());
            }
            return HeavyDocuments::pictures(texts);
        },
        300);
}

TEST_F(HeavyDocumentsTest, RelaySettings) {
    expectLinear(HeavyDocuments::settings, 50000);
}

TEST_F(HeavyDocumentsTest, VariablesInFrontOfVariables) {
    expectLinear(HeavyDocuments::variablesInFront, 60000);
}

class HeavyProgramsTest : public HeavyDocumentsIn {
  protected:
    HeavyProgramsTest() : HeavyDocumentsIn("RQ") {}
};

TEST_F(HeavyProgramsTest, Blocks) {
    const std::string content = HeavyDocuments::blocks(QuillonProgram::MaxLength).file();
    const std::string path = desk.folder.file("heavy.Quillon", content);
    openEmpty("Quillon", "Quillon");
    const MemoryBound bound(300UL * 1024 * 1024);
    chooses(path);
    press("Load from Disk");
    auto& control = dynamic_cast<QuillonControl&>(*form.control());
    EXPECT_EQ(control.slot(0).program.blocks().Length(), QuillonProgram::MaxLength);
    std::filesystem::remove(path);
    chooses(path);
    press("Save to Disk");
    EXPECT_TRUE(desk.folder.content("heavy.Quillon") == content);
}

TEST_F(HeavyDocumentsTest, ALineOfNothingButSeparatorsIsRefused) {
    openEmpty("lumora", "Lumora");
    const std::string path =
        desk.folder.file("a.lumora", "Lumora\t1\t1\t0\t2\nLumoraTrackInsert" +
                                         std::string(effort(10000000, 50000000), '\t') + "\n");
    const MemoryBound bound(300UL * 1024 * 1024);
    std::string told;
    whenShown<QMessageBox>([&told](QMessageBox& box) {
        told = box.text().toStdString();
        QTest::keyClick(&box, Qt::Key_Return);
    });
    form.OpenFile(path);
    EXPECT_EQ(told, "Can't understand the file format.");
}

} // namespace
} // namespace corvane
