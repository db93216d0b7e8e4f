#include "desktop/Binders.h"

#include "desktop/EventLoop.h"
#include "desktop/InputWidgets.h"
#include "desktop/Theme.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>

namespace corvane {

namespace {

QKeySequence keySequence(const std::string& shortcut) {
    return QKeySequence(QString::fromStdString(shortcut), QKeySequence::PortableText);
}

void bindArray(QMenu* menu, MenuArray& array, QAction* before) {
    auto* actions = new QObject(menu); // owns what is made at run time
    const auto refill = [menu, &array, before, actions] {
        QList<QAction*> present = actions->findChildren<QAction*>(Qt::FindDirectChildrenOnly);
        while (present.size() > array.count())
            delete present.takeLast();
        while (present.size() < array.count()) {
            auto* action = new QAction(actions);
            Bind(action, array.item(static_cast<int>(present.size()) + 1));
            menu->insertAction(before, action);
            present.push_back(action);
        }
    };
    On(actions, array.CountChanged, refill);
    refill();
}

} // namespace

void Follow(QObject* object, ChildControl& child, std::function<void()> follow) {
    follow();
    On(object, child.Changed, std::move(follow));
}

void LetGo(QObject* object) {
    for (QObject* part : object->findChildren<QObject*>())
        if (auto* held = dynamic_cast<HeldConnection*>(part))
            delete held;
}

void BindWidget(QWidget* widget, ChildControl& child) {
    Follow(widget, child, [widget, &child] {
        if (widget->isVisibleTo(widget->parentWidget()) != child.Visible())
            widget->setVisible(child.Visible());
        widget->setEnabled(child.Enabled());
        widget->setToolTip(QString::fromStdString(child.ToolTipText()));
    });
}

namespace {

/// Runs a function whenever the desktop changes its colours, as long as a connection would be held.
class PaletteFollower final : public HeldConnection {
  public:
    PaletteFollower(QWidget* widget, std::function<void()> follow)
        : HeldConnection(widget, {}), follow_(std::move(follow)) {
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::PaletteChange)
            follow_();
        return false;
    }

  private:
    std::function<void()> follow_;
};

} // namespace

void Bind(QLabel* label, Label& child) {
    BindWidget(label, child);
    const auto color = [label, &child] {
        QPalette own; // with nothing set, so that all else follows the desktop's colours
        if (child.ForeColor() != 0)
            own.setColor(QPalette::WindowText,
                         Theme::textColor(QApplication::palette(label), child.ForeColor()));
        label->setAutoFillBackground(child.BackColor().has_value());
        if (child.BackColor()) {
            const QColor ground = Theme::fromRgb(*child.BackColor());
            own.setColor(QPalette::Window, ground);
            own.setColor(QPalette::WindowText, Theme::readableOn(ground));
        }
        label->setPalette(own);
    };
    new PaletteFollower(label, color);
    Follow(label, child, [label, &child, color] {
        label->setText(QString::fromStdString(child.Caption()));
        color();
    });
}

void Bind(QAbstractButton* button, Button& child) {
    BindWidget(button, child);
    Follow(button, child,
           [button, &child] { button->setText(QString::fromStdString(child.Caption())); });
    QObject::connect(button, &QAbstractButton::clicked, button, [&child] {
        // What was typed counts before the press, also where that leaves the focus in the box.
        CommitFocusedBox();
        child.press();
    });
}

void Bind(QObject* object, Timer& child) {
    auto* timer = new QTimer(object);
    QObject::connect(timer, &QTimer::timeout, object, [&child] {
        if (!InsideRepaint())
            child.fire();
    });
    Follow(object, child, [timer, &child] {
        if (child.Enabled() && !timer->isActive())
            timer->start(child.Interval());
        else if (!child.Enabled())
            timer->stop();
    });
}

void Bind(QAction* action, MenuItem& child) {
    Follow(action, child, [action, &child] {
        action->setSeparator(child.isSeparator());
        // A line with a text would be drawn as a heading.
        action->setText(child.isSeparator() ? QString() : QString::fromStdString(child.Caption()));
        action->setEnabled(child.Enabled());
        action->setVisible(child.Visible());
        action->setToolTip(QString::fromStdString(child.ToolTipText()));
        if (child.Checked())
            action->setCheckable(true);
        action->setChecked(child.Checked());
    });
    if (child.Shortcut() == "Ctrl+Y")
        action->setShortcuts({keySequence("Ctrl+Y"), keySequence("Ctrl+Shift+Z")});
    else if (!child.Shortcut().empty())
        action->setShortcut(keySequence(child.Shortcut()));
    // The control alone decides whether it is checked.
    QObject::connect(action, &QAction::triggered, action, [action, &child] {
        action->setChecked(child.Checked());
        CommitFocusedBox();
        child.choose();
    });
}

void Bind(QMenuBar* bar, const std::vector<MenuPlace>& places) {
    for (const MenuPlace& place : places) {
        QMenu* menu = bar->addMenu(QString());
        Bind(menu->menuAction(), *place.item);
        Bind(menu, place.submenu);
    }
}

void Bind(QMenu* menu, const std::vector<MenuPlace>& places) {
    menu->setToolTipsVisible(true);
    std::vector<std::pair<MenuArray*, std::size_t>> arrays;
    std::vector<QAction*> actions;
    for (const MenuPlace& place : places) {
        if (place.array != nullptr) {
            arrays.emplace_back(place.array, actions.size());
            continue;
        }
        QAction* action = nullptr;
        if (place.submenu.empty()) {
            action = new QAction(menu);
            menu->addAction(action);
        } else {
            QMenu* submenu = menu->addMenu(QString());
            Bind(submenu, place.submenu);
            action = submenu->menuAction();
        }
        Bind(action, *place.item);
        actions.push_back(action);
    }
    for (const auto& [array, index] : arrays)
        bindArray(menu, *array, index < actions.size() ? actions[index] : nullptr);
}

} // namespace corvane
