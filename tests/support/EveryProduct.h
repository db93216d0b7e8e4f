#pragma once

#include "support/Dismissing.h"
#include "support/ProductWindow.h"

namespace corvane {

/// What the walkers over every product's window need to know of a product.
struct ProductUnderTest {
    const char* vendor;
    const char* name;      ///< Ending of its files; "start" for the start screen.
    const char* document;  ///< Of which some can be undone and some redone; empty for none.
    const char* plugged;   ///< What hangs on the link.
    const char* firstJobs; ///< Accessible names or captions of the buttons that begin jobs.
};

inline void PrintTo(const ProductUnderTest& product, std::ostream* out) {
    *out << product.name;
}

inline const std::vector<ProductUnderTest>& EveryProduct() {
    static const std::vector<ProductUnderTest> all{
        {"KO", "lumora",
         "Lumora\t4\t3\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.5\n"
         "LumoraTrackInsert2\t1\t0\t2\t60\t1\tP\t20\nLumoraTrackInsert\t1\t1\t1\t0\t2\n"
         "LumoraText\t1\tTrip Point\t50\t60\n",
         "lumora-1.2", "Program"},
        {"KO", "relay",
         "Pactor\t3\t2\t0\t1\nPactorText\t0\tTrip Point\t50\t60\nPactorText\t0\tHysteresis\t0\t5\n"
         "PactorText\t1\tRelay\t\tON\n",
         "pactor-3.1", "Program|Read Settings"},
        {"KO", "ko_eeprom",
         "KOEEPROM\t3\t2\t0\t1\nKOEEPROMListAdd\t1\t16\t2\tspeed\t0102\t\n"
         "KOEEPROMListAdd\t2\t20\t1\tgain\t05\t\nKOEEPROMListAdd\t3\t30\t1\tlast\t05\t\n",
         "eeprom", "Program|Read Settings"},
        {"RQ", "Quillon", "Quillon\t2\t2\t0\t1\nQuillonPWM\t5\nQuillonPWM\t9\n", "quillon",
         "Upload program 1|Download program 2"},
        {"KO", "start", "", "", ""},
    };
    return all;
}

inline std::string nameOfProduct(const testing::TestParamInfo<ProductUnderTest>& info) {
    return info.param.name;
}

/// The window of a product over its document.
class ProductWalk : public ProductDesk {
  public:
    explicit ProductWalk(const ProductUnderTest& product, WindowSizes* sizes = nullptr)
        : ProductDesk(product.vendor,
                      {.DebugMode = true, .ProgramMode = *product.document == '\0'}),
          file(*product.document == '\0'
                   ? std::string()
                   : desk.folder.file(std::string("walk.") + product.name, product.document)) {
        if (sizes != nullptr)
            form.setWindowSizes(*sizes);
        // One that was opened before, for the list of them.
        open(file.empty()
                 ? file
                 : desk.folder.file(std::string("earlier.") + product.name, product.document));
        form.OpenFile(file);
        QApplication::processEvents();
        if (*product.plugged != '\0') {
            desk.bench.plugIn(product.plugged);
            desk.bench.run(100);
        }
        toFront();
    }
    /// From behind the window of the debug mode, or of a dialog that is over.
    void toFront() {
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    const std::string file;

    [[nodiscard]] QTabBar* tabs() { return window.view()->findChild<QTabBar*>(); }
    [[nodiscard]] QAbstractButton* button(const QString& name) {
        for (auto* found : window.view()->findChildren<QAbstractButton*>())
            if (found->isVisible() && (found->accessibleName() == name || found->text() == name))
                return found;
        return nullptr;
    }
    /// How many changes count in each document.
    [[nodiscard]] std::vector<int> positions() const {
        std::vector<int> all;
        for (const History* history : form.control()->Histories())
            all.push_back(history->position());
        return all;
    }
};

} // namespace corvane
