// What every screen owes a person: text that can be read, a name and a tip for everything that the
// keyboard reaches, an order that follows the eye, and keys that do not clash.
#include "desktop/Theme.h"
#include "support/ProductWindow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QMenuBar>
#include <QTabBar>

namespace corvane {
namespace {

constexpr double Readable = 4.5;

struct ScreenOf {
    const char* vendor;
    const char* extension;
    const char* document;
};

void PrintTo(const ScreenOf& screen, std::ostream* out) {
    *out << screen.extension;
}

class Look : public ProductWindow, public testing::WithParamInterface<ScreenOf> {
  protected:
    Look()
        : ProductWindow(GetParam().vendor,
                        {.DebugMode = true, .ProgramMode = *GetParam().document == '\0'}) {}

    void SetUp() override {
        const std::string name = std::string("a.") + GetParam().extension;
        open(*GetParam().document == '\0' ? std::string()
                                          : desk.folder.file(name, GetParam().document));
    }
    /// Calls for the window's view with each of its tabs selected.
    void eachTab(const std::function<void()>& look) {
        auto* bar = window.view()->findChild<QTabBar*>();
        for (int tab = 0; tab < (bar == nullptr ? 1 : bar->count()); ++tab) {
            SCOPED_TRACE(bar == nullptr ? "" : bar->tabText(tab).toStdString());
            if (bar != nullptr)
                bar->setCurrentIndex(tab);
            for (QPushButton* more : window.view()->findChildren<QPushButton*>())
                if (more->text() == "Advanced >>" && more->isVisible())
                    Hands::click(*more);
            QApplication::processEvents();
            look();
        }
    }
    [[nodiscard]] std::vector<QWidget*> shown() const {
        std::vector<QWidget*> all;
        for (QWidget* widget : window.findChildren<QWidget*>())
            if (widget->isVisible() && widget->isEnabled())
                all.push_back(widget);
        return all;
    }
    [[nodiscard]] std::vector<QWidget*> stops() const {
        std::vector<QWidget*> all;
        for (QWidget* widget = window.view()->nextInFocusChain(); widget != window.view();
             widget = widget->nextInFocusChain())
            if (widget->isVisible() && widget->isEnabled() && window.view()->isAncestorOf(widget) &&
                (widget->focusPolicy() & Qt::TabFocus) != 0)
                all.push_back(widget);
        return all;
    }
    static std::string nameOf(const QWidget* widget) {
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        const auto* label = qobject_cast<const QLabel*>(widget);
        return std::string(widget->metaObject()->className()) + " \"" +
               (button != nullptr  ? button->text()
                : label != nullptr ? label->text()
                                   : widget->accessibleName())
                   .toStdString() +
               "\"";
    }
};

/// Text and ground that a widget paints with, if it paints text.
std::optional<std::pair<QColor, QColor>> coloursOf(const QWidget* widget) {
    const auto of = [widget](QPalette::ColorRole text, QPalette::ColorRole ground) {
        return std::pair(widget->palette().color(text), widget->palette().color(ground));
    };
    if (qobject_cast<const QLineEdit*>(widget) != nullptr)
        return of(QPalette::Text, QPalette::Base);
    if (qobject_cast<const QPushButton*>(widget) != nullptr ||
        qobject_cast<const QComboBox*>(widget) != nullptr)
        return of(QPalette::ButtonText, QPalette::Button);
    const auto* label = qobject_cast<const QLabel*>(widget);
    if ((label != nullptr && !label->text().isEmpty()) ||
        qobject_cast<const QAbstractButton*>(widget) != nullptr ||
        qobject_cast<const QTabBar*>(widget) != nullptr)
        return of(QPalette::WindowText, QPalette::Window);
    return std::nullopt;
}

TEST_P(Look, TextStandsOutFromItsGroundInBothPalettes) {
    const QPalette before = QApplication::palette();
    for (const QPalette& palette : {before, Theme::darkPalette()}) {
        QApplication::setPalette(palette);
        eachTab([this] {
            for (const QWidget* widget : shown()) {
                const auto colours = coloursOf(widget).value_or(std::pair(Qt::black, Qt::white));
                EXPECT_GE(Theme::contrast(colours.first, colours.second), Readable)
                    << nameOf(widget) << " " << colours.first.name().toStdString() << " on "
                    << colours.second.name().toStdString();
            }
        });
    }
    QApplication::setPalette(before);
}

TEST_P(Look, WhatTheKeyboardReachesTellsWhatItIsAndDoes) {
    eachTab([this] {
        for (QWidget* widget : shown()) {
            const auto* button = qobject_cast<QAbstractButton*>(widget);
            if (button != nullptr) {
                EXPECT_FALSE(widget->toolTip().isEmpty()) << "no tip: " << nameOf(widget);
            }
            const bool speaks = button != nullptr && !button->text().isEmpty();
            EXPECT_TRUE(speaks || widget->focusPolicy() == Qt::NoFocus ||
                        !window.view()->isAncestorOf(widget) || !widget->accessibleName().isEmpty())
                << "no name: " << nameOf(widget);
        }
        for (QWidget* widget : stops()) {
            const QAccessibleInterface* told = QAccessible::queryAccessibleInterface(widget);
            ASSERT_NE(told, nullptr);
            EXPECT_FALSE(told->text(QAccessible::Name).isEmpty()) << nameOf(widget);
            EXPECT_NE(told->role(), QAccessible::NoRole) << nameOf(widget);
            EXPECT_NE(told->role(), QAccessible::Client) << nameOf(widget);
            const bool speaks = told->role() == QAccessible::PageTabList ||
                                told->role() == QAccessible::Canvas; // which has words in it
            EXPECT_TRUE(speaks || !widget->toolTip().isEmpty()) << "no tip: " << nameOf(widget);
        }
    });
}

TEST_P(Look, TheTabKeyFollowsTheEye) {
    eachTab([this] {
        const std::vector<QWidget*> all = stops();
        for (std::size_t i = 1; i < all.size(); ++i) {
            const auto area = [this](const QWidget* widget) {
                return QRect(widget->mapTo(&window, QPoint(0, 0)), widget->size());
            };
            const QRect before = area(all[i - 1]);
            const QRect after = area(all[i]);
            const bool above = after.bottom() < before.top() && after.left() <= before.left();
            const bool leftBeside = after.right() < before.left() &&
                                    after.top() <= before.bottom() &&
                                    after.bottom() >= before.top();
            EXPECT_FALSE(above || leftBeside) << nameOf(all[i - 1]) << " before " << nameOf(all[i]);
        }
    });
}

void expectNoClash(const QString& where, const QList<QAction*>& actions) {
    std::map<QChar, QString> taken;
    for (const QAction* action : actions) {
        if (action->isSeparator()) {
            EXPECT_EQ(action->text(), "") << "a line that is drawn as a heading";
        }
        if (action->isSeparator() || !action->isVisible())
            continue;
        const QKeySequence key = QKeySequence::mnemonic(action->text());
        EXPECT_FALSE(key.isEmpty()) << where.toStdString() << action->text().toStdString();
        const QChar letter = key.toString().back();
        EXPECT_TRUE(taken.emplace(letter, action->text()).second)
            << where.toStdString() << ": " << action->text().toStdString() << " and "
            << taken[letter].toStdString();
        if (action->menu() != nullptr)
            expectNoClash(where + action->text() + ", ", action->menu()->actions());
    }
}

TEST_P(Look, MenuLettersDoNotClash) {
    expectNoClash("", window.menuBar()->actions());
    for (const QAbstractButton* button : window.view()->findChildren<QAbstractButton*>())
        EXPECT_TRUE(QKeySequence::mnemonic(button->text()).isEmpty()) << nameOf(button);
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryScreen, Look,
    testing::Values(
        ScreenOf{"KO", "lumora",
                 "Lumora\t3\t3\t0\t2\nLumoraTrackInsert\t1\t0\t1\t50\t.5\n"
                 "LumoraTrackInsert2\t1\t0\t2\t60\t1\tP\t20\nLumoraTrackInsert\t1\t1\t1\t0\t2\n"},
        ScreenOf{"KO", "relay", "Pactor\t0\t0\t0\t1\n"},
        ScreenOf{"KO", "ko_eeprom",
                 "KOEEPROM\t2\t2\t0\t1\nKOEEPROMListAdd\t1\t16\t2\tspeed\t\t\n"
                 "KOEEPROMListAdd\t2\t20\t1\tgain\t05\t\n"},
        ScreenOf{"RQ", "Quillon", "Quillon\t0\t0\t0\t1\n"}, ScreenOf{"KO", "start", ""}),
    [](const auto& screen) { return std::string(screen.param.extension); });

} // namespace
} // namespace corvane
