#pragma once

#include "desktop/EventLoop.h"
#include "desktop/MainWindow.h"
#include "desktop/QtDialogs.h"
#include "history/Journals.h"
#include "support/Desk.h"
#include "support/Hands.h"
#include "support/Screen.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace corvane {

/// Passes a millisecond of a manual clock, and lets a test act in the middle of a blocking
/// operation.
class ActingPause final : public Pause {
  public:
    explicit ActingPause(ManualClock& clock) : clock_(clock) {}
    std::function<void()> act;

    void pause() override {
        clock_.advance(1);
        if (act)
            act();
    }

  private:
    ManualClock& clock_;
};

/// A desk with the real main window on it, and with real events and real boxes.
struct ProductDesk {
    explicit ProductDesk(std::string_view vendor = "KO", RunModes modes = {.DebugMode = true})
        : desk(modes, vendor) {
        journals.InPieces = true;
    }
    ProductDesk(const ProductDesk&) = delete;
    ProductDesk& operator=(const ProductDesk&) = delete;

    Desk desk;
    ActingPause pause{desk.bench.clock};
    QtDialogs dialogs;
    QtKeyboard keyboard;
    Journals journals{desk.folder.path() / "journals", desk.files};
    BetweenEvents keeping{[this] { journals.WriteOut(); }};
    Workplace place{
        desk.bench.link, desk.bench.device, desk.bench.products, desk.bench.modes, desk.bench.clock,
        pause,           desk.bench.debug,  desk.bench.debugger, dialogs,          dialogs,
        desk.files,      desk.images,       desk.programs,       desk.registry,    &journals};
    Application application{desk.programs, dialogs};
    ProductControls controls{place, keyboard};
    MainForm form{place, controls, application};
    LinkStatus status{desk.bench.link};
    MainWindow window{form, status};
    Hands hands;

    void open(const std::string& file) {
        dialogs.setFolder(QString::fromStdString(desk.folder.path()));
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        form.Initialize(file);
        QApplication::processEvents();
    }
    /// Opens a document without changes, so that its product's editor shows.
    void openEmpty(const std::string& extension, const std::string& typeCode) {
        open(desk.folder.file("empty." + extension, typeCode + "\t0\t0\t0\t1\n"));
    }
};

/// The real main window over a product's editor.
class ProductWindow : public testing::Test, protected ProductDesk {
  protected:
    using ProductDesk::ProductDesk;

    void press(const char* caption) {
        for (QPushButton* button : window.view()->findChildren<QPushButton*>())
            if (button->text() == caption)
                return Hands::click(*button);
        ADD_FAILURE() << caption;
    }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget() == nullptr ? &window
                                                               : QApplication::focusWidget(),
                        which, modifiers);
    }
    void saveAs(const QString& name) {
        whenShown<QFileDialog>([&name](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(name);
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        QTest::keyClick(&window, Qt::Key_S, Qt::ControlModifier);
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
};

} // namespace corvane
